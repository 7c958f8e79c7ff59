// Before GL runs a command of the stream, every pointer it gets is held to what GL itself reads
// or writes there by its own rules, which know more pnames, formats and types than the codec's
// size tables: an array the stream holds too little of skips the command, and every area GL
// writes into is the player's, sized by GL's rules and the pixel-store state GL has. A vector by
// pname goes to GL in room for the most values any pname takes, since an implementation may
// copy more than the pname needs into a display list.
#include "tools/player/play_state.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/gls.h"
#include "gls/tables.h"
#include "tools/player/gl_rules.h"

#include <cstdlib>
#include <cstring>

#define GL(name) ((fn_##name)gls_default_dispatch[OP_##name])

// Room for the values of any state query.
static const uint64_t QUERY_AREA_SIZE = 65536;
static const int PADDED_VALUES = 16;

static GLint gl_integer(GLenum pname)
{
    GLint value = 0;
    GL(glGetIntegerv)(pname, &value);
    return value;
}

static void read_store(bool pack, pixel_store *store)
{
    static const GLenum names[2][6] = {
        {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_IMAGE_HEIGHT_EXT, GL_UNPACK_SKIP_PIXELS,
         GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_IMAGES_EXT},
        {GL_PACK_ALIGNMENT, GL_PACK_ROW_LENGTH, GL_PACK_IMAGE_HEIGHT_EXT, GL_PACK_SKIP_PIXELS, GL_PACK_SKIP_ROWS,
         GL_PACK_SKIP_IMAGES_EXT}};
    const GLenum *name = names[pack];
    *store = pixel_store{gl_integer(name[0]), gl_integer(name[1]), gl_integer(name[2]),
                         gl_integer(name[3]), gl_integer(name[4]), gl_integer(name[5])};
}

static int64_t ref_of(const GlsArgValue *args, int16_t ref) { return ref >= 0 ? args[ref].i : -(int64_t)ref - 1; }

// The bytes of an image that GL packs into memory, or -1 for a format or type its rules do not know.
static bool packed_image(GLenum format, GLenum type, int64_t width, int64_t height, int64_t depth, uint64_t *bytes)
{
    pixel_store store;
    read_store(true, &store);
    return gl_image_bytes(format, type, width, height, depth, true, &store, bytes);
}

static GLint level_integer(GLenum target, GLint level, GLenum pname)
{
    GLint value = 0;
    GL(glGetTexLevelParameteriv)(target, level, pname, &value);
    return value;
}

// What GL writes through output argument `arg`; false when its rules do not size it.
static bool out_bytes(int opcode, const GlsArgValue *a, int arg, uint64_t *bytes)
{
    GLint width = 0, height = 0;
    *bytes = QUERY_AREA_SIZE;
    switch (opcode) {
    case OP_glReadPixels:
        return packed_image((GLenum)a[4].u, (GLenum)a[5].u, a[2].i, a[3].i, 1, bytes);
    case OP_glGetTexImage: {
        GLenum target = (GLenum)a[0].u;
        GLint level = (GLint)a[1].i;
        return packed_image((GLenum)a[2].u, (GLenum)a[3].u, level_integer(target, level, GL_TEXTURE_WIDTH),
                            level_integer(target, level, GL_TEXTURE_HEIGHT),
                            level_integer(target, level, GL_TEXTURE_DEPTH_EXT), bytes);
    }
    case OP_glGetColorTable:
        GL(glGetColorTableParameteriv)((GLenum)a[0].u, GL_COLOR_TABLE_WIDTH, &width);
        return packed_image((GLenum)a[1].u, (GLenum)a[2].u, width, 1, 1, bytes);
    case OP_glGetConvolutionFilter:
        GL(glGetConvolutionParameteriv)((GLenum)a[0].u, GL_CONVOLUTION_WIDTH, &width);
        GL(glGetConvolutionParameteriv)((GLenum)a[0].u, GL_CONVOLUTION_HEIGHT, &height);
        return packed_image((GLenum)a[1].u, (GLenum)a[2].u, width, height, 1, bytes);
    case OP_glGetSeparableFilter:
        if (arg == 5)
            return true; // the span, which GL does not use
        GL(glGetConvolutionParameteriv)((GLenum)a[0].u, arg == 3 ? GL_CONVOLUTION_WIDTH : GL_CONVOLUTION_HEIGHT, &width);
        return packed_image((GLenum)a[1].u, (GLenum)a[2].u, width, 1, 1, bytes);
    case OP_glGetHistogram:
        GL(glGetHistogramParameteriv)((GLenum)a[0].u, GL_HISTOGRAM_WIDTH, &width);
        return packed_image((GLenum)a[2].u, (GLenum)a[3].u, width, 1, 1, bytes);
    case OP_glGetMinmax:
        return packed_image((GLenum)a[2].u, (GLenum)a[3].u, 2, 1, 1, bytes);
    case OP_glGetPolygonStipple:
        return packed_image(GL_COLOR_INDEX, GL_BITMAP, 32, 32, 1, bytes);
    case OP_glGetPixelMapfv:
    case OP_glGetPixelMapuiv:
    case OP_glGetPixelMapusv: {
        // Each map's size query sits 64 above the map's own enumerant.
        GLenum map = (GLenum)a[0].u;
        GLint size = map >= GL_PIXEL_MAP_I_TO_I && map <= GL_PIXEL_MAP_A_TO_A ? gl_integer(map + 64) : 0;
        *bytes = size > 0 ? (uint64_t)size * 4 : 0;
        return true;
    }
    case OP_glGenTextures:
        *bytes = a[0].i > 0 ? (uint64_t)a[0].i * 4 : 0;
        return true;
    case OP_glAreTexturesResident:
        *bytes = a[0].i > 0 ? (uint64_t)a[0].i : 0;
        return true;
    case OP_glFeedbackBuffer:
    case OP_glSelectBuffer:
        *bytes = a[0].i > 0 ? (uint64_t)a[0].i * 4 : 0;
        return true;
    default:
        return true;
    }
}

static void free_areas(player_state *p, held_area *areas, int count)
{
    for (int i = 0; i < count; ++i) {
        free(areas[i].data);
        budget_give(p, areas[i].bytes);
        areas[i] = held_area{};
    }
}

// The feedback and selection areas that GL no longer holds go; while GL cannot say which it
// holds, all stay.
static void release_held(player_state *p)
{
    void *const unknown = (void *)&p->guard;
    void *feedback = unknown, *selection = unknown;
    if (gls_default_dispatch[OP_glGetPointerv] == gls_null_funcs[OP_glGetPointerv])
        return;
    GL(glGetPointerv)(GL_FEEDBACK_BUFFER_POINTER, &feedback);
    GL(glGetPointerv)(GL_SELECTION_BUFFER_POINTER, &selection);
    if (feedback == unknown || selection == unknown)
        return;
    for (held_area &area : p->guard.held)
        if (area.data != feedback && area.data != selection)
            free_areas(p, &area, 1);
}

static bool out_area(player_state *p, int opcode, GlsArgValue *args, const GlsArgDesc *d)
{
    char message[MESSAGE_SIZE];
    uint64_t bytes;
    if (!out_bytes(opcode, args, d->arg, &bytes)) {
        report_skip(p, opcode, "GL's rules here do not size what it would write for that format and type");
        return false;
    }
    bool held = opcode == OP_glFeedbackBuffer || opcode == OP_glSelectBuffer;
    held_area *slot = nullptr;
    if (held)
        release_held(p);
    if (!held && bytes <= QUERY_AREA_SIZE && !p->guard.query_used) {
        if (!p->guard.query.data && budget_take(p, QUERY_AREA_SIZE, "the area of state queries"))
            p->guard.query = held_area{calloc(1, QUERY_AREA_SIZE), QUERY_AREA_SIZE};
        if (p->guard.query.data) {
            p->guard.query_used = true;
            args[d->arg].p = p->guard.query.data;
            return true;
        }
    }
    held_area *areas = held ? p->guard.held : p->guard.transient;
    for (int i = 0; i < (held ? HELD_AREAS : 3); ++i)
        if (!areas[i].data)
            slot = &areas[i];
    if (!slot) {
        report_skip(p, opcode, "GL still holds the areas of the last ones");
        return false;
    }
    // Never nothing: a pointer GL gets is a real one.
    bytes = bytes < 64 ? 64 : bytes;
    snprintf(message, sizeof message, "the area %s writes into", gls_opcode_names[opcode]);
    if (!budget_take(p, bytes, message))
        return false;
    void *area = bytes <= SIZE_MAX ? calloc(1, (size_t)bytes) : nullptr;
    if (!area) {
        budget_give(p, bytes);
        snprintf(message, sizeof message, "no memory for the %llu bytes %s writes", (unsigned long long)bytes,
                 gls_opcode_names[opcode]);
        refuse(p, message);
        return false;
    }
    *slot = held_area{area, bytes};
    args[d->arg].p = area;
    return true;
}

static bool is_tex_image(int opcode)
{
    return opcode == OP_glTexImage1D || opcode == OP_glTexImage2D || opcode == OP_glTexImage3D;
}

// Images and bitmaps GL reads: held to GL's unpack rules. A texture image the stream cannot
// give whole is made without its content, as one with a null image.
static bool image_argument(player_state *p, int opcode, GlsArgValue *args, const GlsArgDesc *d)
{
    char message[MESSAGE_SIZE];
    bool bitmap = d->kind == GLS_ARG_BITMAP;
    GLenum format = bitmap ? GL_COLOR_INDEX : (GLenum)ref_of(args, d->refs[0]);
    GLenum type = bitmap ? GL_BITMAP : (GLenum)ref_of(args, d->refs[1]);
    int64_t width = ref_of(args, d->refs[bitmap ? 0 : 2]), height = ref_of(args, d->refs[bitmap ? 1 : 3]);
    int64_t depth = bitmap ? 1 : ref_of(args, d->refs[4]);
    pixel_store store;
    read_store(false, &store);
    uint64_t need = 0;
    bool known = gl_image_bytes(format, type, width, height, depth, !bitmap && d->refs[4] >= 0, &store, &need);
    GlsArrayShape shape = gls_array_shape(d, args);
    uint64_t held = args[d->arg].p ? shape.count * shape.width : 0;
    // A texture image may come without its content, as the stream says when it holds none.
    if ((known && need <= held) || (is_tex_image(opcode) && !args[d->arg].p))
        return true;
    char format_text[64], type_text[64];
    const char *format_name = gl_enum_text(format, format_text, sizeof format_text);
    const char *type_name = gl_enum_text(type, type_text, sizeof type_text);
    if (!known)
        snprintf(message, sizeof message, "GL's rules here do not size a %s %s image", format_name, type_name);
    else
        snprintf(message, sizeof message, "GL reads %llu bytes of its %s %s image, the history holds %llu",
                 (unsigned long long)need, format_name, type_name, (unsigned long long)held);
    if (is_tex_image(opcode)) {
        if (!p->skip_reported[opcode]) {
            p->skip_reported[opcode] = true;
            tell(p, "%s played without its image: %s", gls_opcode_names[opcode], message);
        }
        args[d->arg].p = nullptr;
        return true;
    }
    report_skip(p, opcode, message);
    return false;
}

static bool vector_argument(player_state *p, int opcode, GlsArgValue *args, const GlsArgDesc *d)
{
    char message[MESSAGE_SIZE], scratch[64];
    GLenum pname = (GLenum)ref_of(args, d->refs[0]);
    int64_t need = gl_pname_count((GlsSizeTable)d->table, pname);
    GlsArrayShape shape = gls_array_shape(d, args);
    uint64_t held = args[d->arg].p ? shape.count : 0;
    if (need < 0 || (uint64_t)need > held || need > PADDED_VALUES) {
        if (need < 0)
            snprintf(message, sizeof message, "GL's rules here do not know what it reads for %s",
                     gl_enum_text(pname, scratch, sizeof scratch));
        else
            snprintf(message, sizeof message, "GL reads %lld value%s for %s, the history holds %llu", (long long)need,
                     need == 1 ? "" : "s", gl_enum_text(pname, scratch, sizeof scratch), (unsigned long long)held);
        report_skip(p, opcode, message);
        return false;
    }
    uint8_t *room = p->guard.padded[d->arg];
    memset(room, 0, sizeof p->guard.padded[0]);
    if (held)
        memcpy(room, args[d->arg].p, (size_t)(held < PADDED_VALUES ? held : PADDED_VALUES) * shape.width);
    args[d->arg].p = room;
    return true;
}

static bool map_argument(player_state *p, int opcode, GlsArgValue *args, const GlsArgDesc *d)
{
    char message[MESSAGE_SIZE], scratch[64];
    bool surface = d->kind == GLS_ARG_MAP2;
    GLenum target = (GLenum)ref_of(args, d->refs[0]);
    uint64_t need = 0;
    bool known = gl_map_values(target, surface, ref_of(args, d->refs[1]), ref_of(args, d->refs[2]),
                               surface ? ref_of(args, d->refs[3]) : 0, surface ? ref_of(args, d->refs[4]) : 0, &need);
    uint64_t held = args[d->arg].p ? gls_array_shape(d, args).count : 0;
    if (known && need <= held)
        return true;
    if (!known)
        snprintf(message, sizeof message, "GL's rules here do not know the map %s", gl_enum_text(target, scratch, sizeof scratch));
    else
        snprintf(message, sizeof message, "GL reads %llu values of its points, the history holds %llu",
                 (unsigned long long)need, (unsigned long long)held);
    report_skip(p, opcode, message);
    return false;
}

// The sizes of the texture commands, by their arguments: a size beyond the largest texture GL
// makes is one GL refuses, and Mesa (22.3) overruns its own stack checking one of 2^30 and more.
struct texture_sizes {
    int opcode;
    uint8_t first;
    uint8_t count;
};
static const texture_sizes texture_size_args[] = {
    {OP_glTexImage1D, 3, 1},     {OP_glTexImage2D, 3, 2},     {OP_glTexImage3D, 3, 3},
    {OP_glTexSubImage1D, 3, 1},  {OP_glTexSubImage2D, 4, 2},  {OP_glTexSubImage3D, 5, 3},
    {OP_glCopyTexImage1D, 5, 1}, {OP_glCopyTexImage2D, 5, 2}, {OP_glCopyTexSubImage1D, 5, 1},
    {OP_glCopyTexSubImage2D, 6, 2}, {OP_glCopyTexSubImage3D, 7, 2},
};

static bool texture_size_argument(player_state *p, int opcode, const GlsArgValue *args)
{
    const GLint *sizes = p->budget.max_texture_size;
    int64_t largest = (sizes[0] > sizes[1] ? sizes[0] : sizes[1]) + 2; // with a border
    for (const texture_sizes &command : texture_size_args)
        for (int i = 0; command.opcode == opcode && i < command.count; ++i)
            if (args[command.first + i].i > largest) {
                char message[MESSAGE_SIZE];
                snprintf(message, sizeof message, "a size of %lld is larger than any texture GL makes",
                         (long long)args[command.first + i].i);
                report_skip(p, opcode, message);
                return false;
            }
    return true;
}

bool guard_command(player_state *p, int opcode, GlsArgValue *args)
{
    free_areas(p, p->guard.transient, 3);
    p->guard.query_used = false;
    if (!texture_size_argument(p, opcode, args))
        return false;
    const GlsCommandDesc *command = &gls_command_descs[opcode];
    for (int i = 0; i < command->count; ++i) {
        const GlsArgDesc *d = &command->args[i];
        bool fine = true;
        switch (d->kind) {
        case GLS_ARG_OUT:
            fine = out_area(p, opcode, args, d);
            break;
        case GLS_ARG_VECTOR:
            fine = d->table < 0 || vector_argument(p, opcode, args, d);
            break;
        case GLS_ARG_MAP1:
        case GLS_ARG_MAP2:
            fine = map_argument(p, opcode, args, d);
            break;
        case GLS_ARG_IMAGE:
        case GLS_ARG_BITMAP:
            fine = image_argument(p, opcode, args, d);
            break;
        default:
            break;
        }
        if (!fine)
            return false;
    }
    return true;
}

void guard_end(player_state *p)
{
    free_areas(p, p->guard.transient, 3);
    free_areas(p, p->guard.held, HELD_AREAS);
    free_areas(p, &p->guard.query, 1);
}
