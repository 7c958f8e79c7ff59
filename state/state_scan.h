// The scan of GL state at a halt, into the current per_gl.
#pragma once

#include "records.h"

void state_scan(thread_record *record);
