// The pixel format of a context, as GL reports it at the context's first sight: kept in its
// per_gl for the Window Information window and the alpha check of glBlendFunc.
#pragma once

#include "session/records.h"

// Fills the window information fields of the current per_gl; its context is current.
void read_window_info(thread_record *record);
