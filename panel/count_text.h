// The texts of the two count windows, from the counters of a session.
#pragma once

#include "records/records.h"

enum : int { WINDOW_TEXT_SIZE = 5120 };

// The Primitive Count window's block of thirteen lines; out holds WINDOW_TEXT_SIZE bytes.
void prim_count_text(const per_proc *proc, char *out);

// The rows of the Call Count window, "name - count", for the GL, then GLU, then WGL rows (the
// list box sorts them), leaving out the rows never called when nonzero_only is set. add gets
// each row's text; the count of rows is returned.
int call_count_rows(const per_proc *proc, const master *names, bool nonzero_only,
                    void (*add)(void *list, const char *row), void *list);
