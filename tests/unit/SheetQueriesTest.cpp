#include "presentation/CommandPalette.h"
#include "presentation/TabOverview.h"
#include "support/BrowserFixture.h"

#include <string>
#include <vector>

namespace ovel::test {
namespace {

// Four tabs, the last selected: a start page, a news page, a docs page and another start page;
// one saved workspace of one tab.
class SheetQueries : public BrowserFixture {
protected:
    void SetUp() override {
        launchFresh();
        state->createWorkspaceSnapshot("Solo");
        state->newTab();
        showPage(1, "https://News.Example.com/today", "Morning Tabloid");
        state->newTab();
        showPage(2, "https://docs.kernel.org/index.html", "Kernel docs");
        state->newTab();
    }

    std::vector<std::string> paletteTitles(std::string_view query) const {
        std::vector<std::string> titles;
        for (const auto& action : commandPaletteActions(*state, query)) {
            titles.push_back(action.title);
        }
        return titles;
    }
    std::vector<int> overviewOffsets(std::string_view query) const {
        std::vector<int> offsets;
        for (const auto& entry : filteredTabs(*state, query)) {
            EXPECT_EQ(entry.tab, state->tabs.get().at(entry.offset));
            offsets.push_back(entry.offset);
        }
        return offsets;
    }
};

TEST_F(SheetQueries, PaletteFilter) {
    const auto all = paletteTitles("");
    const struct {
        std::string query;
        std::vector<std::string> titles;
    } cases[] = {
        {"", all},
        {" \t\n\u3000", all},
        {" TAB ",
         {"New Tab", "Reopen Closed Tab", "Tab Overview", "Close Duplicate Tabs",
          "Close Other Tabs", "Switch to New Tab", "Switch to Morning Tabloid", "Switch to New Tab",
          "Restore Workspace: Solo"}},
        {"ovel://", {"Open Settings", "Open Downloads", "Open History", "Open Workspaces"}},
        {"example.COM", {"Switch to Morning Tabloid"}},
        {"kernel.org", {"Switch to Kernel docs"}},
        {"start", {"Switch to New Tab", "Switch to New Tab"}},
        {"1 tab(s)", {"Restore Workspace: Solo"}},
        {"safari", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(paletteTitles(c.query), c.titles) << "query \"" << c.query << "\"";
    }
}

// Running an entry of the palette is the UI tests' to show; these two only the state shows.
TEST_F(SheetQueries, PaletteEntriesActWhenTheyRun) {
    // Built while the last tab was selected, run after the selection moved.
    const auto actions = commandPaletteActions(*state, "Close Other Tabs");
    state->selectTab(1);
    actions.front().run();
    ASSERT_EQ(state->tabs->size(), 1u);
    EXPECT_EQ(state->tabs.get()[0]->title.get(), "Morning Tabloid");

    commandPaletteActions(*state, "Restore Workspace: Solo").front().run();
    ASSERT_EQ(state->tabs->size(), 1u);
    EXPECT_FALSE(state->tabs.get()[0]->url().has_value()) << "the workspace's start page";
}

TEST_F(SheetQueries, OverviewFilterKeepsOffsetsInTheFullList) {
    const struct {
        std::string query;
        std::vector<int> offsets;
    } cases[] = {
        {"", {0, 1, 2, 3}}, {"  ", {0, 1, 2, 3}}, {" TABLOID ", {1}}, {"EXAMPLE", {1}},
        {"kernel", {2}},    {"docs.kernel", {2}}, {"start", {}},      {"page", {}},
        {"new", {0, 1, 3}}, {"https", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(overviewOffsets(c.query), c.offsets) << "query \"" << c.query << "\"";
    }
}

} // namespace
} // namespace ovel::test
