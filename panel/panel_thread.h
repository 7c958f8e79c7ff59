// The panel thread of a session: it owns the session's windows and serves their messages.
#pragma once

// Thread function, started by the session with its thread_record as the argument.
unsigned __stdcall panel_thread(void *argument);
