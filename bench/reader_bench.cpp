// Reads the sample program's history, repeated into one long group, as text and in both binary
// byte orders, and prints MB/s and commands/s. The default dispatch natively holds the null
// functions: a stub that executes nothing, so the figures are the reader's own.
#include "gls/gls.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

static std::string captured;
static size_t capture_bytes(size_t count, const void *bytes)
{
    captured.append((const char *)bytes, count);
    return count;
}

// The history's statements between its frame, repeated.
static std::string long_history(const std::string &history, int copies, size_t *commands)
{
    size_t body_start = history.find('\n') + 1;
    size_t body_end = history.rfind("glsEndGLS();");
    std::string body = history.substr(body_start, body_end - body_start);
    size_t statements = 0;
    for (char c : body)
        statements += c == ';';
    std::string text = history.substr(0, body_start);
    for (int i = 0; i < copies; ++i)
        text += body;
    text += "glsEndGLS();\n";
    *commands = statements * (size_t)copies;
    return text;
}

static std::string convert(const std::string &stream, GLSenum from, GLSenum to)
{
    captured.clear();
    glsBeginCapture((const GLubyte *)"", to, 0);
    glsCallArray(from, stream.size(), (const GLubyte *)stream.data());
    glsEndCapture();
    return captured;
}

static void measure(const char *label, GLSenum type, const std::string &stream, size_t commands)
{
    const int rounds = 5;
    double best = 1e30;
    for (int round = 0; round < rounds; ++round) {
        auto start = std::chrono::steady_clock::now();
        glsCallArray(type, stream.size(), (const GLubyte *)stream.data());
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (seconds < best)
            best = seconds;
    }
    printf("%-22s %9.2f MB  %8.1f MB/s  %7.2f M commands/s  (best of %d)\n", label,
           (double)stream.size() / 1e6, (double)stream.size() / 1e6 / best, (double)commands / 1e6 / best, rounds);
}

int main(int argc, char **argv)
{
    const char *path = argc > 1 ? argv[1] : QUONDALE_SAMPLE_HISTORY;
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    std::string history = content.str();
    if (history.empty()) {
        fprintf(stderr, "no history at %s\n", path);
        return 1;
    }
    if (!gls_process_attach())
        return 1;
    glsContext(glsGenContext());
    glsWriteFunc(capture_bytes);
    size_t commands = 0;
    std::string text = long_history(history, 2000, &commands);
    // The copies are written only, as the reads below execute through the stub.
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        if (op != OP_glsBeginGLS && op != OP_glsEndGLS && op != OP_glsPad)
            glsCaptureFlags(op, GLS_CAPTURE_WRITE_BIT);
    std::string lsb = convert(text, GLS_TEXT, GLS_BINARY_LSB_FIRST);
    std::string msb = convert(text, GLS_TEXT, GLS_BINARY_MSB_FIRST);
    glsGetError();
    printf("sample history %s: %zu commands a read\n", path, commands);
    measure("text", GLS_TEXT, text, commands);
    measure("binary, LSB first", GLS_BINARY_LSB_FIRST, lsb, commands);
    measure("binary, MSB first", GLS_BINARY_MSB_FIRST, msb, commands);
    GLSenum error = glsGetError();
    if (error)
        printf("error word after the reads: %d\n", error);
    gls_process_detach();
    return 0;
}
