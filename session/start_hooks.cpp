#include "session/start_hooks.h"

static void nothing(thread_record *) {}

start_hooks session_start = {nothing, nothing};
