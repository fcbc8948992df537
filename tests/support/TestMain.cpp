// Shared main of the test programs. Death tests re-run the program for each
// case ("threadsafe"), since several subsystems start threads.
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    return RUN_ALL_TESTS();
}
