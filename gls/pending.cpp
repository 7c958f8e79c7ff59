// The codec's parts that later work fills in: slots of the stream forms, stream reading, vertex
// data and the version and extension queries. Until then they write nothing and execute nothing.
#include "gls.h"
#include "writer.h"

static GLboolean no_begin(GlsWriter *, GLSopcode, size_t) { return 0; }
static GLboolean no_pad(GlsWriter *, GLuint) { return 1; }
static void no_end(GlsWriter *) {}
static void no_int(GlsWriter *, GLint) {}

static void init_null_slots(GlsWriter *writer)
{
    writer->padToDouble = no_pad;
    writer->beginCommand = no_begin;
    writer->endCommand = no_end;
    writer->putGLint = no_int;
}

void gls_init_text_slots(GlsWriter *writer) { init_null_slots(writer); }
void gls_init_binary_slots(GlsWriter *writer, int) { init_null_slots(writer); }

bool gls_extension_supported(const char *) { return false; }
bool gls_version_supported(GLSenum api, GLint major, GLint minor)
{
    return api == GLS_API_GLS && major == 1 && minor <= 0;
}
GLSenum gls_call_stream(const GLubyte *) { return GLS_NONE; }
void gls_draw_vertex_array(GLenum, GLenum, GLint, const GLvoid *) {}
