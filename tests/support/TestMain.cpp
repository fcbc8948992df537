// Shared main of the test programs. Death tests re-run the program for each
// case ("threadsafe"), since several subsystems start threads.
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
#ifndef _WIN32
    // Windows starts a fresh process for every death test anyway; under wine
    // the threadsafe style's children never finish.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
#endif
    return RUN_ALL_TESTS();
}
