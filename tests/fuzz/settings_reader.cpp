// The settings file reader, on any file.
#include "panel/settings_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FILE *file = fmemopen(const_cast<uint8_t *>(data), size, "r");
    if (!file)
        return 0;
    static settings_values values;
    settings_read(file, &values);
    fclose(file);
    return 0;
}
