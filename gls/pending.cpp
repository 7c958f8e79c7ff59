// The codec's parts that later work fills in: stream reading and the version and extension
// queries. Until then they write nothing and execute nothing.
#include "gls/gls.h"

bool gls_extension_supported(const char *) { return false; }
bool gls_version_supported(GLSenum api, GLint major, GLint minor)
{
    return api == GLS_API_GLS && major == 1 && minor <= 0;
}
GLSenum gls_call_stream(const GLubyte *) { return GLS_NONE; }
