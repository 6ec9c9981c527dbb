#include "gutil/AccessibleLabel.h"
#include "pages/CommandPaletteSheet.h"
#include "pages/SheetHost.h"
#include "pages/TabOverviewSheet.h"
#include "support/ViewFixture.h"

#include <memory>

namespace ovel::test {
namespace {

// A window as the browser builds it: content with a button that has the focus, and the sheets'
// layer laid over it.
class SheetsTest : public ViewFixture {
protected:
    void SetUp() override {
        ViewFixture::SetUp();
        loadCss("sheets.css");
        state->createWorkspaceSnapshot("Reading");
        showPage(0, "https://news.example.com/", "Morning News");
        state->newTab();
        showPage(1, "https://docs.kernel.org/", "Kernel docs");
        state->newTab();

        content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        behind = gtk_button_new_with_label("Behind");
        gtk_box_append(GTK_BOX(content), behind);
        GtkWidget* overlay = gtk_overlay_new();
        gtk_overlay_set_child(GTK_OVERLAY(overlay), content);
        host = std::make_unique<SheetHost>(content);
        gtk_overlay_add_overlay(GTK_OVERLAY(overlay), host->widget());
        palette = std::make_unique<CommandPaletteSheet>(*state, *host);
        overview = std::make_unique<TabOverviewSheet>(*state, *host);
        show(overlay);
        gtk_widget_grab_focus(behind);
    }
    void TearDown() override {
        overview.reset();
        palette.reset();
        host.reset();
        ViewFixture::TearDown();
    }

    GtkWidget* focus() const { return gtk_root_get_focus(GTK_ROOT(window_)); }
    // Presses `key` as the widget's own key handler (the first on it) receives it.
    static bool press(GtkWidget* widget, guint key) {
        GListModel* controllers = gtk_widget_observe_controllers(widget);
        gboolean handled = FALSE;
        for (guint i = 0; i < g_list_model_get_n_items(controllers); ++i) {
            auto* controller = static_cast<GObject*>(g_list_model_get_item(controllers, i));
            if (GTK_IS_EVENT_CONTROLLER_KEY(controller) && !handled) {
                g_signal_emit_by_name(controller, "key-pressed", key, 0u, GdkModifierType(0),
                                      &handled);
            }
            g_object_unref(controller);
        }
        g_object_unref(controllers);
        return handled;
    }
    // The rows a person sees in the palette, by accessible name.
    std::vector<std::string> paletteRows() const {
        std::vector<std::string> names;
        for (GtkWidget* row : widgetsWhere(palette->widget(), [](GtkWidget* w) {
                 return gtk_widget_has_css_class(w, "ovel-command-palette-row") &&
                        gtk_widget_is_visible(w);
             })) {
            names.emplace_back(accessibleLabel(row));
        }
        return names;
    }
    // Whether the keyboard focus is on `widget` or inside it (a field's text).
    bool hasFocus(GtkWidget* widget) const {
        GtkWidget* focused = focus();
        return focused != nullptr && (focused == widget || gtk_widget_is_ancestor(focused, widget));
    }
    GtkWidget* paletteField() {
        return named(palette->widget(), "Type a command, tab, or workspace");
    }
    GtkWidget* overviewField() { return named(overview->widget(), "Search tabs by title or host"); }
    bool contentHidden(bool hidden) const {
        char* mismatch = gtk_test_accessible_check_state(
            GTK_ACCESSIBLE(content), GTK_ACCESSIBLE_STATE_HIDDEN, hidden ? TRUE : FALSE);
        g_free(mismatch);
        return mismatch == nullptr;
    }
    void settle() { runMainLoopFor(std::chrono::milliseconds(30)); }

    GtkWidget* content = nullptr;
    GtkWidget* behind = nullptr;
    std::unique_ptr<SheetHost> host;
    std::unique_ptr<CommandPaletteSheet> palette;
    std::unique_ptr<TabOverviewSheet> overview;
};

TEST_F(SheetsTest, PaletteOpensEmptyRunsOnlyAMatchAndGivesTheFocusBack) {
    state->setShowCommandPalette(true);
    settle();
    GtkWidget* field = paletteField();
    EXPECT_TRUE(hasFocus(field));
    EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(field)), "");
    EXPECT_EQ(paletteRows().size(), 9u + 3 + 1) << "commands, three tabs, one workspace";
    EXPECT_TRUE(contentHidden(true)) << "the window behind is hidden from assistive technologies";

    // Tab, wrapping around at the end as the window does, stays in the sheet.
    for (int i = 0; i < 40; ++i) {
        if (!gtk_widget_child_focus(GTK_WIDGET(window_), GTK_DIR_TAB_FORWARD)) {
            gtk_root_set_focus(GTK_ROOT(window_), nullptr);
            gtk_widget_child_focus(GTK_WIDGET(window_), GTK_DIR_TAB_FORWARD);
        }
        ASSERT_NE(focus(), nullptr);
        ASSERT_TRUE(gtk_widget_is_ancestor(focus(), palette->widget())) << "step " << i;
    }
    gtk_widget_grab_focus(field);

    gtk_editable_set_text(GTK_EDITABLE(field), "no such thing");
    EXPECT_TRUE(paletteRows().empty());
    g_signal_emit_by_name(field, "activate");
    EXPECT_TRUE(state->showCommandPalette.get()) << "Return on an empty list does nothing";

    gtk_editable_set_text(GTK_EDITABLE(field), " KERNEL ");
    EXPECT_EQ(paletteRows(), std::vector<std::string>{"Switch to Kernel docs"});
    g_signal_emit_by_name(field, "activate");
    EXPECT_EQ(state->selectedIndex.get(), 1);
    EXPECT_FALSE(state->showCommandPalette.get());
    EXPECT_FALSE(gtk_widget_get_visible(host->widget()));
    EXPECT_TRUE(hasFocus(behind));

    state->setShowCommandPalette(true);
    settle();
    EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(paletteField())), "") << "query forgotten";
    EXPECT_TRUE(press(host->widget(), GDK_KEY_Escape));
    EXPECT_FALSE(state->showCommandPalette.get());
    EXPECT_TRUE(hasFocus(behind));
    EXPECT_TRUE(contentHidden(false));
}

TEST_F(SheetsTest, PaletteRowsFollowTheStateAndTakeTheKeyboard) {
    state->setShowCommandPalette(true);
    settle();
    GtkWidget* field = paletteField();
    gtk_editable_set_text(GTK_EDITABLE(field), "switch");
    state->newTab();
    showPage(3, "https://example.org/", "Fourth");
    EXPECT_EQ(paletteRows().back(), "Switch to Fourth");

    EXPECT_TRUE(press(field, GDK_KEY_Down));
    EXPECT_EQ(accessibleLabel(focus()), std::string("Switch to Morning News"));
    // Return or Space on a focused button: it shows itself pressed, then clicks.
    gtk_widget_activate(focus());
    EXPECT_TRUE(waitUntil([this] { return !state->showCommandPalette.get(); }));
    EXPECT_EQ(state->selectedIndex.get(), 0);
}

TEST_F(SheetsTest, OverviewCardsCloseSelectAndFilter) {
    state->setShowTabOverview(true);
    settle();
    EXPECT_TRUE(hasFocus(overviewField()));
    EXPECT_TRUE(click(overview->widget(), "Close Kernel docs"));
    EXPECT_EQ(state->tabs->size(), 2u);
    EXPECT_TRUE(state->showTabOverview.get()) << "closing a tab leaves the overview open";
    EXPECT_EQ(findByName(overview->widget(), "Kernel docs"), nullptr);

    EXPECT_TRUE(click(overview->widget(), "New Tab"));
    gtk_editable_set_text(GTK_EDITABLE(overviewField()), " EXAMPLE ");
    GtkWidget* news = named(overview->widget(), "Morning News");
    EXPECT_TRUE(gtk_widget_is_visible(news));
    EXPECT_FALSE(gtk_widget_is_visible(named(overview->widget(), "Close New Tab")))
        << "start pages are matched on their titles only";
    EXPECT_TRUE(click(overview->widget(), "Morning News"));
    EXPECT_EQ(state->selectedIndex.get(), 0);
    EXPECT_FALSE(state->showTabOverview.get());
    EXPECT_TRUE(hasFocus(behind));
}

TEST_F(SheetsTest, PaletteOpensTheOverviewOverItselfAndTheBackdropClosesIt) {
    state->setShowCommandPalette(true);
    settle();
    gtk_editable_set_text(GTK_EDITABLE(paletteField()), "grid");
    g_signal_emit_by_name(paletteField(), "activate");
    EXPECT_FALSE(state->showCommandPalette.get());
    ASSERT_TRUE(state->showTabOverview.get());
    EXPECT_TRUE(hasFocus(overviewField()));
    // A click on the dimmed backdrop around the sheet.
    GtkWidget* backdrop = gtk_overlay_get_child(GTK_OVERLAY(host->widget()));
    GListModel* controllers = gtk_widget_observe_controllers(backdrop);
    auto* gesture = static_cast<GObject*>(g_list_model_get_item(controllers, 0));
    g_signal_emit_by_name(gesture, "released", 1, 5.0, 5.0);
    g_object_unref(gesture);
    g_object_unref(controllers);
    EXPECT_FALSE(state->showTabOverview.get());
    EXPECT_FALSE(gtk_widget_get_visible(host->widget()));
    EXPECT_TRUE(hasFocus(behind));
}

} // namespace
} // namespace ovel::test
