// Encodes a realistic call mix to text through the capture path (the dispatch rows that an
// exported entry point calls) and prints calls and bytes per second, and the allocations made
// while encoding, which must be none. Then a texture upload: a 256x256 RGBA glTexImage2D, whose
// pixels are most of what a texture-heavy program writes.
#include "gen/dispatch_calls.h"
#include "gen/gl_enums.h"
#include "gls/gls.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

// glibc: count every allocation by standing in front of the C library's allocator.
extern "C" void *__libc_malloc(size_t);
extern "C" void *__libc_calloc(size_t, size_t);
extern "C" void *__libc_realloc(void *, size_t);
static size_t allocations;
extern "C" void *malloc(size_t size) { ++allocations; return __libc_malloc(size); }
extern "C" void *calloc(size_t count, size_t size) { ++allocations; return __libc_calloc(count, size); }
extern "C" void *realloc(void *block, size_t size) { ++allocations; return __libc_realloc(block, size); }

static size_t bytes_written;
static size_t count_bytes(size_t count, const void *) { bytes_written += count; return count; }

// One frame of a small lit, textured scene: state changes, matrices and immediate-mode vertices.
// Returns the number of GL calls made.
static long draw_frame(int frame)
{
    long calls = 0;
    float angle = (float)frame * 0.37f;
    const GLfloat light[4] = {1, 2.5f, 3, 0};
    const GLfloat diffuse[4] = {0.8f, 0.6f, 0.2f, 1};
    GLfloat matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -5, 1};
    dispatch_glClear(0x4000 | 0x100), ++calls;
    dispatch_glMatrixMode(0x1701), ++calls;
    dispatch_glLoadIdentity(), ++calls;
    dispatch_glFrustum(-1, 1, -0.75, 0.75, 1, 100), ++calls;
    dispatch_glMatrixMode(0x1700), ++calls;
    dispatch_glLoadMatrixf(matrix), ++calls;
    dispatch_glLightfv(0x4000, 0x1203, light), ++calls;
    dispatch_glEnable(0x0B50), ++calls;
    dispatch_glEnable(0x0DE1), ++calls;
    dispatch_glBindTexture(0x0DE1, 3), ++calls;
    dispatch_glTexEnvi(0x2300, 0x2200, 0x2100), ++calls;
    for (int object = 0; object < 4; ++object) {
        dispatch_glPushMatrix(), ++calls;
        dispatch_glRotatef(angle + (float)object * 90, 0, 1, 0), ++calls;
        dispatch_glTranslatef(1.5f, 0, 0), ++calls;
        dispatch_glMaterialfv(0x0408, 0x1201, diffuse), ++calls;
        dispatch_glBegin(0x0005), ++calls;
        for (int i = 0; i < 64; ++i) {
            float t = (float)i / 63.0f;
            const GLfloat color[3] = {t, 1 - t, 0.5f};
            const GLfloat normal[3] = {std::cos(t * 6.2831853f), 0, std::sin(t * 6.2831853f)};
            const GLfloat uv[2] = {t, (float)(i & 1)};
            const GLfloat vertex[3] = {normal[0], (float)(i & 1) - 0.5f, normal[2]};
            dispatch_glColor3fv(color), ++calls;
            dispatch_glNormal3fv(normal), ++calls;
            dispatch_glTexCoord2fv(uv), ++calls;
            dispatch_glVertex3fv(vertex), ++calls;
        }
        dispatch_glEnd(), ++calls;
        dispatch_glPopMatrix(), ++calls;
    }
    dispatch_glDisable(0x0DE1), ++calls;
    dispatch_glFlush(), ++calls;
    return calls;
}

// Uploads of one 256x256 RGBA texture; returns the seconds taken.
static double upload_textures(int uploads)
{
    static GLubyte texels[256 * 256 * 4];
    for (size_t i = 0; i < sizeof texels; ++i)
        texels[i] = (GLubyte)(i * 37 + (i >> 10));
    auto start = std::chrono::steady_clock::now();
    for (int upload = 0; upload < uploads; ++upload)
        dispatch_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 256, 256, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    glsFlush();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int main()
{
    if (!gls_process_attach()) {
        fprintf(stderr, "codec start-up failed\n");
        return 1;
    }
    glsContext(glsGenContext());
    glsWriteFunc(count_bytes);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0);
    for (int op = 48; op < GLS_OPCODE_COUNT; ++op)
        glsCaptureFlags(op, 2); // writing is what is measured
    glsGetError();

    draw_frame(0); // warm up: the locale and the first flush
    bytes_written = 0;
    size_t allocations_before = allocations;
    long calls = 0;
    const int frames = 2000;
    auto start = std::chrono::steady_clock::now();
    for (int frame = 0; frame < frames; ++frame)
        calls += draw_frame(frame);
    glsFlush();
    auto end = std::chrono::steady_clock::now();
    size_t encoding_allocations = allocations - allocations_before;

    double seconds = std::chrono::duration<double>(end - start).count();
    printf("calls:              %ld in %.3f s\n", calls, seconds);
    printf("calls per second:   %.0f\n", calls / seconds);
    printf("bytes per second:   %.0f (%.1f MB/s)\n", bytes_written / seconds, bytes_written / seconds / 1e6);
    printf("bytes per call:     %.1f\n", (double)bytes_written / calls);
    printf("allocations:        %zu while encoding (%.4f per call), %zu at start-up\n",
           encoding_allocations, (double)encoding_allocations / calls, allocations_before);

    const int uploads = 100;
    bytes_written = 0;
    allocations_before = allocations;
    double upload_seconds = upload_textures(uploads);
    size_t upload_allocations = allocations - allocations_before;
    printf("texture uploads:    %d of 256x256 RGBA in %.3f s, %.2f ms each\n", uploads, upload_seconds,
           upload_seconds * 1000 / uploads);
    printf("upload bytes/s:     %.0f (%.1f MB/s), %.0f bytes of text an upload\n", bytes_written / upload_seconds,
           bytes_written / upload_seconds / 1e6, (double)bytes_written / uploads);
    printf("allocations:        %zu while uploading\n", upload_allocations);
    glsEndCapture();
    return encoding_allocations == 0 && upload_allocations == 0 ? 0 : 2;
}
