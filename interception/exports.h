// What the generated exported entry points need: the codec's tables and thread-local context,
// and for the WGL wrappers the session and its real libraries.
#pragma once

// The Windows headers must declare the WGL functions without dllimport: this library defines them.
#define _GDI32_
#include "gls/gls.h"
#include "gls/tables.h"

#include <windows.h>

#include "gen/calls.h"
#include "gen/wgl_calls.h"
#include "interception/wgl.h"

// The internal GDI and GLU wrappers in catalogue order.
extern const GlsFunc gdi_wrappers[GDI_CALL_COUNT];
extern const GlsFunc glu_wrappers[GLU_CALL_COUNT];
