// Redirects the engine's log away from the tests' output.

#include <gtest/gtest.h>
#include <ravolt/zlf.h>

int main(int argc, char **argv) {
    zlfSetConsoleEcho(false);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
