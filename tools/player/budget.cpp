// The budgets of a play. A few bytes of stream can ask GL for gigabytes or for hours: the player
// keeps a ledger of what it has asked GL to hold (the frame, texture images, display lists and
// the names they take, the areas GL writes into) and an estimate of the work of each command (a
// unit is about what GL spends on a vertex), and refuses the command that would pass the memory
// or the time budget. A display list costs what running it runs, nested as deep as GL nests
// lists; running it also defines the texture images it holds.
#include "tools/player/play_state.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/gls.h"
#include "gls/tables.h"
#include "tools/player/gl_rules.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

#define GL(name) ((fn_##name)gls_default_dispatch[OP_##name])

extern const char *const player_hook_names[GLS_OPCODE_COUNT];

// Units of work Mesa's software renderer gets through in a second.
static const double WORK_PER_SECOND = 1e7;
// What GL keeps for a list name, a texture name, a compiled command and a texel.
static const uint64_t LIST_NAME_BYTES = 128, TEXTURE_NAME_BYTES = 1024, COMMAND_BYTES = 32, TEXEL_BYTES = 4;
static const uint64_t MB = 1u << 20;
static const uint64_t NOT_KNOWN = UINT64_MAX;

static uint64_t positive(int64_t value) { return value > 0 ? (uint64_t)value : 0; }

static double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// ---------------------------------------------------------------------------------------------
// A map of 64-bit keys to values, open addressing; nothing is ever removed.

static bool map_find(const id_map *map, uint64_t key, uint64_t *value)
{
    if (!map->capacity)
        return false;
    for (size_t i = (size_t)(key * 0x9E3779B97F4A7C15ull >> 20) & (map->capacity - 1);; i = (i + 1) & (map->capacity - 1)) {
        if (map->keys[i] == 0)
            return false;
        if (map->keys[i] == key + 1) {
            *value = map->values[i];
            return true;
        }
    }
}

static bool map_put(id_map *map, uint64_t key, uint64_t value)
{
    if ((map->count + 1) * 2 > map->capacity) {
        id_map grown = {};
        grown.capacity = map->capacity ? map->capacity * 2 : 64;
        grown.keys = (uint64_t *)calloc(grown.capacity, sizeof(uint64_t));
        grown.values = (uint64_t *)calloc(grown.capacity, sizeof(uint64_t));
        if (!grown.keys || !grown.values) {
            free(grown.keys);
            free(grown.values);
            return false;
        }
        for (size_t i = 0; i < map->capacity; ++i)
            if (map->keys[i])
                map_put(&grown, map->keys[i] - 1, map->values[i]);
        free(map->keys);
        free(map->values);
        *map = grown;
    }
    size_t i = (size_t)(key * 0x9E3779B97F4A7C15ull >> 20) & (map->capacity - 1);
    while (map->keys[i] && map->keys[i] != key + 1)
        i = (i + 1) & (map->capacity - 1);
    map->count += map->keys[i] == 0;
    map->keys[i] = key + 1;
    map->values[i] = value;
    return true;
}

static void map_free(id_map *map)
{
    free(map->keys);
    free(map->values);
    *map = id_map{};
}

// A growing array of records of `size` bytes.
static bool grow(void **items, uint32_t *capacity, uint32_t count, size_t size)
{
    if (count < *capacity)
        return true;
    uint32_t more = *capacity ? *capacity * 2 : 8;
    void *grown = realloc(*items, (size_t)more * size);
    if (!grown)
        return false;
    *items = grown;
    *capacity = more;
    return true;
}

// ---------------------------------------------------------------------------------------------
// Memory

static void out_of_budget(player_state *p, const char *what, uint64_t bytes)
{
    char message[MESSAGE_SIZE];
    snprintf(message, sizeof message, "%s would take %llu MB more, past the memory budget of %llu MB (--memory-budget)",
             what, (unsigned long long)((bytes + MB - 1) / MB), (unsigned long long)(p->budget.memory_limit / MB));
    refuse(p, message);
}

bool budget_take(player_state *p, uint64_t bytes, const char *what)
{
    budget_state *b = &p->budget;
    if (add_saturated(b->memory_used, bytes) > b->memory_limit) {
        out_of_budget(p, what, bytes);
        return false;
    }
    b->memory_used += bytes;
    return true;
}

void budget_give(player_state *p, uint64_t bytes)
{
    budget_state *b = &p->budget;
    b->memory_used -= bytes < b->memory_used ? bytes : b->memory_used;
}

// ---------------------------------------------------------------------------------------------
// Textures: the images of each texture name by target and level, and the names bound.

static int bind_slot(GLenum target)
{
    switch (target) {
    case GL_TEXTURE_1D: return 0;
    case GL_TEXTURE_2D: return 1;
    case GL_TEXTURE_3D_EXT: return 2;
    case GL_TEXTURE_RECTANGLE: return 4;
    case GL_TEXTURE_1D_ARRAY: return 5;
    case GL_TEXTURE_2D_ARRAY: return 6;
    default:
        return target == GL_TEXTURE_CUBE_MAP || (target >= GL_TEXTURE_CUBE_MAP_POSITIVE_X && target <= GL_TEXTURE_CUBE_MAP_NEGATIVE_Z) ? 3 : 7;
    }
}

static texture_record *texture_of(budget_state *b, uint32_t name)
{
    uint64_t index;
    if (map_find(&b->texture_index, name, &index))
        return &b->textures[index];
    if (!grow((void **)&b->textures, &b->texture_capacity, b->texture_count, sizeof(texture_record)) ||
        !map_put(&b->texture_index, name, b->texture_count))
        return nullptr;
    texture_record *texture = &b->textures[b->texture_count++];
    *texture = texture_record{};
    texture->name = name;
    return texture;
}

// GL makes a texture object for a name the first time it is generated or bound.
static bool texture_name(player_state *p, uint32_t name, const char *what)
{
    uint64_t known;
    if (name == 0 || map_find(&p->budget.generated_textures, name, &known))
        return true;
    if (!budget_take(p, TEXTURE_NAME_BYTES, what))
        return false;
    return map_put(&p->budget.generated_textures, name, 1);
}

static bool define_image(player_state *p, GLenum target, int64_t level, uint64_t bytes, const char *what)
{
    budget_state *b = &p->budget;
    if (level < 0 || level > 31)
        return true;
    texture_record *texture = texture_of(b, b->bound[bind_slot(target)]);
    if (!texture) {
        refuse(p, "no memory for the textures' ledger");
        return false;
    }
    texture_record::texture_level *slot = nullptr;
    for (uint32_t i = 0; i < texture->count; ++i)
        if (texture->levels[i].target == target && texture->levels[i].level == level)
            slot = &texture->levels[i];
    uint64_t before = slot ? slot->bytes : 0;
    if (bytes > before && !budget_take(p, bytes - before, what))
        return false;
    budget_give(p, before > bytes ? before - bytes : 0);
    if (slot) {
        slot->bytes = bytes;
        return true;
    }
    if (!grow((void **)&texture->levels, &texture->capacity, texture->count, sizeof *texture->levels)) {
        refuse(p, "no memory for the textures' ledger");
        return false;
    }
    texture->levels[texture->count++] = {target, (int32_t)level, bytes};
    return true;
}

static void delete_texture(player_state *p, uint32_t name)
{
    budget_state *b = &p->budget;
    uint64_t index, generated;
    if (name == 0)
        return;
    if (map_find(&b->texture_index, name, &index)) {
        texture_record *texture = &b->textures[index];
        for (uint32_t i = 0; i < texture->count; ++i)
            budget_give(p, texture->levels[i].bytes);
        texture->count = 0;
    }
    if (map_find(&b->generated_textures, name, &generated) && generated) {
        budget_give(p, TEXTURE_NAME_BYTES);
        map_put(&b->generated_textures, name, 0);
    }
    for (GLuint &bound : b->bound)
        bound = bound == name ? 0 : bound;
}

// The storage a texture image takes, 0 where GL would refuse its size.
static uint64_t image_storage(const budget_state *b, GLenum target, int64_t width, int64_t height, int64_t depth)
{
    if (target == GL_PROXY_TEXTURE_1D || target == GL_PROXY_TEXTURE_2D || target == GL_PROXY_TEXTURE_3D_EXT)
        return 0;
    int64_t largest = target == GL_TEXTURE_3D_EXT ? b->max_texture_size[1] : b->max_texture_size[0];
    if (width <= 0 || height <= 0 || depth <= 0 || (largest > 0 && (width > largest + 2 || height > largest + 2)))
        return 0;
    return multiply_saturated(multiply_saturated((uint64_t)width * (uint64_t)height, (uint64_t)depth), TEXEL_BYTES);
}

// ---------------------------------------------------------------------------------------------
// Display lists

static list_record *list_of(budget_state *b, uint32_t name, bool make)
{
    uint64_t index;
    if (map_find(&b->list_index, name, &index))
        return &b->lists[index];
    if (!make || !grow((void **)&b->lists, &b->list_capacity, b->list_count, sizeof(list_record)) ||
        !map_put(&b->list_index, name, b->list_count))
        return nullptr;
    list_record *list = &b->lists[b->list_count++];
    *list = list_record{};
    list->name = name;
    return list;
}

static void clear_list(player_state *p, list_record *list)
{
    budget_give(p, list->bytes);
    list->bytes = list->work = 0;
    list->callee_count = list->effect_count = 0;
    list->defined = list->calls_in_primitive = false;
}

static bool add_effect(list_record *list, list_effect effect)
{
    if (!grow((void **)&list->effects, &list->effect_capacity, list->effect_count, sizeof(list_effect)))
        return false;
    list->effects[list->effect_count++] = effect;
    if (effect.kind != EFFECT_CALL)
        return true;
    if (!grow((void **)&list->callees, &list->callee_capacity, list->callee_count, sizeof(uint32_t)))
        return false;
    list->callees[list->callee_count++] = effect.value;
    return true;
}

// The units of running a list called at `depth`, 1 for a call from outside any list.
static uint64_t list_cost(budget_state *b, uint32_t name, int depth)
{
    list_record *list = list_of(b, name, false);
    if (!list || !list->defined || depth > b->max_nesting)
        return 0;
    if (list->generation != b->generation || !list->cost_at_depth) {
        if (!list->cost_at_depth)
            list->cost_at_depth = (uint64_t *)malloc(sizeof(uint64_t) * (size_t)(b->max_nesting + 1));
        if (!list->cost_at_depth)
            return NOT_KNOWN;
        for (int i = 0; i <= b->max_nesting; ++i)
            list->cost_at_depth[i] = NOT_KNOWN;
        list->generation = b->generation;
        list->texture_effects = -1;
    }
    if (list->cost_at_depth[depth] != NOT_KNOWN)
        return list->cost_at_depth[depth];
    uint64_t cost = list->work;
    for (uint32_t i = 0; i < list->callee_count && cost != NOT_KNOWN; ++i)
        cost = add_saturated(cost, list_cost(b, list->callees[i], depth + 1));
    list->cost_at_depth[depth] = cost;
    return cost;
}

// Whether running the list may define texture images, through the lists it calls as well; a
// nesting too deep to follow answers yes.
static bool has_texture_effects(budget_state *b, uint32_t name, int depth)
{
    list_record *list = list_of(b, name, false);
    if (!list || !list->defined)
        return false;
    if (depth > b->max_nesting)
        return true;
    list_cost(b, name, b->max_nesting); // brings the record into this generation
    if (list->texture_effects >= 0)
        return list->texture_effects == 1;
    list->texture_effects = 0; // a list that calls itself is answered by the rest of it
    bool found = false;
    for (uint32_t i = 0; i < list->effect_count && !found; ++i)
        found = list->effects[i].kind != EFFECT_CALL || has_texture_effects(b, list->effects[i].value, depth + 1);
    list->texture_effects = found;
    return found;
}

// Runs the texture effects of a list on the ledger, as GL will run the list.
static bool replay_list(player_state *p, uint32_t name, int depth, const char *what)
{
    budget_state *b = &p->budget;
    if (depth > b->max_nesting || !has_texture_effects(b, name, depth))
        return true;
    const list_record *list = list_of(b, name, false);
    for (uint32_t i = 0; i < list->effect_count; ++i) {
        list_effect effect = list->effects[i];
        bool fine = effect.kind == EFFECT_CALL    ? replay_list(p, effect.value, depth + 1, what)
                    : effect.kind == EFFECT_BIND ? texture_name(p, effect.value, what)
                                                  : define_image(p, effect.target, effect.value, effect.bytes, what);
        if (effect.kind == EFFECT_BIND)
            b->bound[bind_slot(effect.target)] = effect.value;
        if (!fine)
            return false;
    }
    return true;
}

static void reserve_names(player_state *p, uint64_t first, uint64_t count)
{
    budget_state *b = &p->budget;
    if (count == 0 || !grow((void **)&b->reserved, &b->reserved_capacity, b->reserved_count, sizeof *b->reserved))
        return;
    b->reserved[b->reserved_count][0] = first;
    b->reserved[b->reserved_count++][1] = first + count;
}

void budget_lists_made(player_state *p, GLuint first, GLsizei count)
{
    if (first != 0 && count > 0 && budget_take(p, (uint64_t)count * LIST_NAME_BYTES, "glGenLists"))
        reserve_names(p, first, (uint64_t)count);
}

void budget_textures_made(player_state *p, GLsizei count, const GLuint *names)
{
    for (GLsizei i = 0; i < count && texture_name(p, names[i], "glGenTextures"); ++i)
        continue;
}

static void delete_lists(player_state *p, uint64_t first, uint64_t count)
{
    budget_state *b = &p->budget;
    uint64_t end = first + count;
    for (uint32_t i = 0; i < b->list_count; ++i)
        if (b->lists[i].name >= first && b->lists[i].name < end)
            clear_list(p, &b->lists[i]);
    // The reserved runs lose what lies in the range: each splits into what is left either side.
    uint32_t runs = b->reserved_count;
    for (uint32_t i = 0; i < runs; ++i) {
        uint64_t *run = b->reserved[i];
        uint64_t from = run[0] > first ? run[0] : first, to = run[1] < end ? run[1] : end;
        if (from >= to)
            continue;
        budget_give(p, (to - from) * LIST_NAME_BYTES);
        uint64_t right = run[1];
        run[1] = from;
        reserve_names(p, to, right - to);
    }
    b->generation++;
}

// The list names of glCallLists, as GL reads them by type.
static uint64_t call_lists_name(GLenum type, const uint8_t *data, uint64_t i)
{
    switch (type) {
    case GL_BYTE: return (uint64_t)(int64_t)(int8_t)data[i];
    case GL_UNSIGNED_BYTE: return data[i];
    case GL_SHORT: { int16_t v; memcpy(&v, data + 2 * i, 2); return (uint64_t)(int64_t)v; }
    case GL_UNSIGNED_SHORT: { uint16_t v; memcpy(&v, data + 2 * i, 2); return v; }
    case GL_INT: case GL_UNSIGNED_INT: { uint32_t v; memcpy(&v, data + 4 * i, 4); return v; }
    case GL_FLOAT: { float v; memcpy(&v, data + 4 * i, 4); return v > 0 && v < 4294967296.0f ? (uint64_t)v : 0; }
    case GL_2_BYTES: return (uint64_t)data[2 * i] << 8 | data[2 * i + 1];
    case GL_3_BYTES: return (uint64_t)data[3 * i] << 16 | (uint64_t)data[3 * i + 1] << 8 | data[3 * i + 2];
    case GL_4_BYTES:
        return (uint64_t)data[4 * i] << 24 | (uint64_t)data[4 * i + 1] << 16 | (uint64_t)data[4 * i + 2] << 8 | data[4 * i + 3];
    default: return 0;
    }
}

// ---------------------------------------------------------------------------------------------
// Each command

void budget_start(player_state *p)
{
    budget_state *b = &p->budget;
    b->started = seconds_now();
    b->last_progress = b->started;
    b->generation = 1;
    b->max_nesting = 64;
    GLint nesting = 0;
    GL(glGetIntegerv)(GL_MAX_LIST_NESTING, &nesting);
    b->max_nesting = nesting > 0 && nesting < 1024 ? nesting : 64;
    GL(glGetIntegerv)(GL_MAX_TEXTURE_SIZE, &b->max_texture_size[0]);
    GL(glGetIntegerv)(GL_MAX_3D_TEXTURE_SIZE_EXT, &b->max_texture_size[1]);
    // The attribute commands: a prefix, then a type and "v" (glColor3ubv), with their slot and size.
    static const struct { const char *prefix; int8_t slot; uint8_t size; } attributes[] = {
        {"glColor3", 0, 3},    {"glColor4", 0, 4},    {"glNormal3", 1, 3},   {"glTexCoord1", 2, 1},
        {"glTexCoord2", 2, 2}, {"glTexCoord3", 2, 3}, {"glTexCoord4", 2, 4}, {"glIndex", 3, 1}};
    static const char *const types[] = {"bv", "dv", "fv", "iv", "sv", "ubv", "uiv", "usv"};
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        const char *name = gls_opcode_names[op];
        b->vertex_command[op] = player_hook_names[op] && strcmp(player_hook_names[op], "hook_vertex") == 0;
        b->attribute_slot[op] = op == OP_glEdgeFlagv ? 4 : op == OP_glMaterialf || op == OP_glMaterialfv ||
                                                               op == OP_glMateriali || op == OP_glMaterialiv ? 5 : -1;
        b->attribute_size[op] = 1;
        for (const auto &attribute : attributes) {
            size_t length = strlen(attribute.prefix);
            for (const char *type : types)
                if (name && strncmp(name, attribute.prefix, length) == 0 && strcmp(name + length, type) == 0) {
                    b->attribute_slot[op] = attribute.slot;
                    b->attribute_size[op] = attribute.size;
                }
        }
    }
}

static bool compiled_now(const budget_state *b, int opcode)
{
    // Of the codec's own commands only the arrays' draw reaches a list; a called stream's
    // commands come one by one.
    if (!b->compiling || (gls_attributes[opcode] & (GLS_ATTRIB_CLIENT | GLS_ATTRIB_GET)) ||
        (opcode < OP_glNewList && opcode != OP_glsDrawVertexArray))
        return false;
    for (int immediate : {OP_glGenLists, OP_glDeleteLists, OP_glGenTextures, OP_glDeleteTextures, OP_glNewList,
                          OP_glEndList, OP_glRenderMode, OP_glFinish, OP_glFlush})
        if (opcode == immediate)
            return false;
    return true;
}


// The units of a command's own work, apart from the lists it calls.
static uint64_t own_work(int opcode, const GlsArgValue *a)
{
    switch (opcode) {
    case OP_glEvalMesh1: return 1 + positive(a[2].i - a[1].i + 1);
    case OP_glEvalMesh2: return 1 + multiply_saturated(positive(a[2].i - a[1].i + 1), positive(a[4].i - a[3].i + 1));
    case OP_glsDrawVertexArray: return 1 + positive(a[2].i);
    case OP_glGenLists: case OP_glDeleteLists: return 1 + positive(a[opcode == OP_glGenLists ? 0 : 1].i);
    case OP_glGenTextures: case OP_glDeleteTextures: return 1 + positive(a[0].i);
    case OP_glDrawPixels: return 1 + multiply_saturated(positive(a[0].i), positive(a[1].i)) / 8;
    case OP_glCopyPixels: case OP_glReadPixels: return 1 + multiply_saturated(positive(a[2].i), positive(a[3].i)) / 8;
    default: return 1;
    }
}

// What a texture command defines: its target, level and storage; false for other commands.
static bool texture_image(const budget_state *b, int opcode, const GlsArgValue *a, GLenum *target, int64_t *level,
                          uint64_t *bytes)
{
    int width;
    switch (opcode) {
    case OP_glTexImage1D: case OP_glTexImage2D: case OP_glTexImage3D: width = 3; break;
    case OP_glCopyTexImage1D: case OP_glCopyTexImage2D: width = 5; break;
    default: return false;
    }
    *target = (GLenum)a[0].u;
    *level = a[1].i;
    bool flat = opcode == OP_glTexImage1D || opcode == OP_glCopyTexImage1D;
    *bytes = image_storage(b, *target, a[width].i, flat ? 1 : a[width + 1].i, opcode == OP_glTexImage3D ? a[5].i : 1);
    return true;
}

static bool over_time(player_state *p, const char *name, uint64_t units)
{
    budget_state *b = &p->budget;
    char message[MESSAGE_SIZE];
    double seconds = (double)units / WORK_PER_SECOND;
    if (b->elapsed >= b->time_limit) {
        snprintf(message, sizeof message, "the time budget of %.0f s is used up (--time-budget)", b->time_limit);
    } else if (seconds >= 1 && b->elapsed + seconds > b->time_limit) {
        char length[48] = "more than a billion s";
        if (seconds < 1e9)
            snprintf(length, sizeof length, "about %.0f s", seconds);
        snprintf(message, sizeof message, "%s would take %s, past the time budget of %.0f s (--time-budget)", name,
                 length, b->time_limit);
    } else {
        return false;
    }
    refuse(p, message);
    return true;
}

// Whether running a list reaches, through the lists it calls, one that GL does not hold.
static bool reaches_missing(budget_state *b, uint32_t name, int depth, id_map *seen)
{
    uint64_t known;
    if (map_find(seen, name, &known))
        return known != 0;
    bool missing = !GL(glIsList)(name);
    const list_record *list = list_of(b, name, false);
    map_put(seen, name, missing);
    for (uint32_t i = 0; !missing && list && depth < b->max_nesting && i < list->callee_count; ++i)
        missing = reaches_missing(b, list->callees[i], depth + 1, seen);
    map_put(seen, name, missing);
    return missing;
}

// A polygon of one or two vertices compiled into a list makes Mesa (22.3) free what it did not
// allocate: its last vertex is given again up to the fewest the mode draws with, which adds no
// area, so nothing more is drawn.
static void pad_primitive(budget_state *b)
{
    GLenum mode = b->primitive_mode;
    uint32_t fewest = mode == GL_QUADS || mode == GL_QUAD_STRIP ? 4 : mode >= GL_TRIANGLES && mode <= GL_POLYGON ? 3 : 0;
    for (uint32_t i = b->primitive_vertices; !b->primitive_calls && i > 0 && i < fewest; ++i)
        gls_command_descs[b->last_vertex_opcode].call(gls_default_dispatch[b->last_vertex_opcode], &b->last_vertex);
}

// The attribute slots a command gives more values than the primitive has given so far: a
// material's by face and pname, two for both faces or for ambient and diffuse.
static int growing_slots(const budget_state *b, int opcode, const GlsArgValue *a, uint8_t slots[4])
{
    int count = 0;
    if (b->attribute_slot[opcode] < 5) {
        slots[count++] = (uint8_t)b->attribute_slot[opcode];
    } else {
        GLenum face = (GLenum)a[0].u, pname = (GLenum)a[1].u;
        static const GLenum pnames[] = {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_EMISSION, GL_SHININESS, GL_COLOR_INDEXES};
        for (int side = 0; side < 2; ++side)
            for (int i = 0; i < 6; ++i)
                if ((face == GL_FRONT_AND_BACK || face == (side ? GL_BACK : GL_FRONT)) &&
                    (pname == pnames[i] || (pname == GL_AMBIENT_AND_DIFFUSE && i < 2)))
                    slots[count < 3 ? count++ : 3] = (uint8_t)(5 + side * 6 + i);
    }
    int growing = 0;
    for (int i = 0; i < count; ++i)
        if (b->primitive_attributes[slots[i]] < b->attribute_size[opcode])
            slots[growing++] = slots[i];
    return growing;
}

// Whether Mesa keeps vertices of the primitive that no whole primitive took yet.
static bool vertices_in_hand(const budget_state *b)
{
    uint32_t n = b->primitive_vertices;
    switch (b->primitive_mode) {
    case GL_POINTS: return false;
    case GL_LINES: return n % 2 != 0;
    case GL_TRIANGLES: return n % 3 != 0;
    case GL_QUADS: return n % 4 != 0;
    default: return n > 0;
    }
}

// Mesa (22.3) crashes ending a list that calls, between glBegin and glEnd, a list that reaches one
// GL does not hold, and ending one inside glBegin reads past its own blocks or crashes in several
// ways. Such a call is skipped, so is a deletion while the list being made calls lists between
// glBegin and glEnd, and a list left inside glBegin gets its glEnd first.
template <typename names>
static bool mesa_can_end_list(player_state *p, int opcode, const GlsArgValue *a, bool compiled, uint64_t count,
                              names list_name)
{
    budget_state *b = &p->budget;
    list_record *pending = &b->pending;
    id_map seen = {};
    bool fine = true;
    for (uint64_t i = 0; compiled && b->compiled_primitive && fine && i < count; ++i)
        fine = !reaches_missing(b, list_name(i), 1, &seen);
    if (!fine)
        report_skip(p, opcode, "between glBegin and glEnd of a list being made, it calls a list that GL does not "
                               "hold, which Mesa cannot compile");
    pending->calls_in_primitive |= fine && compiled && b->compiled_primitive && count > 0;
    b->primitive_calls |= fine && compiled && count > 0;
    // Mesa (22.3) reads past its blocks growing its vertex twice in a row while it keeps vertices
    // of the primitive: the second attribute that grows it is skipped.
    uint8_t slots[4];
    int growing = fine && compiled && b->compiled_primitive && b->attribute_slot[opcode] >= 0
                      ? growing_slots(b, opcode, a, slots) : 0;
    if (growing && vertices_in_hand(b) && (b->grown_since_vertex || growing > 1)) {
        report_skip(p, opcode, "between glBegin and glEnd of a list being made, it gives a vertex attribute "
                               "right after another new one, which Mesa cannot compile");
        fine = false;
    }
    for (int i = 0; fine && i < growing; ++i)
        b->primitive_attributes[slots[i]] = b->attribute_size[opcode];
    b->grown_since_vertex |= fine && growing && vertices_in_hand(b);
    if (fine && compiled && b->compiled_primitive && b->vertex_command[opcode]) {
        b->grown_since_vertex = false;
        GlsArrayShape shape = gls_array_shape(&gls_command_descs[opcode].args[0], a);
        size_t bytes = (size_t)(shape.count * shape.width);
        if (a[0].p && bytes <= sizeof b->last_vertex_data) {
            memcpy(b->last_vertex_data, a[0].p, bytes);
            b->last_vertex.p = b->last_vertex_data;
            b->last_vertex_opcode = opcode;
            ++b->primitive_vertices;
        }
    }
    if (fine && compiled && opcode == OP_glEnd)
        pad_primitive(b);
    if (fine && compiled && (opcode == OP_glBegin || opcode == OP_glEnd)) {
        b->compiled_primitive = opcode == OP_glBegin;
        b->primitive_mode = (GLenum)a[0].u;
        b->primitive_vertices = 0;
        b->primitive_calls = false;
        b->grown_since_vertex = false;
        memset(b->primitive_attributes, 0, sizeof b->primitive_attributes);
    }
    if (opcode == OP_glDeleteLists && b->compiling && pending->calls_in_primitive) {
        report_skip(p, opcode, "the list being made calls lists between glBegin and glEnd, which Mesa cannot "
                               "compile when one of them goes");
        fine = false;
    }
    if (opcode == OP_glEndList && b->compiling && b->compiled_primitive) {
        if (!p->skip_reported[OP_glEndList])
            tell(p, "glEndList: the list's glBegin gets its glEnd first, since Mesa cannot end a list inside one");
        p->skip_reported[OP_glEndList] = true;
        pad_primitive(b);
        GL(glEnd)();
        b->compiled_primitive = false;
    }
    map_free(&seen);
    return fine;
}

// Refuses what would pass the memory budget, without taking it yet.
static bool fits(player_state *p, uint64_t bytes, const char *what)
{
    if (add_saturated(p->budget.memory_used, bytes) <= p->budget.memory_limit)
        return true;
    out_of_budget(p, what, bytes);
    return false;
}

static void clock_and_progress(player_state *p)
{
    budget_state *b = &p->budget;
    double now = seconds_now();
    b->elapsed = now - b->started;
    if (p->options->progress && now - b->last_progress >= 0.5) {
        b->last_progress = now;
        p->options->progress(p->history_size > 0 ? (double)history_bytes_read(p) / (double)p->history_size : -1,
                             p->outcome->frames_seen, p->options->user);
    }
}

bool budget_command(player_state *p, int opcode, const GlsArgValue *a)
{
    static const GlsArgValue no_arguments[GLS_MAX_CALL_ARGS] = {};
    a = a ? a : no_arguments;
    budget_state *b = &p->budget;
    const char *what = gls_opcode_names[opcode];
    bool compiled = compiled_now(b, opcode);
    bool executed = !compiled || b->compile_mode == GL_COMPILE_AND_EXECUTE;
    uint64_t own = own_work(opcode, a), units = own;
    // The lists a call runs, costed before GL runs them.
    uint64_t names_count = opcode == OP_glCallList ? 1 : opcode == OP_glCallLists ? positive(a[0].i) : 0;
    GLenum lists_type = opcode == OP_glCallLists ? (GLenum)a[1].u : GL_UNSIGNED_INT;
    const uint8_t *lists_data = opcode == OP_glCallLists ? (const uint8_t *)a[2].p : nullptr;
    if (opcode == OP_glCallLists && (!lists_data || gls_call_lists_bytes(lists_type, (GLsizei)names_count) == 0))
        names_count = 0;
    auto list_name = [&](uint64_t i) {
        return opcode == OP_glCallList ? (uint32_t)a[0].u : b->list_base + (uint32_t)call_lists_name(lists_type, lists_data, i);
    };
    // Mesa compiles a call between glBegin and glEnd by running the lists called into the new one.
    bool inlined = compiled && b->compiled_primitive;
    if (!mesa_can_end_list(p, opcode, a, compiled, names_count, list_name))
        return false;
    uint64_t called = 0;
    if (executed || inlined)
        for (uint64_t i = 0; i < names_count; ++i)
            called = add_saturated(called, list_cost(b, list_name(i), 1));
    // Ending such a list, Mesa walks every list it calls.
    for (uint32_t i = 0; opcode == OP_glEndList && b->compiling && b->pending.calls_in_primitive &&
                         i < b->pending.callee_count; ++i)
        called = add_saturated(called, list_cost(b, b->pending.callees[i], 1));
    units = add_saturated(units, called);
    if (++b->calls_since_clock >= 64 || units >= 1000) {
        b->calls_since_clock = 0;
        clock_and_progress(p);
    }
    if (over_time(p, what, executed || inlined || opcode == OP_glEndList ? units : 1))
        return false;

    if (compiled) {
        // What GL keeps of the command in the list.
        uint64_t data = opcode == OP_glCallLists ? names_count * 4
                        : opcode == OP_glsDrawVertexArray ? gls_vertex_data_bytes((GLenum)a[1].u, (GLint)a[2].i)
                                                          : 0;
        const GlsCommandDesc *command = &gls_command_descs[opcode];
        for (int i = 0; i < command->count; ++i)
            if (command->args[i].kind == GLS_ARG_IMAGE || command->args[i].kind == GLS_ARG_BITMAP) {
                GlsArrayShape shape = gls_array_shape(&command->args[i], a);
                data = add_saturated(data, a[command->args[i].arg].p ? shape.count * shape.width : 0);
            }
        data = add_saturated(add_saturated(COMMAND_BYTES, data), inlined ? multiply_saturated(called, COMMAND_BYTES) : 0);
        if (!budget_take(p, data, what))
            return false;
        b->pending.bytes = add_saturated(b->pending.bytes, data);
        b->pending.work = add_saturated(b->pending.work, own);
    }

    GLenum target;
    int64_t level;
    uint64_t bytes;
    bool fine = true;
    if (texture_image(b, opcode, a, &target, &level, &bytes)) {
        if (compiled)
            fine = add_effect(&b->pending, {EFFECT_IMAGE, target, (uint32_t)level, bytes});
        if (executed && fine)
            return define_image(p, target, level, bytes, what);
    } else if (opcode == OP_glBindTexture) {
        if (compiled)
            fine = add_effect(&b->pending, {EFFECT_BIND, (GLenum)a[0].u, (uint32_t)a[1].u, 0});
        if (executed && fine) {
            if (!texture_name(p, (uint32_t)a[1].u, what))
                return false;
            b->bound[bind_slot((GLenum)a[0].u)] = (GLuint)a[1].u;
        }
    } else if (names_count) {
        for (uint64_t i = 0; i < names_count && fine; ++i) {
            if (compiled)
                fine = add_effect(&b->pending, {EFFECT_CALL, 0, list_name(i), 0});
            if (executed && fine && !replay_list(p, list_name(i), 1, what))
                return false;
        }
    } else if (opcode == OP_glListBase) {
        b->list_base = (GLuint)a[0].u;
    } else if (opcode == OP_glNewList && !b->compiling && a[0].u != 0 &&
               (a[1].u == GL_COMPILE || a[1].u == GL_COMPILE_AND_EXECUTE)) {
        b->compiling = (uint32_t)a[0].u;
        b->compile_mode = (GLenum)a[1].u;
        b->compiled_primitive = false;
        clear_list(p, &b->pending);
    } else if (opcode == OP_glEndList && b->compiling) {
        // The list compiled takes the place of the one of its name; its old storage is reused.
        list_record *list = list_of(b, b->compiling, true);
        if (!list) {
            refuse(p, "no memory for the display lists' ledger");
            return false;
        }
        clear_list(p, list);
        list_record old = *list;
        *list = b->pending;
        list->name = old.name;
        list->defined = true;
        list->cost_at_depth = old.cost_at_depth;
        list->generation = 0;
        b->pending = old;
        b->pending.cost_at_depth = nullptr;
        b->compiling = 0;
        b->generation++;
    } else if (opcode == OP_glDeleteLists && a[1].i >= 0) {
        delete_lists(p, a[0].u, (uint64_t)a[1].i);
    } else if (opcode == OP_glGenLists) {
        return fits(p, multiply_saturated(positive(a[0].i), LIST_NAME_BYTES), what);
    } else if (opcode == OP_glGenTextures) {
        return fits(p, multiply_saturated(positive(a[0].i), TEXTURE_NAME_BYTES), what);
    } else if (opcode == OP_glDeleteTextures && a[1].p) {
        for (int64_t i = 0; i < a[0].i; ++i)
            delete_texture(p, ((const GLuint *)a[1].p)[i]);
    }
    if (!fine)
        refuse(p, "no memory for the display lists' ledger");
    return fine;
}

void budget_end(player_state *p)
{
    budget_state *b = &p->budget;
    for (uint32_t i = 0; i < b->list_count; ++i) {
        free(b->lists[i].callees);
        free(b->lists[i].effects);
        free(b->lists[i].cost_at_depth);
    }
    free(b->pending.callees);
    free(b->pending.effects);
    for (uint32_t i = 0; i < b->texture_count; ++i)
        free(b->textures[i].levels);
    free(b->lists);
    free(b->textures);
    free(b->reserved);
    map_free(&b->list_index);
    map_free(&b->texture_index);
    map_free(&b->generated_textures);
    *b = budget_state{};
}
