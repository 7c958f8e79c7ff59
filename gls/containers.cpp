#include "gls/containers.h"

#include "gls/gls.h"

#include <cstring>

void gls_list_append(GlsList *list, GlsBox *box)
{
    if (!list->head) {
        box->next = box->prev = box;
        list->head = box;
    } else {
        GlsBox *last = list->head->prev;
        box->prev = last;
        box->next = list->head;
        last->next = box;
        list->head->prev = box;
    }
    ++list->count;
}

void gls_list_prepend(GlsList *list, GlsBox *box)
{
    gls_list_append(list, box);
    list->head = box;
    if (list->cursor)
        ++list->cursorIndex;
}

void gls_list_remove(GlsList *list, GlsBox *box)
{
    if (box->next == box) {
        list->head = nullptr;
    } else {
        box->prev->next = box->next;
        box->next->prev = box->prev;
        if (list->head == box)
            list->head = box->next;
    }
    box->next = box->prev = nullptr;
    --list->count;
    list->cursor = nullptr;
    list->cursorIndex = 0;
}

GlsBox *gls_list_at(const GlsList *list, int index)
{
    if (index < 0 || index >= list->count)
        return nullptr;
    GlsBox *box = list->head;
    while (index-- > 0)
        box = box->next;
    return box;
}

// ---------------------------------------------------------------------------------------------
// Bucket tables: a power of two of rings, a node's hash picks its ring.

typedef uint32_t (*NodeHash)(const GlsBox *node);

static GlsBox **buckets_create(int size, uint32_t *mask)
{
    uint32_t count = 1;
    while (count < (uint32_t)size)
        count <<= 1;
    GlsBox **buckets = (GlsBox **)gls_calloc(count * sizeof(GlsBox *));
    if (buckets)
        *mask = count - 1;
    return buckets;
}

static void bucket_push_front(GlsBox **bucket, GlsBox *node)
{
    GlsBox *head = *bucket;
    if (!head) {
        node->next = node->prev = node;
    } else {
        node->next = head;
        node->prev = head->prev;
        head->prev->next = node;
        head->prev = node;
    }
    *bucket = node;
}

static void bucket_unlink(GlsBox **bucket, GlsBox *node)
{
    if (node->next == node) {
        *bucket = nullptr;
        return;
    }
    node->prev->next = node->next;
    node->next->prev = node->prev;
    if (*bucket == node)
        *bucket = node->next;
}

// Grows to mask * 2 + 2 rings and moves every node; without memory the table stays as it is.
static void buckets_grow(GlsBox ***buckets, uint32_t *mask, NodeHash hash)
{
    uint32_t count = *mask * 2 + 2;
    GlsBox **grown = (GlsBox **)gls_calloc(count * sizeof(GlsBox *));
    if (!grown)
        return;
    for (uint32_t i = 0; i <= *mask; ++i) {
        GlsBox *node = (*buckets)[i];
        if (!node)
            continue;
        node->prev->next = nullptr;
        while (node) {
            GlsBox *next = node->next;
            bucket_push_front(&grown[hash(node) & (count - 1)], node);
            node = next;
        }
    }
    gls_free(*buckets);
    *buckets = grown;
    *mask = count - 1;
}

// Calls free_node for every node, then frees the rings.
template <typename Free>
static void buckets_free(GlsBox **buckets, uint32_t mask, Free free_node)
{
    for (uint32_t i = 0; i <= mask; ++i) {
        GlsBox *head = buckets[i];
        if (!head)
            continue;
        GlsBox *node = head;
        do {
            GlsBox *next = node->next;
            free_node(node);
            node = next;
        } while (node != head);
    }
    gls_free(buckets);
}

// ---------------------------------------------------------------------------------------------
// Integer map

static uint32_t int_hash(int64_t key) { return (uint32_t)(uint64_t)key; }
static uint32_t intmap_node_hash(const GlsBox *node) { return int_hash(((const GlsIntMapNode *)node)->key); }

GlsIntMap *gls_intmap_create(int size)
{
    if (size < 1)
        return nullptr;
    GlsIntMap *map = (GlsIntMap *)gls_calloc(sizeof(GlsIntMap));
    if (!map)
        return nullptr;
    map->buckets = buckets_create(size, &map->mask);
    if (!map->buckets) {
        gls_free(map);
        return nullptr;
    }
    return map;
}

void gls_intmap_delete(GlsIntMap *map)
{
    if (!map)
        return;
    buckets_free(map->buckets, map->mask, [](GlsBox *node) { gls_free(node); });
    gls_free(map);
}

static GlsIntMapNode *intmap_node(const GlsIntMap *map, int64_t key)
{
    GlsBox *head = map->buckets[int_hash(key) & map->mask];
    GlsBox *node = head;
    if (!node)
        return nullptr;
    do {
        if (((GlsIntMapNode *)node)->key == key)
            return (GlsIntMapNode *)node;
        node = node->next;
    } while (node != head);
    return nullptr;
}

bool gls_intmap_insert(GlsIntMap *map, int64_t key, void *value)
{
    if (intmap_node(map, key))
        return false;
    GlsIntMapNode *node = (GlsIntMapNode *)gls_calloc(sizeof(GlsIntMapNode));
    if (!node)
        return false;
    node->key = key;
    node->value = value;
    if ((uint32_t)map->count++ > map->mask)
        buckets_grow(&map->buckets, &map->mask, intmap_node_hash);
    bucket_push_front(&map->buckets[int_hash(key) & map->mask], &node->links);
    return true;
}

void *gls_intmap_find(const GlsIntMap *map, int64_t key)
{
    GlsIntMapNode *node = intmap_node(map, key);
    return node ? node->value : nullptr;
}

bool gls_intmap_remove(GlsIntMap *map, int64_t key)
{
    GlsIntMapNode *node = intmap_node(map, key);
    if (!node)
        return false;
    bucket_unlink(&map->buckets[int_hash(key) & map->mask], &node->links);
    gls_free(node);
    --map->count;
    return true;
}

// ---------------------------------------------------------------------------------------------
// String dictionary

static uint32_t key_hash(const char *key)
{
    uint32_t sum = 0;
    for (const unsigned char *p = (const unsigned char *)key; *p; ++p)
        sum += *p;
    return sum;
}

static uint32_t dict_node_hash(const GlsBox *node) { return key_hash(((const GlsDictNode *)node)->key); }

GlsDict *gls_dict_create(int size, int keepKeys)
{
    if (size < 1)
        return nullptr;
    GlsDict *dict = (GlsDict *)gls_calloc(sizeof(GlsDict));
    if (!dict)
        return nullptr;
    dict->buckets = buckets_create(size, &dict->mask);
    if (!dict->buckets) {
        gls_free(dict);
        return nullptr;
    }
    dict->keepKeys = keepKeys;
    return dict;
}

static void free_dict_node(const GlsDict *dict, GlsDictNode *node)
{
    if (!dict->keepKeys)
        gls_free((void *)node->key);
    gls_free(node);
}

void gls_dict_delete(GlsDict *dict)
{
    if (!dict)
        return;
    buckets_free(dict->buckets, dict->mask, [dict](GlsBox *node) { free_dict_node(dict, (GlsDictNode *)node); });
    gls_free(dict);
}

static GlsDictNode *dict_node(const GlsDict *dict, const char *key)
{
    GlsBox *head = dict->buckets[key_hash(key) & dict->mask];
    GlsBox *node = head;
    if (!node)
        return nullptr;
    do {
        if (strcmp(((GlsDictNode *)node)->key, key) == 0)
            return (GlsDictNode *)node;
        node = node->next;
    } while (node != head);
    return nullptr;
}

bool gls_dict_insert(GlsDict *dict, const char *key, intptr_t value)
{
    if (dict_node(dict, key))
        return false;
    GlsDictNode *node = (GlsDictNode *)gls_calloc(sizeof(GlsDictNode));
    if (!node)
        return false;
    if (dict->keepKeys) {
        node->key = key;
    } else {
        size_t length = strlen(key) + 1;
        char *copy = (char *)gls_malloc(length);
        if (!copy) {
            gls_free(node);
            return false;
        }
        memcpy(copy, key, length);
        node->key = copy;
    }
    node->value = value;
    if ((uint32_t)dict->count++ > dict->mask)
        buckets_grow(&dict->buckets, &dict->mask, dict_node_hash);
    bucket_push_front(&dict->buckets[key_hash(key) & dict->mask], &node->links);
    return true;
}

bool gls_dict_find(const GlsDict *dict, const char *key, intptr_t *value)
{
    GlsDictNode *node = dict_node(dict, key);
    if (node && value)
        *value = node->value;
    return node != nullptr;
}

bool gls_dict_remove(GlsDict *dict, const char *key)
{
    GlsDictNode *node = dict_node(dict, key);
    if (!node)
        return false;
    bucket_unlink(&dict->buckets[key_hash(key) & dict->mask], &node->links);
    free_dict_node(dict, node);
    --dict->count;
    return true;
}
