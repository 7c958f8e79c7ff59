#include "containers.h"

#include "gls.h"

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

static uint32_t bucket_count_for(int size)
{
    uint32_t count = 1;
    while (count < (uint32_t)size)
        count <<= 1;
    return count;
}

GlsIntMap *gls_intmap_create(int size)
{
    if (size < 1)
        return nullptr;
    GlsIntMap *map = (GlsIntMap *)gls_calloc(sizeof(GlsIntMap));
    if (!map)
        return nullptr;
    uint32_t count = bucket_count_for(size);
    map->buckets = (GlsIntMapNode **)gls_calloc(count * sizeof(GlsIntMapNode *));
    if (!map->buckets) {
        gls_free(map);
        return nullptr;
    }
    map->mask = count - 1;
    return map;
}

void gls_intmap_delete(GlsIntMap *map)
{
    if (!map)
        return;
    for (uint32_t i = 0; i <= map->mask; ++i) {
        GlsIntMapNode *head = map->buckets[i];
        if (!head)
            continue;
        GlsIntMapNode *node = head;
        do {
            GlsIntMapNode *next = node->next;
            gls_free(node);
            node = next;
        } while (node != head);
    }
    gls_free(map->buckets);
    gls_free(map);
}

static void bucket_push_front(GlsIntMapNode **bucket, GlsIntMapNode *node)
{
    GlsIntMapNode *head = *bucket;
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

static void intmap_grow(GlsIntMap *map)
{
    uint32_t count = map->mask * 2 + 2;
    GlsIntMapNode **buckets = (GlsIntMapNode **)gls_calloc(count * sizeof(GlsIntMapNode *));
    if (!buckets)
        return; // the table stays as it is; the insert goes on
    for (uint32_t i = 0; i <= map->mask; ++i) {
        GlsIntMapNode *node = map->buckets[i];
        if (!node)
            continue;
        node->prev->next = nullptr;
        while (node) {
            GlsIntMapNode *next = node->next;
            bucket_push_front(&buckets[(uint64_t)node->key & (count - 1)], node);
            node = next;
        }
    }
    gls_free(map->buckets);
    map->buckets = buckets;
    map->mask = count - 1;
}

static GlsIntMapNode *intmap_node(const GlsIntMap *map, int64_t key)
{
    GlsIntMapNode *head = map->buckets[(uint64_t)key & map->mask];
    GlsIntMapNode *node = head;
    if (!node)
        return nullptr;
    do {
        if (node->key == key)
            return node;
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
        intmap_grow(map);
    bucket_push_front(&map->buckets[(uint64_t)key & map->mask], node);
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
    GlsIntMapNode **bucket = &map->buckets[(uint64_t)key & map->mask];
    if (node->next == node) {
        *bucket = nullptr;
    } else {
        node->prev->next = node->next;
        node->next->prev = node->prev;
        if (*bucket == node)
            *bucket = node->next;
    }
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

GlsDict *gls_dict_create(int size, int keepKeys)
{
    if (size < 1)
        return nullptr;
    GlsDict *dict = (GlsDict *)gls_calloc(sizeof(GlsDict));
    if (!dict)
        return nullptr;
    uint32_t count = bucket_count_for(size);
    dict->buckets = (GlsDictNode **)gls_calloc(count * sizeof(GlsDictNode *));
    if (!dict->buckets) {
        gls_free(dict);
        return nullptr;
    }
    dict->mask = count - 1;
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
    for (uint32_t i = 0; i <= dict->mask; ++i) {
        GlsDictNode *head = dict->buckets[i];
        if (!head)
            continue;
        GlsDictNode *node = head;
        do {
            GlsDictNode *next = node->next;
            free_dict_node(dict, node);
            node = next;
        } while (node != head);
    }
    gls_free(dict->buckets);
    gls_free(dict);
}

static void dict_push_front(GlsDictNode **bucket, GlsDictNode *node)
{
    GlsDictNode *head = *bucket;
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

static void dict_grow(GlsDict *dict)
{
    uint32_t count = dict->mask * 2 + 2;
    GlsDictNode **buckets = (GlsDictNode **)gls_calloc(count * sizeof(GlsDictNode *));
    if (!buckets)
        return; // the table stays as it is; the insert goes on
    for (uint32_t i = 0; i <= dict->mask; ++i) {
        GlsDictNode *node = dict->buckets[i];
        if (!node)
            continue;
        node->prev->next = nullptr;
        while (node) {
            GlsDictNode *next = node->next;
            dict_push_front(&buckets[key_hash(node->key) & (count - 1)], node);
            node = next;
        }
    }
    gls_free(dict->buckets);
    dict->buckets = buckets;
    dict->mask = count - 1;
}

static GlsDictNode *dict_node(const GlsDict *dict, const char *key)
{
    GlsDictNode *head = dict->buckets[key_hash(key) & dict->mask];
    GlsDictNode *node = head;
    if (!node)
        return nullptr;
    do {
        if (strcmp(node->key, key) == 0)
            return node;
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
        dict_grow(dict);
    dict_push_front(&dict->buckets[key_hash(key) & dict->mask], node);
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
    GlsDictNode **bucket = &dict->buckets[key_hash(key) & dict->mask];
    if (node->next == node) {
        *bucket = nullptr;
    } else {
        node->prev->next = node->next;
        node->next->prev = node->prev;
        if (*bucket == node)
            *bucket = node->next;
    }
    free_dict_node(dict, node);
    --dict->count;
    return true;
}
