// The player's thin platform layer: one GL context of a given format, made current on the calling
// thread, with no window to see (EGL without a display natively, a hidden window's WGL context on
// Windows).
#pragma once

#include "gls/gls_types.h"
#include "tools/player/player.h"

#include <cstddef>

// Makes the context; got tells what the platform gave. False with error filled when it can't.
bool surface_open(const surface_format *wanted, surface_format *got, char *error, size_t error_size);
// A GL function of the current context by name; null when it has none.
GlsFunc surface_lookup(const char *name);
void surface_close();
