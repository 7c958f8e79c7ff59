#include "panel/settings.h"

void load_start_settings(thread_record *)
{
    // Reading "quondale.cfg" comes with the settings file; the defaults of the records stand.
}
