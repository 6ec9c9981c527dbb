#include "chrome/ToolbarView.h"
#include "support/ViewFixture.h"

namespace ovel::test {
namespace {

class ToolbarViewTest : public ViewFixture {
protected:
    bool enabled(GtkWidget* root, const char* name) {
        GtkWidget* button = findByName(root, name);
        EXPECT_NE(button, nullptr) << name;
        return button != nullptr && gtk_widget_get_sensitive(button);
    }
};

TEST_F(ToolbarViewTest, ButtonsFollowTheSelectedTab) {
    ToolbarView toolbar(*state);
    show(toolbar.widget());
    GtkWidget* root = toolbar.widget();
    EXPECT_FALSE(enabled(root, "Close Tab")) << "the last tab";
    state->newTab();
    EXPECT_TRUE(enabled(root, "Close Tab"));
    viewAt(1).backAvailable = true;
    showPage(1, "https://two.test/", "Two");
    EXPECT_TRUE(enabled(root, "Back")) << "after the selected tab navigated";
    state->selectTab(0);
    EXPECT_FALSE(enabled(root, "Back")) << "the other tab has no history";

    EXPECT_TRUE(click(root, "Close Tab"));
    EXPECT_EQ(state->tabs->size(), 1u);
    EXPECT_TRUE(click(root, "Find in Page"));
    EXPECT_TRUE(click(root, "Command Palette"));
    EXPECT_TRUE(state->showFindBar.get());
    EXPECT_TRUE(state->showCommandPalette.get());
}

TEST_F(ToolbarViewTest, AddressFieldIsBoundBothWays) {
    ToolbarView toolbar(*state);
    show(toolbar.widget());
    GtkEditable* entry = toolbar.addressField().entry();
    gtk_editable_set_text(entry, "typed text");
    EXPECT_EQ(state->addressText.get(), "typed text");
    showPage(0, "https://shown.test/", "Shown");
    EXPECT_STREQ(gtk_editable_get_text(entry), "https://shown.test/");

    gtk_editable_set_text(entry, "next.test");
    g_signal_emit_by_name(entry, "activate");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://next.test");
}

TEST_F(ToolbarViewTest, ProgressFillIsAtLeastASliverAndFollowsTheFraction) {
    ToolbarView toolbar(*state);
    show(toolbar.widget());
    LoadingProgressBar& bar = toolbar.progressBar();
    viewAt(0).delegate().didStartProvisionalNavigation();
    viewAt(0).simulateProgress(0);
    mainQueue.drain();
    const int width = gtk_widget_get_width(bar.widget());
    ASSERT_GT(width, 100);
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_opacity(bar.widget()) == 1.0; }))
        << "shown while loading";
    EXPECT_EQ(gtk_widget_get_width(bar.fill()), LoadingProgressBar::minimumFill);

    viewAt(0).simulateProgress(0.5);
    mainQueue.drain();
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(bar.fill()) == width / 2; }))
        << gtk_widget_get_width(bar.fill()) << " of " << width;

    viewAt(0).simulateNavigation("https://done.test/", "Done");
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_opacity(bar.widget()) == 0.0; }))
        << "hidden once loaded";
}

} // namespace
} // namespace ovel::test
