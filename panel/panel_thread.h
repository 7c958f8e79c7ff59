// The panel thread of a session: it owns the session's windows and serves their messages.
#pragma once

// Fills the session's table of panel hooks with this panel; called at process attach.
void panel_register();
