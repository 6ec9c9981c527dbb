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

TEST_F(BrowserCommandsTest, EveryCommandHasItsShortcutAndItsPlaceInTheMenu) {
    // The design's shortcuts, with Control for Command.
    struct Case {
        const char* title;
        const char* section;
        const char* accelerator;
    };
    const Case cases[] = {
        {"New Tab", "", "<Control>t"},
        {"Reopen Last Closed Tab", "", "<Shift><Control>t"},
        {"Print…", "", "<Control>p"},
        {"Back", "Navigation", "<Control>bracketleft"},
        {"Forward", "Navigation", "<Control>bracketright"},
        {"Reload", "Navigation", "<Control>r"},
        {"Home", "Navigation", "<Control>h"},
        {"Close Tab", "Tabs", "<Control>w"},
        {"Duplicate Tab", "Tabs", "<Shift><Control>d"},
        {"Show Tab Overview", "Tabs", "<Control>backslash"},
        {"Find in Page", "View", "<Control>f"},
        {"Zoom In", "View", "<Control>equal"},
        {"Zoom Out", "View", "<Control>minus"},
        {"Actual Size", "View", "<Control>0"},
        {"Full Screen", "View", "F11"},
        {"Command Palette", "Tools", "<Shift><Control>k"},
        {"Close Other Tabs", "Tools", nullptr},
        {"Close Duplicate Tabs", "Tools", nullptr},
        {"Keyboard Shortcuts", "", "<Control>question"},
    };

    // The menu as shown: every item in order with its section's label and its action.
    struct Item {
        std::string section, title, action;
    };
    std::vector<Item> items;
    GMenuModel* menu = commands_->menu();
    for (int s = 0; s < g_menu_model_get_n_items(menu); ++s) {
        char* label = nullptr;
        g_menu_model_get_item_attribute(menu, s, G_MENU_ATTRIBUTE_LABEL, "s", &label);
        GMenuModel* section = g_menu_model_get_item_link(menu, s, G_MENU_LINK_SECTION);
        for (int i = 0; i < g_menu_model_get_n_items(section); ++i) {
            char* title = nullptr;
            char* action = nullptr;
            g_menu_model_get_item_attribute(section, i, G_MENU_ATTRIBUTE_LABEL, "s", &title);
            g_menu_model_get_item_attribute(section, i, G_MENU_ATTRIBUTE_ACTION, "s", &action);
            items.push_back({label ? label : "", title, action});
            g_free(title);
            g_free(action);
        }
        g_object_unref(section);
        g_free(label);
    }

    ASSERT_EQ(items.size(), std::size(cases));
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Case& c = cases[i];
        EXPECT_EQ(items[i].title, c.title);
        EXPECT_EQ(items[i].section, c.section) << c.title;
        char** accelerators =
            gtk_application_get_accels_for_action(application_, items[i].action.c_str());
        const std::vector<std::string> found(accelerators,
                                             accelerators + g_strv_length(accelerators));
        g_strfreev(accelerators);
        EXPECT_EQ(found, c.accelerator ? std::vector<std::string>{c.accelerator}
                                       : std::vector<std::string>{})
            << c.title;
        const std::string name = items[i].action.substr(std::string("app.").size());
        EXPECT_TRUE(g_action_group_get_action_enabled(G_ACTION_GROUP(application_), name.c_str()))
            << c.title << " is enabled on a web page";
    }
}

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

// Every shortcut the window's section lists, as "title: accelerators" (the window's search
// page holds copies of them, left out).
void collectShortcuts(GtkWidget* widget, std::vector<std::string>& found, bool inSection = false) {
    inSection = inSection || GTK_IS_SHORTCUTS_SECTION(widget);
    if (inSection && GTK_IS_SHORTCUTS_SHORTCUT(widget)) {
        char* title = nullptr;
        char* accelerator = nullptr;
        g_object_get(widget, "title", &title, "accelerator", &accelerator, nullptr);
        found.push_back(std::string(title) + ": " + (accelerator ? accelerator : ""));
        g_free(title);
        g_free(accelerator);
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        collectShortcuts(child, found, inSection);
    }
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
    std::vector<std::string> listed;
    collectShortcuts(GTK_WIDGET(window), listed);

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
