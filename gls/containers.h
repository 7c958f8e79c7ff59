// The containers the codec shares: counted rings, the integer map and the string dictionary.
#pragma once

#include "gls/gls_context.h"

// Counted list operations; a box's payload follows its links.
void gls_list_append(GlsList *list, GlsBox *box);
void gls_list_prepend(GlsList *list, GlsBox *box);
void gls_list_remove(GlsList *list, GlsBox *box);
GlsBox *gls_list_at(const GlsList *list, int index);

// The hashed containers keep each bucket as a ring of nodes whose links come first.
struct GlsIntMapNode {
    GlsBox links;
    int64_t key;
    void *value;
};

struct GlsIntMap {
    int count;
    GlsBox **buckets;
    uint32_t mask;
};

// A requested size below 1 is refused (null).
GlsIntMap *gls_intmap_create(int size);
void gls_intmap_delete(GlsIntMap *map);
// Returns false when the key is already there or memory runs out.
bool gls_intmap_insert(GlsIntMap *map, int64_t key, void *value);
void *gls_intmap_find(const GlsIntMap *map, int64_t key);
bool gls_intmap_remove(GlsIntMap *map, int64_t key);

// String dictionary: the hash is the sum of the key's bytes. copyKeys 1 keeps the caller's
// pointer (the key must outlive the dictionary), 0 copies it.
struct GlsDictNode {
    GlsBox links;
    const char *key;
    intptr_t value;
};

struct GlsDict {
    int count;
    GlsBox **buckets;
    uint32_t mask;
    int32_t keepKeys;
};

GlsDict *gls_dict_create(int size, int keepKeys);
void gls_dict_delete(GlsDict *dict);
// False when the key is already there or memory runs out.
bool gls_dict_insert(GlsDict *dict, const char *key, intptr_t value);
bool gls_dict_find(const GlsDict *dict, const char *key, intptr_t *value);
bool gls_dict_remove(GlsDict *dict, const char *key);
