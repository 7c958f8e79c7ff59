// The codec's client interface. Every operation works on the calling thread's context; failures
// go to the thread's error word, read by glsGetError.
#pragma once

#include "gls/gls_types.h"
#include "gls/gls_context.h"

// Process start-up and shut-down of the codec (called by the library's load notification).
bool gls_process_attach();
void gls_process_detach();

// Error word.
void gls_set_error(GLSenum error);
GLSenum glsGetError();

// Allocation through the codec's allocator: a failure sets GLS_RESOURCE_ERROR.
void *gls_malloc(size_t size);
void *gls_calloc(size_t size);
void gls_free(void *block);

// Context management.
GLuint glsGenContext();
void glsContext(GLuint id);
void glsDeleteContext(GLuint id);
GLuint *glsGetAllContexts();
GLuint glsGetCurrentContext();
GLboolean glsIsContext(GLuint id);

// Capture control.
GLboolean glsBeginCapture(const GLubyte *name, GLSenum type, GLbitfield writeFlags);
void glsEndCapture();
void glsFlush();
void glsCaptureFlags(GLSopcode opcode, GLbitfield flags);
GLbitfield glsGetCaptureFlags(GLSopcode opcode);
void glsEnable(GLSenum attrib);
void glsDisable(GLSenum attrib);
GLboolean glsIsEnabled(GLSenum attrib);
void glsCommandFunc(GLSenum target, GLSopcode opcode, GlsFunc func);
GlsFunc glsGetCommandFunc(GLSenum target, GLSopcode opcode);
void glsCaptureFunc(GLSenum target, GlsCaptureFunc func);
void glsDataPointer(void *pointer);
void glsChannel(GLSenum target, FILE *channel);
void glsReadFunc(GlsReadFunc func);
void glsWriteFunc(GlsWriteFunc func);
void glsStringType(GLSenum type);
void glsPrependReadPrefix(const GLubyte *prefix);
void glsRemoveReadPrefix(GLuint index);
void glsWritePrefix(const GLubyte *prefix);
void glsResetWriterAlignment();

// Reading streams.
GLSenum glsCallStream(const GLubyte *name);
void glsCallArray(GLSenum type, size_t size, const GLubyte *data);
void glsCopyStream(const GLubyte *source, const GLubyte *destination, GLSenum type, GLbitfield writeFlags);
size_t glsGetConsumedBytes();

// Queries.
GLuint glsGetOpcodeCount(GLSenum api);
const GLSopcode *glsGetOpcodes(GLSenum api);
GLint glsGetCommandi(GLSopcode opcode, GLSenum attrib);
const GLubyte *glsGetOpcodeName(GLSopcode opcode);
GLSopcode glsGetOpcode(const GLubyte *name);
GLint glsGetEnumi(GLSenum api, GLuint value, GLSenum attrib);
const GLubyte *glsGetEnumName(GLSenum api, GLuint value);
GLint glsGetEnumValue(GLSenum api, const GLubyte *name);
GlsFunc glsGetFunc(GLSenum attrib);
void *glsGetPointer(GLSenum attrib);
GLint glsGeti(GLSenum attrib);
const GLubyte *glsGetc(GLSenum attrib);
void glsGetl(GLSenum attrib, GLint *outVec);
const GLubyte *glsGetHeaderc(GLSenum attrib);
GLfloat glsGetHeaderf(GLSenum attrib);
void glsGetHeaderfv(GLSenum attrib, GLfloat *outVec);
GLint glsGetHeaderi(GLSenum attrib);
void glsGetHeaderiv(GLSenum attrib, GLint *outVec);
const GLubyte *glsGetListc(GLSenum attrib, GLint index);
GLint glsGetListi(GLSenum attrib, GLint index);
GLlong glsGetListl(GLSenum attrib, GLint index);
GLboolean glsIsExtensionSupported(const GLubyte *name);
GLboolean glsIsVersionSupported(GLSenum api, GLint major, GLint minor);
GLSenum glsBinary(GLboolean swapped);

// The common test of the operations: the current context, else GLS_STATE_ERROR; with an opcode
// also one that names a command, else GLS_UNSUPPORTED_COMMAND and null.
GlsContext *gls_require_context();
GlsContext *gls_require_command(GLSopcode opcode);

// Recomputes defaultDispatch, callDispatch and decodeDispatch of a context.
void gls_update_dispatch(GlsContext *ctx);
// Resets the cached facts about the GL context.
void gls_reset_gl_info(GlsContext *ctx);
// Puts the stream header back to its start values.
void gls_reset_header(GlsHeader *header);
// The integer of the header that an attribute names; null for another attribute.
GLint *gls_header_int(GlsHeader *header, GLSenum attrib);

// The guard around a GL call that the codec makes itself.
inline int enterDirectCall(GlsContext *ctx, GLSopcode) { ++ctx->directCallDepth; return 0; }
inline void leaveDirectCall(GlsContext *ctx, GLSopcode, int) { --ctx->directCallDepth; }

// Seams to the parts of the codec that execute streams and vertex data.
bool gls_extension_supported(const char *name);
bool gls_version_supported(GLSenum api, GLint major, GLint minor);
GLSenum gls_call_stream(const GLubyte *name);
void gls_draw_vertex_array(GLenum mode, GLenum format, GLint count, const GLvoid *data);
