// Entry point of the suites that run real GTK widgets and WebKit.

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    // Test discovery lists the tests without a display: GTK is only needed to run them.
    bool listing = false;
    for (int i = 1; i < argc; ++i) {
        listing = listing || std::string_view(argv[i]) == "--gtest_list_tests";
    }
    ::testing::InitGoogleMock(&argc, argv);
    if (!listing) {
        // Without a GPU: GTK's GL renderer falls back to slow software GL and WebKit's
        // DMA-BUF renderer costs memory for nothing.
        g_setenv("GSK_RENDERER", "cairo", FALSE);
        g_setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", FALSE);
        if (!gtk_init_check()) {
            std::fprintf(stderr, "These tests need a display: run them under xvfb-run "
                                 "(see scripts/test).\n");
            return 1;
        }
    }
    return RUN_ALL_TESTS();
}
