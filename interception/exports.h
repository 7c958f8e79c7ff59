// What the generated exported entry points need: the codec's tables and thread-local context,
// and the WGL rows of the real library.
#pragma once

// The Windows headers must declare the WGL functions without dllimport: this library defines them.
#define _GDI32_
#include "gls_context.h"
#include "tables.h"

#include <windows.h>

#include "catalogue.h"

// The real WGL functions, bound at process attach; the WGL exports pass through to them.
extern GlsFunc process_wgl[WGL_CALL_COUNT];
