// The table of named blocks: path-like names to blocks of the process heap. Records are asked
// for by name, so the panel can reach the per_gl of any context by building its name. Blocks
// live until process detach; nothing frees one earlier.
#pragma once

#include "records/records.h"

#include <cstdint>

enum : int {
    // Every session takes four rows and every real context two; room for 32 contexts in each
    // of ten sessions.
    NAMED_BLOCK_ROWS = 1024,
};

struct named_block {
    int32_t kind;
    char name[NAME_SIZE];
    int32_t count;
    void *block;
};

struct named_block_table {
    int32_t count;
    named_block rows[NAMED_BLOCK_ROWS];
};

extern named_block_table named_blocks;

// Debugger start-up and shut-down: an empty table, and every block freed in table order.
void named_blocks_reset();
void named_blocks_free();

// Heap of the blocks: the process heap on Windows.
void *block_alloc(size_t size);
void *block_realloc(void *block, size_t size);
void block_free(void *block);

// Names; out holds NAME_SIZE characters. A per_gl of context 0 is the null record.
void name_of_master(const char *dir, char *out);
void name_of_per_proc(const char *dir, uint32_t id, char *out);
void name_of_per_gl(const char *dir, uint32_t context, char *out);
void name_of_list_info(const char *dir, char *out);

// First match from row 0, or null.
master *find_master(const char *name);
per_proc *find_per_proc(const char *name);
per_gl *find_per_gl(const char *name);
list_info_row *find_list_info(const char *name);

// Allocate and add a row. Out of memory: the fatal report, and null for the caller to exit on.
// The blocks are not filled: records.h has the start values.
thread_record *make_thread_record();
master *make_master(const char *name);
per_proc *make_per_proc(const char *name);
per_gl *make_per_gl(const char *name);
// A list information block for rows rows; 0 is taken as 1.
list_info_row *make_list_info(const char *name, int32_t rows);
// Grows the list information block to rows rows (0 taken as 1), keeping its contents; never
// shrinks it. Null if the name is not in the table or memory runs out.
list_info_row *resize_list_info(const char *name, int32_t rows);

// Debug aid: one line for each named block with the fields that the tests look at. Returns
// the length written, never more than size - 1.
size_t describe_named_blocks(char *out, size_t size);
