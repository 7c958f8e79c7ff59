// The pixel format of a context, read from GL once at its first sight: kept in its per_gl for
// the Window Information window and the alpha check, and described in its history.
#pragma once

#include "records/records.h"

enum : int { VISUAL_INFO_SIZE = 256 };

// Fills the per_gl's figures from GL queries on the current context.
void read_window_info(thread_record *record);
// The figures in the terms of a GLX attribute list, "GLX_USE_GL, ... None"; out holds
// VISUAL_INFO_SIZE bytes.
void visual_info_text(const per_gl *gl, char *out);
// The "Visual Info" and "Viewport Info" records of the history.
void log_visual_info(thread_record *record);
