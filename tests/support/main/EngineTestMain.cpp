#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstring>

// Suites with windows or web views run GTK. Listing the tests (as CTest does to discover them)
// needs no display, so GTK is only started for a real run.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!::testing::GTEST_FLAG(list_tests)) {
        if (!gtk_init_check()) {
            std::fprintf(stderr, "no display: run these tests under Xvfb\n");
            return 1;
        }
    }
    return RUN_ALL_TESTS();
}
