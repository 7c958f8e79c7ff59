// Codec contexts: the process-wide binding, the context table, the error word, capture flags
// and the operations that manage them.
#include "gls/gls.h"

#include "gen/commands.h"
#include "gls/containers.h"
#include "gls/tables.h"
#include "gls/gls_string.h"
#include "gls/writer.h"
#include "gls/streams.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

GlsTlsIndex gls_tls_context = GLS_TLS_INVALID;
GlsTlsIndex gls_tls_error = GLS_TLS_INVALID;


// Global state, guarded by the global lock.
static GlsIntMap *context_table;
static GlsList context_list;
static GLuint next_context_id = 1;

void gls_abort_stub(uint8_t *, uint32_t) {}

// ---------------------------------------------------------------------------------------------
// Error word and allocator

void gls_set_error(GLSenum error)
{
    // The first error stays until glsGetError reads it.
    if (gls_tls_get(gls_tls_error) == nullptr)
        gls_tls_set(gls_tls_error, (void *)(intptr_t)error);
}

GLSenum glsGetError()
{
    GLSenum error = (GLSenum)(intptr_t)gls_tls_get(gls_tls_error);
    gls_tls_set(gls_tls_error, nullptr);
    return error;
}

void *gls_malloc(size_t size)
{
    void *block = malloc(size ? size : 1);
    if (!block)
        gls_set_error(GLS_RESOURCE_ERROR);
    return block;
}

void *gls_calloc(size_t size)
{
    void *block = calloc(1, size ? size : 1);
    if (!block)
        gls_set_error(GLS_RESOURCE_ERROR);
    return block;
}

void gls_free(void *block) { free(block); }

GlsContext *gls_require_context()
{
    GlsContext *ctx = gls_current();
    if (!ctx)
        gls_set_error(GLS_STATE_ERROR);
    return ctx;
}

GlsContext *gls_require_command(GLSopcode opcode)
{
    GlsContext *ctx = gls_require_context();
    if (ctx && !gls_opcode_exists(opcode)) {
        gls_set_error(GLS_UNSUPPORTED_COMMAND);
        return nullptr;
    }
    return ctx;
}

// ---------------------------------------------------------------------------------------------
// Process start-up and shut-down

bool gls_process_attach()
{
    char path[300];
    void *module = gls_platform_open_gl(path, sizeof path);
    if (!module) {
        fprintf(stderr, "GLS fatal: LoadLibrary failed on %s\n", path);
        return false;
    }
    for (const int32_t *op = gls_bind_list; *op != 0; ++op) {
        GlsFunc real = gls_platform_lookup(module, gls_opcode_names[*op]);
        gls_default_dispatch[*op] = real ? real : gls_null_funcs[*op];
    }
    gls_lock_init();
    if (!gls_tls_alloc(&gls_tls_context) || !gls_tls_alloc(&gls_tls_error)) {
        fprintf(stderr, "GLS fatal: TlsAlloc failed\n");
        return false;
    }
    context_table = gls_intmap_create(32);
    if (!context_table) {
        fprintf(stderr, "GLS fatal: couldn't create __glsContextDict\n");
        return false;
    }
    return true;
}

static void free_context(GlsContext *ctx);

void gls_process_detach()
{
    while (context_list.head) {
        GlsContext *ctx = (GlsContext *)context_list.head;
        gls_list_remove(&context_list, (GlsBox *)ctx);
        free_context(ctx);
    }
    gls_intmap_delete(context_table);
    context_table = nullptr;
    gls_lock_delete();
    gls_tls_free(gls_tls_context);
    gls_tls_free(gls_tls_error);
    gls_tls_context = gls_tls_error = GLS_TLS_INVALID;
}

// ---------------------------------------------------------------------------------------------
// Context records

void gls_reset_gl_info(GlsContext *ctx)
{
    GlsGlInfo *info = &ctx->glInfo;
    info->decimalPoint = -1;
    info->haveGlContext = -1;
    info->extTexture3D = -1;
    info->extTexture4D = -1;
    info->glVersionMajor = -1;
    info->glVersionMinor = -1;
    info->spare = 0;
    info->packParametersSet = 0;
    info->unpackParametersSet = 0;
}

void gls_reset_header(GlsHeader *header)
{
    gls_string_clear(&header->author);
    gls_string_clear(&header->title);
    gls_string_clear(&header->version);
    GlsString author = header->author, title = header->title, version = header->version;
    memset(header, 0, sizeof *header);
    header->author = author;
    header->title = title;
    header->version = version;
    header->colorRedBits = 1;
    header->colorGreenBits = 1;
    header->colorBlueBits = 1;
    header->tileable = 1;
    header->rgbaMode = 1;
}

void gls_update_dispatch(GlsContext *ctx)
{
    const GlsFunc *source = ctx->captureNesting > 0 ? gls_forwarders : gls_default_dispatch;
    memcpy(ctx->defaultDispatch, source, sizeof ctx->defaultDispatch);
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        ctx->callDispatch[op] = ctx->callFuncs[op] ? ctx->callFuncs[op] : ctx->defaultDispatch[op];
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        if (ctx->abortCall)
            ctx->decodeDispatch[op] = (GlsFunc)gls_abort_stub;
        else
            ctx->decodeDispatch[op] = gls_decode_table[op] ? gls_decode_table[op] : ctx->callDispatch[op];
    }
}

static void init_capture_flags(GlsContext *ctx)
{
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        unsigned attrib = gls_attributes[op];
        bool client_not_get = (attrib & GLS_ATTRIB_CLIENT) && !(attrib & GLS_ATTRIB_GET);
        ctx->captureFlags[op] = client_not_get ? 3 : 2;
    }
    // The writer writes these itself, never their capture functions.
    ctx->captureFlags[OP_glsBeginGLS] = 0;
    ctx->captureFlags[OP_glsEndGLS] = 0;
    ctx->captureFlags[OP_glsPad] = 0;
}

static GlsContext *new_context()
{
    GlsContext *ctx = (GlsContext *)gls_calloc(sizeof(GlsContext));
    if (!ctx)
        return nullptr;
    ctx->blockType = GLS_FRAME;
    gls_reset_gl_info(ctx);
    init_capture_flags(ctx);
    ctx->defaultReadChannel = stdin;
    ctx->defaultWriteChannel = stdout;
    memcpy(ctx->captureFuncs, gls_default_capture, sizeof ctx->captureFuncs);
    gls_reset_header(&ctx->header);
    ctx->stringType = GLS_UCS1;
    ctx->clientState.unpack.alignment = 4;
    ctx->clientState.pack.alignment = 4;
    gls_streams_init(ctx);
    gls_update_dispatch(ctx);
    return ctx;
}

static void free_context(GlsContext *ctx)
{
    // Writers close in stack order from the bottom.
    for (int i = 0; i < ctx->captureNesting; ++i)
        gls_delete_writer(ctx->writerStack[i]);
    ctx->captureNesting = 0;
    ctx->currentWriter = nullptr;
    gls_streams_release(ctx);
    gls_string_free(&ctx->returnString);
    gls_string_free(&ctx->header.author);
    gls_string_free(&ctx->header.title);
    gls_string_free(&ctx->header.version);
    for (void *scratch : ctx->clientState.scratch)
        gls_free(scratch);
    gls_free(ctx);
}

// ---------------------------------------------------------------------------------------------
// Context management

GLuint glsGenContext()
{
    GlsContext *ctx = new_context();
    if (!ctx)
        return 0;
    gls_lock_enter();
    ctx->id = next_context_id;
    bool entered = gls_intmap_insert(context_table, ctx->id, ctx);
    if (entered) {
        ++next_context_id;
        gls_list_append(&context_list, (GlsBox *)ctx);
    }
    gls_lock_leave();
    if (!entered) {
        gls_set_error(GLS_RESOURCE_ERROR);
        free_context(ctx);
        return 0;
    }
    return ctx->id;
}

void glsContext(GLuint id)
{
    GlsContext *old_ctx = gls_current();
    GlsContext *ctx = nullptr;
    gls_lock_enter();
    if (id != 0) {
        ctx = (GlsContext *)gls_intmap_find(context_table, id);
        if (!ctx) {
            gls_lock_leave();
            gls_set_error(GLS_PARAMETER_ERROR);
            return;
        }
        if (ctx->inUse && ctx != old_ctx) {
            gls_lock_leave();
            gls_set_error(GLS_STATE_ERROR);
            return;
        }
    }
    bool free_old = false;
    if (old_ctx && old_ctx != ctx) {
        old_ctx->inUse = 0;
        free_old = old_ctx->deletePending != 0;
    }
    if (ctx)
        ctx->inUse = 1;
    gls_lock_leave();
    if (free_old)
        free_context(old_ctx);
    if (ctx)
        gls_reset_gl_info(ctx);
    gls_tls_set(gls_tls_context, ctx);
}

void glsDeleteContext(GLuint id)
{
    if (!gls_require_context())
        return;
    gls_lock_enter();
    GlsContext *ctx = (GlsContext *)gls_intmap_find(context_table, id);
    if (!ctx) {
        gls_lock_leave();
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    gls_intmap_remove(context_table, id);
    gls_list_remove(&context_list, (GlsBox *)ctx);
    bool in_use = ctx->inUse != 0;
    if (in_use)
        ctx->deletePending = 1;
    gls_lock_leave();
    if (!in_use)
        free_context(ctx);
}

GLuint *glsGetAllContexts()
{
    if (!gls_require_context())
        return nullptr;
    gls_lock_enter();
    GLuint *ids = (GLuint *)gls_malloc((context_list.count + 1) * sizeof(GLuint));
    if (ids) {
        int count = 0;
        GlsBox *box = context_list.head;
        for (int i = 0; i < context_list.count; ++i, box = box->next)
            ids[count++] = ((GlsContext *)box)->id;
        ids[count] = 0;
    }
    gls_lock_leave();
    return ids;
}

GLuint glsGetCurrentContext()
{
    GlsContext *ctx = gls_current();
    return ctx ? ctx->id : 0;
}

GLboolean glsIsContext(GLuint id)
{
    if (!gls_require_context())
        return 0;
    gls_lock_enter();
    bool found = gls_intmap_find(context_table, id) != nullptr;
    gls_lock_leave();
    return found;
}

// ---------------------------------------------------------------------------------------------
// Capture

GLboolean glsBeginCapture(const GLubyte *name, GLSenum type, GLbitfield writeFlags)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    if (ctx->captureNesting >= GLS_CAPTURE_NESTING_LIMIT) {
        gls_set_error(GLS_STATE_ERROR);
        return 0;
    }
    if (writeFlags > 3 || type < GLS_CONTEXT || type > GLS_TEXT) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    GlsString scratch = {};
    const char *utf8 = name ? gls_utf8_name(ctx, name, &scratch) : "";
    GlsWriter *writer = utf8 ? gls_create_writer(ctx, (const GLubyte *)utf8, type, writeFlags) : nullptr;
    gls_string_free(&scratch);
    if (!writer)
        return 0;
    ctx->writerStack[ctx->captureNesting++] = writer;
    ctx->currentWriter = writer;
    if (ctx->captureNesting == 1) {
        if (ctx->callNesting == 0)
            gls_reset_gl_info(ctx);
        gls_update_dispatch(ctx);
    }
    if (!(writeFlags & GLS_WRITE_NO_FRAME)) {
        if (writer->beginCommand(writer, OP_glsBeginGLS, 8)) {
            writer->putGLint(writer, GLS_VERSION_MAJOR_VALUE);
            writer->putGLint(writer, GLS_VERSION_MINOR_VALUE);
            writer->endCommand(writer);
        }
        gls_flush_writer(writer);
    }
    return 1;
}

void glsEndCapture()
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (ctx->captureNesting < 1) {
        gls_set_error(GLS_STATE_ERROR);
        return;
    }
    GlsWriter *writer = ctx->writerStack[--ctx->captureNesting];
    ctx->writerStack[ctx->captureNesting] = nullptr;
    gls_delete_writer(writer);
    ctx->currentWriter = ctx->captureNesting ? ctx->writerStack[ctx->captureNesting - 1] : nullptr;
    if (ctx->captureNesting == 0)
        gls_update_dispatch(ctx);
}

void glsFlush()
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !ctx->currentWriter)
        return;
    gls_flush_writer(ctx->currentWriter);
    gls_flush_stream_file(ctx->currentWriter);
}

void glsCaptureFlags(GLSopcode opcode, GLbitfield flags)
{
    GlsContext *ctx = gls_require_command(opcode);
    if (!ctx)
        return;
    if (flags >= 8) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    if (opcode == OP_glsBeginGLS || opcode == OP_glsEndGLS || opcode == OP_glsPad)
        return;
    ctx->captureFlags[opcode] = (uint8_t)flags;
}

GLbitfield glsGetCaptureFlags(GLSopcode opcode)
{
    GlsContext *ctx = gls_require_command(opcode);
    if (!ctx)
        return 0;
    return ctx->captureFlags[opcode];
}

static void set_enabled(GLSenum attrib, int32_t value)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (attrib == GLS_ABORT_CALL) {
        ctx->abortCall = value;
        gls_update_dispatch(ctx);
    } else if (attrib == GLS_CAPTURE_VERTEX_ARRAYS) {
        ctx->captureVertexArrays = value;
    } else {
        gls_set_error(GLS_PARAMETER_ERROR);
    }
}

void glsEnable(GLSenum attrib) { set_enabled(attrib, 1); }
void glsDisable(GLSenum attrib) { set_enabled(attrib, 0); }

GLboolean glsIsEnabled(GLSenum attrib)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return 0;
    if (attrib == GLS_ABORT_CALL)
        return ctx->abortCall != 0;
    if (attrib == GLS_CAPTURE_VERTEX_ARRAYS)
        return ctx->captureVertexArrays != 0;
    gls_set_error(GLS_PARAMETER_ERROR);
    return 0;
}

void glsCommandFunc(GLSenum target, GLSopcode opcode, GlsFunc func)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (target != GLS_CALL_FUNC && target != GLS_CAPTURE_FUNC) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    if (!gls_opcode_exists(opcode)) {
        gls_set_error(GLS_UNSUPPORTED_COMMAND);
        return;
    }
    if (target == GLS_CALL_FUNC) {
        ctx->callFuncs[opcode] = func;
        ctx->callDispatch[opcode] = func ? func : ctx->defaultDispatch[opcode];
        if (!ctx->abortCall && !gls_decode_table[opcode])
            ctx->decodeDispatch[opcode] = ctx->callDispatch[opcode];
    } else {
        ctx->captureFuncs[opcode] = func ? func : gls_default_capture[opcode];
    }
}

GlsFunc glsGetCommandFunc(GLSenum target, GLSopcode opcode)
{
    GlsContext *ctx = gls_require_command(opcode);
    if (!ctx)
        return nullptr;
    switch (target) {
    case GLS_CALL_FUNC:
        return ctx->callFuncs[opcode];
    case GLS_CAPTURE_FUNC:
        return ctx->captureFuncs[opcode] == gls_default_capture[opcode] ? nullptr : ctx->captureFuncs[opcode];
    case GLS_NULL_FUNC:
        return gls_null_funcs[opcode];
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
}

void glsCaptureFunc(GLSenum target, GlsCaptureFunc func)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (target == GLS_CAPTURE_ENTRY_FUNC)
        ctx->captureEntryFunc = func;
    else if (target == GLS_CAPTURE_EXIT_FUNC)
        ctx->captureExitFunc = func;
    else
        gls_set_error(GLS_PARAMETER_ERROR);
}

void glsDataPointer(void *pointer)
{
    if (GlsContext *ctx = gls_require_context())
        ctx->dataPointer = pointer;
}

void glsChannel(GLSenum target, FILE *channel)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (target == GLS_DEFAULT_READ_CHANNEL)
        ctx->defaultReadChannel = channel;
    else if (target == GLS_DEFAULT_WRITE_CHANNEL)
        ctx->defaultWriteChannel = channel;
    else
        gls_set_error(GLS_PARAMETER_ERROR);
}

void glsReadFunc(GlsReadFunc func)
{
    if (GlsContext *ctx = gls_require_context())
        ctx->readFunc = func;
}

void glsWriteFunc(GlsWriteFunc func)
{
    if (GlsContext *ctx = gls_require_context())
        ctx->writeFunc = func;
}

void glsStringType(GLSenum type)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    if (type < GLS_UCS1 || type > GLS_UCS4) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    ctx->stringType = type;
}

void glsResetWriterAlignment()
{
    GlsContext *ctx = gls_require_context();
    if (ctx && ctx->currentWriter)
        ctx->currentWriter->wordParity = 0;
}
