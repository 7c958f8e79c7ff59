// The codec's queries: commands, enumerants, functions and pointers, context values, the stream
// header, lists, versions and extensions.
#include "gls/gls.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/containers.h"
#include "gls/gls_string.h"
#include "gls/names.h"
#include "gls/streams.h"
#include "gls/tables.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

// ---------------------------------------------------------------------------------------------
// Commands

static GLSopcode gls_opcodes[GLS_GLS_COMMAND_COUNT];
static GLSopcode gl_opcodes[GLS_GL_COMMAND_COUNT];
static bool opcode_lists_ready;

static void fill_opcode_lists()
{
    gls_lock_enter();
    if (!opcode_lists_ready) {
        int gls = 0, gl = 0;
        for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
            if (!gls_opcode_exists(op))
                continue;
            if (op / 16 == 1 || op / 16 == 2)
                gls_opcodes[gls++] = op;
            else
                gl_opcodes[gl++] = op;
        }
        opcode_lists_ready = true;
    }
    gls_lock_leave();
}

GLuint glsGetOpcodeCount(GLSenum api)
{
    if (!gls_require_context())
        return 0;
    if (api == GLS_API_GLS)
        return GLS_GLS_COMMAND_COUNT;
    if (api == GLS_API_GL)
        return GLS_GL_COMMAND_COUNT;
    gls_set_error(GLS_PARAMETER_ERROR);
    return 0;
}

const GLSopcode *glsGetOpcodes(GLSenum api)
{
    if (!gls_require_context())
        return nullptr;
    fill_opcode_lists();
    if (api == GLS_API_GLS)
        return gls_opcodes;
    if (api == GLS_API_GL)
        return gl_opcodes;
    gls_set_error(GLS_PARAMETER_ERROR);
    return nullptr;
}

GLint glsGetCommandi(GLSopcode opcode, GLSenum attrib)
{
    if (!gls_require_command(opcode))
        return 0;
    switch (attrib) {
    case GLS_API: return opcode / 16 == 1 || opcode / 16 == 2 ? GLS_API_GLS : GLS_API_GL;
    case GLS_IS_CLIENT_COMMAND: return (gls_attributes[opcode] & GLS_ATTRIB_CLIENT) != 0;
    case GLS_IS_GET_COMMAND: return (gls_attributes[opcode] & GLS_ATTRIB_GET) != 0;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
}

const GLubyte *glsGetOpcodeName(GLSopcode opcode)
{
    GlsContext *ctx = gls_require_command(opcode);
    if (!ctx)
        return nullptr;
    return gls_return_string(ctx, gls_opcode_names[opcode]);
}

static bool find_name(GlsDict *(GlsDictionarySet::*member), const char *name, intptr_t *value)
{
    const GlsDictionarySet *set = gls_dictionaries();
    return set && gls_dict_find(set->*member, name, value);
}

GLSopcode glsGetOpcode(const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return 0;
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, name, &scratch);
    intptr_t opcode = 0;
    if (!utf8 || !find_name(&GlsDictionarySet::glsOpDict, utf8, &opcode))
        opcode = 0;
    gls_string_free(&scratch);
    return (GLSopcode)opcode;
}

// ---------------------------------------------------------------------------------------------
// Enumerants

// Client-side state of GL: the pixel store, the arrays and the feedback and selection buffers.
static bool gl_client_enum(GLuint value)
{
    return value == 2993 || (value >= 3312 && value <= 3317) || (value >= 3328 && value <= 3333) ||
           value == 3387 || (value >= 3568 && value <= 3572) || (value >= 32875 && value <= 32878) ||
           (value >= 32884 && value <= 32915);
}

GLint glsGetEnumi(GLSenum api, GLuint value, GLSenum attrib)
{
    if (!gls_require_context())
        return 0;
    if ((api != GLS_API_GLS && api != GLS_API_GL) || attrib != GLS_IS_CLIENT_ENUM) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    return api == GLS_API_GL && gl_client_enum(value);
}

const GLubyte *glsGetEnumName(GLSenum api, GLuint value)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    const char *name = api == GLS_API_GLS ? gls_gls_enum_name((int32_t)value)
                       : api == GLS_API_GL ? gls_gl_enum_name(value) : nullptr;
    if (!name) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
    return gls_return_string(ctx, name);
}

GLint glsGetEnumValue(GLSenum api, const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return -1;
    if (api != GLS_API_GLS && api != GLS_API_GL) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return -1;
    }
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, name, &scratch);
    intptr_t value = -1;
    auto member = api == GLS_API_GLS ? &GlsDictionarySet::glsEnumDict : &GlsDictionarySet::glEnumDict;
    if (!utf8 || !find_name(member, utf8, &value))
        value = -1;
    gls_string_free(&scratch);
    return (GLint)value;
}

// ---------------------------------------------------------------------------------------------
// Functions, pointers, values

GlsFunc glsGetFunc(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    switch (attrib) {
    case GLS_CAPTURE_ENTRY_FUNC: return (GlsFunc)ctx->captureEntryFunc;
    case GLS_CAPTURE_EXIT_FUNC: return (GlsFunc)ctx->captureExitFunc;
    case GLS_READ_FUNC: return (GlsFunc)ctx->readFunc;
    case GLS_WRITE_FUNC: return (GlsFunc)ctx->writeFunc;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
}

void *glsGetPointer(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    switch (attrib) {
    case GLS_DEFAULT_READ_CHANNEL: return ctx->defaultReadChannel;
    case GLS_DEFAULT_WRITE_CHANNEL: return ctx->defaultWriteChannel;
    case GLS_DATA_POINTER: return ctx->dataPointer;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
}

GLint glsGeti(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    switch (attrib) {
    case GLS_BLOCK_TYPE: return ctx->blockType;
    case GLS_CALL_NESTING: return ctx->callNesting;
    case GLS_CAPTURE_NESTING: return ctx->captureNesting;
    case GLS_CONTEXT_STREAM_COUNT: return ctx->contextStreamList.count;
    case GLS_MAX_CALL_NESTING: return GLS_CALL_NESTING_LIMIT;
    case GLS_MAX_CAPTURE_NESTING: return GLS_CAPTURE_NESTING_LIMIT;
    case GLS_OUT_ARG_COUNT: return ctx->outArgCount;
    case GLS_READ_PREFIX_COUNT: return ctx->readPrefixList.count;
    case GLS_STRING_TYPE: return ctx->stringType;
    case GLS_VERSION_MAJOR: return GLS_VERSION_MAJOR_VALUE;
    case GLS_VERSION_MINOR: return GLS_VERSION_MINOR_VALUE;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
}

const GLubyte *glsGetc(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    switch (attrib) {
    case GLS_EXTENSIONS: return gls_return_string(ctx, gls_extension_list);
    case GLS_RELEASE: return gls_return_string(ctx, "quondale 1.0");
    case GLS_VENDOR: return gls_return_string(ctx, "ARB");
    case GLS_WRITE_PREFIX: return gls_return_string(ctx, gls_write_prefix(ctx));
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
}

void glsGetl(GLSenum attrib, GLint *outVec)
{
    if (!gls_require_context())
        return;
    if (attrib != GLS_CURRENT_TIME || !outVec) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    time_t now = time(nullptr);
    gls_lock_enter();
    struct tm *local = now == (time_t)-1 ? nullptr : localtime(&now);
    GLint parts[6] = {0, 0, 0, 0, 0, 0};
    if (local) {
        parts[0] = local->tm_year + 1900;
        parts[1] = local->tm_mon + 1;
        parts[2] = local->tm_mday;
        parts[3] = local->tm_hour;
        parts[4] = local->tm_min;
        parts[5] = local->tm_sec;
    }
    gls_lock_leave();
    memcpy(outVec, parts, sizeof parts);
}

// ---------------------------------------------------------------------------------------------
// The stream header

const GLubyte *glsGetHeaderc(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    GlsHeader *h = &ctx->header;
    GlsString *text = attrib == GLS_AUTHOR ? &h->author : attrib == GLS_TITLE ? &h->title
                      : attrib == GLS_VERSION ? &h->version : nullptr;
    if (!text) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
    return gls_return_string(ctx, gls_string_text(text));
}

// The float values of an attribute and their count; null for another attribute.
static GLfloat *header_floats(GlsHeader *h, GLSenum attrib, int *count)
{
    *count = 2;
    switch (attrib) {
    case GLS_ASPECT: *count = 1; return &h->aspect;
    case GLS_CONTRAST: *count = 1; return &h->contrast;
    case GLS_GAMMA: *count = 4; return h->gamma;
    case GLS_RED_POINT: return h->redPoint;
    case GLS_GREEN_POINT: return h->greenPoint;
    case GLS_BLUE_POINT: return h->bluePoint;
    case GLS_WHITE_POINT: return h->whitePoint;
    default: return nullptr;
    }
}

GLfloat glsGetHeaderf(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    int count;
    GLfloat *values = header_floats(&ctx->header, attrib, &count);
    if (!values || count != 1) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    return values[0];
}

void glsGetHeaderfv(GLSenum attrib, GLfloat *outVec)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    int count;
    GLfloat *values = header_floats(&ctx->header, attrib, &count);
    if (!values || !outVec) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    memcpy(outVec, values, (size_t)count * sizeof(GLfloat));
}

GLint glsGetHeaderi(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    GLint *value = gls_header_int(&ctx->header, attrib);
    if (!value) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    return *value;
}

void glsGetHeaderiv(GLSenum attrib, GLint *outVec)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (!outVec) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    if (attrib == GLS_CREATE_TIME) {
        memcpy(outVec, ctx->header.createTime, sizeof ctx->header.createTime);
        return;
    }
    GLint *value = gls_header_int(&ctx->header, attrib);
    if (!value) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    outVec[0] = *value;
}

// ---------------------------------------------------------------------------------------------
// Lists

const GLubyte *glsGetListc(GLSenum attrib, GLint index)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return nullptr;
    const char *text = nullptr;
    if (attrib == GLS_CONTEXT_STREAM_LIST) {
        GlsBox *box = index >= 0 && index < ctx->contextStreamList.count ? gls_list_at(&ctx->contextStreamList, index) : nullptr;
        text = box ? gls_string_text(&((GlsContextStream *)box)->name) : nullptr;
    } else if (attrib == GLS_READ_PREFIX_LIST) {
        text = index >= 0 && index < ctx->readPrefixList.count ? gls_read_prefix(ctx, index) : nullptr;
    }
    if (!text) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
    return gls_return_string(ctx, text);
}

GLint glsGetListi(GLSenum attrib, GLint index)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    if (attrib != GLS_OUT_ARG_SIZE_LIST || index < 0 || index >= ctx->outArgCount) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    return ctx->outArgSizes[index];
}

GLlong glsGetListl(GLSenum attrib, GLint index)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    if (attrib != GLS_OUT_ARG_POINTER_LIST || index < 0 || index >= ctx->outArgCount) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    return (GLlong)ctx->outArgPointers[index];
}

// ---------------------------------------------------------------------------------------------
// Versions and extensions

// A match ends at a blank or the end of the list; its start is not tested, so that GL_EXT_abgr
// is found inside __GL_EXT_abgr.
static bool listed(const char *list, const char *name)
{
    size_t length = strlen(name);
    if (length == 0)
        return false;
    for (const char *at = strstr(list, name); at; at = strstr(at + 1, name)) {
        char after = at[length];
        if (after == 0 || after == ' ')
            return true;
    }
    return false;
}

static const char *gl_string(GlsContext *ctx, GLenum name)
{
    int token = enterDirectCall(ctx, OP_glGetString);
    const GLubyte *text = ((fn_glGetString)gls_default_dispatch[OP_glGetString])(name);
    leaveDirectCall(ctx, OP_glGetString, token);
    return (const char *)text;
}

bool gls_extension_supported(const char *name)
{
    GlsContext *ctx = gls_current();
    if (!ctx || !name || !listed(gls_extension_list, name))
        return false;
    if (strncmp(name, "GL_", 3) != 0 || !gls_have_gl_context(ctx))
        return true;
    const char *extensions = gl_string(ctx, GL_EXTENSIONS);
    return !extensions || listed(extensions, name);
}

GLboolean glsIsExtensionSupported(const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return 0;
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, name, &scratch);
    bool supported = utf8 && gls_extension_supported(utf8);
    gls_string_free(&scratch);
    return supported;
}

// The GL version from its string, split at the first full stop; 1.1 without a GL context.
static void read_gl_version(GlsContext *ctx)
{
    gls_reset_gl_info(ctx);
    ctx->glInfo.glVersionMajor = 1;
    ctx->glInfo.glVersionMinor = 1;
    if (!gls_have_gl_context(ctx))
        return;
    const char *version = gl_string(ctx, GL_VERSION);
    if (!version)
        return;
    const char *point = strchr(version, '.');
    ctx->glInfo.glVersionMajor = atoi(version);
    ctx->glInfo.glVersionMinor = point ? atoi(point + 1) : 0;
}

bool gls_version_supported(GLSenum api, GLint major, GLint minor)
{
    GlsContext *ctx = gls_current();
    if (api == GLS_API_GLS)
        return major == GLS_VERSION_MAJOR_VALUE && minor <= GLS_VERSION_MINOR_VALUE;
    if (api != GLS_API_GL || !ctx) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return false;
    }
    read_gl_version(ctx);
    return ctx->glInfo.glVersionMajor == major && ctx->glInfo.glVersionMinor >= minor;
}

GLboolean glsIsVersionSupported(GLSenum api, GLint major, GLint minor)
{
    if (!gls_require_context())
        return 0;
    return gls_version_supported(api, major, minor);
}

GLSenum glsBinary(GLboolean swapped)
{
    return swapped & 1 ? GLS_BINARY_MSB_FIRST : GLS_BINARY_LSB_FIRST;
}
