// The Windows tests run on a single-threaded apartment, as the suite does.
#include <gtest/gtest.h>

#include <objbase.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 2;
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
