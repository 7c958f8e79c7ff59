// The scan of GL state at a halt, into the current per_gl.
#pragma once

#include "session/records.h"

void state_scan(thread_record *record);
