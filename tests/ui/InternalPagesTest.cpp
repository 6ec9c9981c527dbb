#include "gutil/AccessibleLabel.h"
#include "gutil/GObjectRef.h"
#include "pages/OvelAboutPageNative.h"
#include "pages/OvelDownloadsPageNative.h"
#include "pages/OvelHistoryPageNative.h"
#include "pages/OvelInternalPageShell.h"
#include "pages/OvelSettingsPageNative.h"
#include "pages/OvelWorkspacesPageNative.h"
#include "pages/SitePermissionEditor.h"
#include "support/ViewFixture.h"

#include <tuple>

namespace ovel::test {
namespace {

class InternalPagesTest : public ViewFixture {
protected:
    void SetUp() override {
        ViewFixture::SetUp();
        static bool loaded = false;
        if (!loaded) {
            loadCss("internal-pages.css");
            loaded = true;
        }
    }

    static bool shown(GtkWidget* widget) {
        return widget != nullptr && gtk_widget_is_visible(widget);
    }
};

using Rule = SitePermissionRule;
constexpr auto Allow = PermissionSetting::Allow;
constexpr auto Block = PermissionSetting::Block;

TEST_F(InternalPagesTest, SettingsEditsTheRuleOfTheSelectedTabsHost) {
    showPage(0, "https://one.test/a", "One");
    state->newTab();
    showPage(1, "https://Two.test/", "Two");
    state->setCurrentSiteRule(Rule{Allow, Allow, Allow, Allow});
    state->selectTab(0);

    OvelSettingsPageNative page(*state);
    show(page.widget());
    GtkWidget* root = page.widget();
    EXPECT_NE(findByName(root, "Site Permissions (one.test)"), nullptr);
    EXPECT_EQ(page.permissionEditor().rule(), Rule{});

    // A segment changes only the editor's copy; Apply stores it under the current host.
    GtkWidget* camera = named(root, "Camera");
    EXPECT_TRUE(click(camera, "Block"));
    gtk_check_button_set_active(GTK_CHECK_BUTTON(named(root, "Allow ads on this site")), true);
    EXPECT_EQ(state->sitePermissionRules->count("one.test"), 0u);
    EXPECT_TRUE(click(root, "Apply"));
    EXPECT_EQ(state->sitePermissionRules->at("one.test"),
              (Rule{.camera = Block, .allowAds = true}));

    state->selectTab(1);
    EXPECT_NE(findByName(root, "Site Permissions (two.test)"), nullptr) << "host lower-cased";
    EXPECT_EQ(findByName(root, "Site Permissions (one.test)"), nullptr);
    EXPECT_EQ(page.permissionEditor().rule(), (Rule{Allow, Allow, Allow, Allow}));

    // Reset forgets the stored rule and leaves the choices on show.
    EXPECT_TRUE(click(root, "Reset"));
    EXPECT_EQ(state->sitePermissionRules->count("two.test"), 0u);
    EXPECT_EQ(page.permissionEditor().rule(), (Rule{Allow, Allow, Allow, Allow}));

    showPage(1, "https://three.test/", "Three");
    EXPECT_NE(findByName(root, "Site Permissions (three.test)"), nullptr);
    EXPECT_EQ(page.permissionEditor().rule(), Rule{});
}

TEST_F(InternalPagesTest, SettingsProfileControls) {
    OvelSettingsPageNative page(*state);
    show(page.widget());
    GtkWidget* root = page.widget();
    GtkWidget* remove = named(root, "Delete");
    GtkWidget* rename = named(root, "Rename profile");
    const std::string firstName = state->activeProfileName();
    EXPECT_EQ(gtk_editable_get_text(GTK_EDITABLE(rename)), firstName);
    EXPECT_FALSE(gtk_widget_get_sensitive(remove)) << "one profile cannot be deleted";

    EXPECT_TRUE(click(root, "New"));
    ASSERT_EQ(state->profiles->size(), 2u);
    EXPECT_TRUE(gtk_widget_get_sensitive(remove));
    auto* picker = GTK_DROP_DOWN(named(root, "Active Profile"));
    EXPECT_EQ(state->profiles.get()[gtk_drop_down_get_selected(picker)].id,
              *state->activeProfileID);

    // Return renames like the button; a refused name shows the stored one again.
    for (const auto& [typed, stored] : {std::pair{"Work <b>", "Work <b>"}, {"   ", "Work <b>"}}) {
        gtk_editable_set_text(GTK_EDITABLE(rename), typed);
        g_signal_emit_by_name(rename, "activate");
        EXPECT_EQ(state->activeProfileName(), stored);
        EXPECT_EQ(gtk_editable_get_text(GTK_EDITABLE(rename)), std::string(stored));
    }

    // Choosing the other profile in the picker switches to it.
    const guint other = state->profiles.get()[0].id == *state->activeProfileID ? 1 : 0;
    gtk_drop_down_set_selected(picker, other);
    EXPECT_EQ(*state->activeProfileID, state->profiles.get()[other].id);

    EXPECT_TRUE(click(root, "Delete"));
    EXPECT_EQ(state->profiles->size(), 1u);
    EXPECT_FALSE(gtk_widget_get_sensitive(remove));
}

TEST_F(InternalPagesTest, SettingsPreferencesAndWorkspaceStatus) {
    OvelSettingsPageNative page(*state);
    show(page.widget());
    GtkWidget* root = page.widget();
    gtk_drop_down_set_selected(GTK_DROP_DOWN(named(root, "Theme")), 2);
    EXPECT_EQ(*state->theme, BrowserTheme::Sunrise);
    state->setSearchEngine(SearchEngine::Bing);
    EXPECT_EQ(gtk_drop_down_get_selected(GTK_DROP_DOWN(named(root, "Search"))), 2u);
    gtk_switch_set_active(GTK_SWITCH(named(root, "Ad Blocker")), true);
    EXPECT_TRUE(*state->adBlockEnabled);
    EXPECT_NE(findByName(root, "Not blocking yet · the ad and tracker lists are not installed"),
              nullptr);
    state->setSmoothAnimations(false);
    EXPECT_FALSE(gtk_switch_get_active(GTK_SWITCH(named(root, "Smooth Animations"))));

    EXPECT_NE(findByName(root, "No saved workspaces yet."), nullptr);
    EXPECT_TRUE(click(root, "Save Current Tabs"));
    EXPECT_TRUE(click(root, "Save Current Tabs"));
    EXPECT_NE(findByName(root, "Latest: Workspace 2 (1 tabs)"), nullptr);
}

TEST_F(InternalPagesTest, HistoryShowsFiveHundredEntriesWithFewRowsAndHearsOneVisitAsOneInsert) {
    for (int i = 0; i < 500; ++i) {
        showPage(0, "https://site.test/page" + std::to_string(i), "Page " + std::to_string(i));
    }
    ASSERT_EQ(state->historyEntries->size(), 500u);
    OvelHistoryPageNative page(*state);
    show(page.widget());
    GtkWidget* root = page.widget();
    EXPECT_NE(findByName(root, "500 entries"), nullptr);
    EXPECT_EQ(g_list_model_get_n_items(page.model()), 500u);

    EXPECT_NE(findByName(root, "Page 499"), nullptr) << "newest first";

    std::vector<std::tuple<guint, guint, guint>> changes;
    gulong handler = g_signal_connect_swapped(
        page.model(), "items-changed",
        G_CALLBACK(+[](decltype(changes)* seen, guint position, guint removed, guint added) {
            seen->emplace_back(position, removed, added);
        }),
        &changes);
    showPage(0, "https://site.test/new", "Newest");
    g_signal_handler_disconnect(page.model(), handler);
    EXPECT_EQ(changes, (decltype(changes){{0, 0, 1}, {500, 1, 0}}))
        << "the visit goes in at the top and the oldest entry drops out at the bottom";
    runMainLoopFor(50ms);
    EXPECT_NE(findByName(root, "Newest"), nullptr);

    // A row opens its stored address in the selected tab.
    EXPECT_TRUE(click(root, "Page 499"));
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://site.test/page499");

    EXPECT_TRUE(click(root, "Clear History"));
    EXPECT_TRUE(state->historyEntries->empty());
    EXPECT_TRUE(shown(findByName(root, "No history yet.")));
    EXPECT_NE(findByName(root, "0 entries"), nullptr);
}

TEST_F(InternalPagesTest, DownloadCardsShowTheButtonsOfTheirStatusAndStayPut) {
    showPage(0, "https://src.test/report", "Report");
    OvelDownloadsPageNative page(*state);
    show(page.widget());
    EXPECT_TRUE(shown(findByName(page.widget(), "No downloads yet.")));
    const auto transfer = viewAt(0).simulateDownload("report.zip");
    mainQueue.drain();
    const Uuid report = state->downloads->front().id;
    GtkWidget* card = page.cardFor(report);
    ASSERT_NE(card, nullptr);
    EXPECT_FALSE(shown(findByName(page.widget(), "No downloads yet.")));

    const auto visible = [&](GtkWidget* of) {
        std::vector<std::string> names;
        for (const char* name : {"Pause", "Resume", "Cancel", "Open In Finder", "Retry"}) {
            if (shown(findByName(of, name))) {
                names.emplace_back(name);
            }
        }
        return names;
    };
    EXPECT_EQ(visible(card), (std::vector<std::string>{"Pause", "Cancel"}));
    state->pauseDownload(state->downloads->front());
    EXPECT_EQ(visible(card), (std::vector<std::string>{"Resume", "Cancel"}));
    transfer->fail("Refused");
    mainQueue.drain();
    EXPECT_EQ(page.cardFor(report), card) << "the same card, updated";
    EXPECT_EQ(visible(card), std::vector<std::string>{"Retry"});
    EXPECT_TRUE(shown(findByName(card, "Failed")));
    EXPECT_TRUE(click(card, "Retry"));
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://src.test/report");
    viewAt(0).simulateDownload("done.zip")->finish();
    mainQueue.drain();
    EXPECT_EQ(visible(page.cardFor(state->downloads->front().id)),
              std::vector<std::string>{"Open In Finder"});

    state->clearDownloads();
    EXPECT_EQ(page.cardFor(report), nullptr);
    EXPECT_TRUE(waitUntil([&] { return findByName(page.widget(), "report.zip") == nullptr; }))
        << "the card slides out and goes";
}

TEST_F(InternalPagesTest, WorkspacesAndAboutFollowTheState) {
    OvelWorkspacesPageNative workspaces(*state);
    show(workspaces.widget());
    GtkWidget* root = workspaces.widget();
    EXPECT_TRUE(shown(findByName(root, "No workspaces saved.")));
    EXPECT_TRUE(click(root, "Save Current"));
    ASSERT_EQ(state->workspaceSnapshots->size(), 1u);
    const WorkspaceSnapshot first = state->workspaceSnapshots->front();
    GtkWidget* row = workspaces.rowFor(first.id);
    ASSERT_NE(row, nullptr);
    EXPECT_NE(findByName(row, "Workspace 1"), nullptr);
    GtkWidget* field = named(root, "Workspace name");
    gtk_editable_set_text(GTK_EDITABLE(field), "Research");
    g_signal_emit_by_name(field, "activate");
    EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(field)), "");
    EXPECT_EQ(workspaces.rowFor(first.id), row) << "the older row is kept";
    EXPECT_TRUE(click(workspaces.rowFor(state->workspaceSnapshots->front().id), "Delete"));
    EXPECT_EQ(state->workspaceSnapshots->size(), 1u);
    EXPECT_EQ(gtk_widget_get_next_sibling(row), nullptr);

    gtk_window_destroy(window_);
    window_ = nullptr;
    OvelAboutPageNative about(*state);
    show(about.widget());
    state->newTab();
    for (const char* line : {"Profiles: 1", "Tabs: 2", "History Entries: 0", "Downloads: 0"}) {
        EXPECT_NE(findByName(about.widget(), line), nullptr) << line;
    }
    EXPECT_TRUE(click(about.widget(), "Open Downloads"));
    EXPECT_EQ(*state->selectedTab()->displayAddress, "ovel://downloads");
}

} // namespace
} // namespace ovel::test
