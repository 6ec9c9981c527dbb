#include "chrome/BrowserCommands.h"
#include "chrome/KeyboardShortcutsWindow.h"
#include "support/BrowserFixture.h"
#include "support/GtkWait.h"
#include "support/ViewFixture.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <string>
#include <vector>

namespace ovel {
namespace {

// One registered application for the whole suite: GTK registers an application once per
// process.
GtkApplication* application() {
    static GtkApplication* shared = [] {
        GtkApplication* app = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
        g_application_register(G_APPLICATION(app), nullptr, nullptr);
        return app;
    }();
    return shared;
}

class BrowserCommandsTest : public test::BrowserFixture {
protected:
    void SetUp() override {
        launchFresh();
        application_ = application();
        ASSERT_TRUE(g_application_get_is_registered(G_APPLICATION(application_)));
        commands_ = std::make_unique<BrowserCommands>(application_, *state);
    }
    void TearDown() override {
        commands_.reset();
        state.reset();
    }

    void activate(const char* action) {
        g_action_group_activate_action(G_ACTION_GROUP(application_), action, nullptr);
    }

    GtkApplication* application_ = nullptr;
    std::unique_ptr<BrowserCommands> commands_;
};

TEST_F(BrowserCommandsTest, CommandsActOnTheStateAndTheSelectedTab) {
    activate("find-in-page");
    EXPECT_TRUE(state->showFindBar.get());
    activate("find-in-page");
    EXPECT_FALSE(state->showFindBar.get()) << "a second Ctrl+F hides the find bar again";

    activate("show-tab-overview");
    activate("show-tab-overview");
    EXPECT_TRUE(state->showTabOverview.get()) << "showing the overview twice leaves it shown";
    activate("command-palette");
    EXPECT_TRUE(state->showCommandPalette.get());

    activate("new-tab");
    activate("new-tab");
    ASSERT_EQ(state->tabs->size(), 3u);
    EXPECT_EQ(state->selectedIndex.get(), 2);
    activate("close-tab");
    EXPECT_EQ(state->tabs->size(), 2u);
    activate("reopen-closed-tab");
    EXPECT_EQ(state->tabs->size(), 3u);
    activate("close-other-tabs");
    EXPECT_EQ(state->tabs->size(), 1u);

    activate("back");
    activate("forward");
    activate("forward");
    activate("reload");
    EXPECT_EQ(viewAt(0).goBackCount, 1);
    EXPECT_EQ(viewAt(0).goForwardCount, 2);
    EXPECT_EQ(viewAt(0).reloadCount, 1);

    activate("print");
    EXPECT_EQ(viewAt(0).printCount, 1);
    state->openURL("ovel://settings");
    EXPECT_FALSE(g_action_group_get_action_enabled(G_ACTION_GROUP(application_), "print"))
        << "an internal page has nothing to print";
    state->openHome();
    EXPECT_TRUE(g_action_group_get_action_enabled(G_ACTION_GROUP(application_), "print"));
}

class ShortcutsWindowTest : public test::ViewFixture {
protected:
    void SetUp() override {
        test::ViewFixture::SetUp();
        application_ = application();
        commands_ = std::make_unique<BrowserCommands>(application_, *state);
    }
    void TearDown() override {
        commands_.reset();
        test::ViewFixture::TearDown();
    }

    GtkApplication* application_ = nullptr;
    std::unique_ptr<BrowserCommands> commands_;
};

TEST_F(ShortcutsWindowTest, ListsEveryAcceleratorThatWorks) {
    GtkWindow* window = KeyboardShortcutsWindow::create();
    // Every shortcut the window's sections list, as "title: accelerators" (the window's search
    // page holds copies of them, left out).
    std::vector<std::string> listed;
    for (GtkWidget* section : widgetsWhere(
             GTK_WIDGET(window), [](GtkWidget* w) { return GTK_IS_SHORTCUTS_SECTION(w) != 0; })) {
        for (GtkWidget* shortcut : widgetsWhere(
                 section, [](GtkWidget* w) { return GTK_IS_SHORTCUTS_SHORTCUT(w) != 0; })) {
            char* title = nullptr;
            char* accelerator = nullptr;
            g_object_get(shortcut, "title", &title, "accelerator", &accelerator, nullptr);
            listed.push_back(std::string(title) + ": " + (accelerator ? accelerator : ""));
            g_free(title);
            g_free(accelerator);
        }
    }

    // Every menu command with a shortcut, by the accelerators installed for it, and the keys
    // outside the menu.
    std::vector<std::string> expected;
    for (const BrowserCommand& command : browserCommands) {
        const std::string action = "app." + std::string(command.action);
        char** accelerators = gtk_application_get_accels_for_action(application_, action.c_str());
        if (accelerators[0] != nullptr) {
            expected.push_back(std::string(command.title) + ": " + accelerators[0]);
        }
        g_strfreev(accelerators);
    }
    for (const KeyShortcut& shortcut : keyOnlyShortcuts) {
        expected.push_back(std::string(shortcut.title) + ": " + std::string(shortcut.accelerators));
    }
    std::sort(listed.begin(), listed.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(std::count(listed.begin(), listed.end(), "Next Tab: <Control>Tab <Control>Page_Down"),
              1);

    gtk_window_set_default_size(window, 1100, 700);
    gtk_window_present(window);
    ASSERT_TRUE(test::waitUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(window)); }));
    test::runMainLoopFor(std::chrono::milliseconds(500));
    EXPECT_FALSE(saveScreenshot(GTK_WIDGET(window), "keyboard-shortcuts").empty());
    gtk_window_destroy(window);
}

} // namespace
} // namespace ovel
