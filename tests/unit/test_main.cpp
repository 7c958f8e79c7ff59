// The codec's process start-up runs once, as the library's load notification does.
#include <gtest/gtest.h>

#include "gls/gls.h"

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!gls_process_attach())
        return 2;
    int result = RUN_ALL_TESTS();
    gls_process_detach();
    return result;
}
