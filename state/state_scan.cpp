#include "state/state_scan.h"

// The state catalogue is not read yet: a halt scans nothing, and the state rows keep their
// start values.
void state_scan(thread_record *) {}
