// What the generated exported entry points need: the codec's tables and thread-local context,
// and for the WGL wrappers the session and its real libraries.
#pragma once

// The Windows headers must declare the WGL functions without dllimport: this library defines them.
#define _GDI32_
#include "gls.h"
#include "tables.h"

#include <windows.h>

#include "catalogue.h"
#include "wgl.h"

// The internal GDI wrappers in GDI catalogue order.
extern const GlsFunc gdi_wrappers[GDI_CALL_COUNT];
