#include "codec_harness.h"

#include "gls/tables.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static const uint8_t *feed_input;
static size_t feed_size, feed_at, feed_piece;

static size_t feed(size_t count, void *bytes)
{
    size_t n = std::min({count, feed_piece, feed_size - feed_at});
    memcpy(bytes, feed_input + feed_at, n);
    feed_at += n;
    return n;
}

// QUONDALE_FUZZ_ECHO=1 shows the text written, for a look at what an input does.
static size_t sink(size_t count, const void *bytes)
{
    static bool echo = getenv("QUONDALE_FUZZ_ECHO") != nullptr;
    if (echo)
        fwrite(bytes, 1, count, stdout);
    return count;
}

const GLubyte fuzz_no_name[4] = {};
const GLubyte fuzz_name_a[8] = {'a'};

static GLuint context_id;

void fuzz_codec_begin(const uint8_t *input, size_t size, size_t piece)
{
    static bool attached = gls_process_attach();
    if (!attached)
        __builtin_trap();
    feed_input = input;
    feed_size = size;
    feed_at = 0;
    feed_piece = piece ? piece : 1;
    context_id = glsGenContext();
    glsContext(context_id);
    while (glsGeti(GLS_READ_PREFIX_COUNT) > 0)
        glsRemoveReadPrefix(0);
    glsWritePrefix((const GLubyte *)"/nonexistent-quondale-fuzz/");
    glsReadFunc(feed);
    glsWriteFunc(sink);
    // Mostly the debugger's own string type, now and then the wide ones.
    glsStringType(size % 5 == 3 ? GLS_UCS2 : size % 5 == 4 ? GLS_UCS4 : GLS_UCS1);
    glsBeginCapture(fuzz_no_name, GLS_TEXT, 0);
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        if (gls_opcode_exists(op))
            glsCaptureFlags(op, GLS_CAPTURE_EXECUTE_BIT | GLS_CAPTURE_WRITE_BIT);
}

void fuzz_codec_end()
{
    glsEndCapture();
    glsDeleteContext(context_id);
    // Deleting needs a current context: the deletion waits for the unbinding.
    glsContext(0);
    glsGetError();
}

void fuzz_codec_read_input(const uint8_t *input, size_t size, bool binary)
{
    GLSenum type = fuzz_stream_type(input, size);
    if ((type != GLS_TEXT) != binary)
        return;
    fuzz_codec_begin(input, size, 1 + size % 61);
    if (size % 2)
        glsCallArray(type, size, input);
    else
        glsCallStream(fuzz_no_name);
    fuzz_codec_end();
}

GLSenum fuzz_stream_type(const uint8_t *input, size_t size)
{
    if (size < 5 || memcmp(input, "\0\0\0\0", 4))
        return GLS_TEXT;
    return input[4] == 0 ? GLS_BINARY_MSB_FIRST : GLS_BINARY_LSB_FIRST;
}
