#include "chrome/TabBar.h"
#include "chrome/ToolbarView.h"
#include "gutil/AccessibleLabel.h"
#include "support/ViewFixture.h"

#include <map>

namespace ovel::test {
namespace {

// The strip on fake tabs; tabs are titled T1, T2, ... in the order they were opened.
class TabBarTest : public ViewFixture {
protected:
    void openTabs(int count) {
        for (int i = 1; i <= count; ++i) {
            if (i > 1) {
                state->newTab();
            }
            showPage(i - 1, "https://t" + std::to_string(i) + ".test/", "T" + std::to_string(i));
        }
    }
    // Every tab has its own item, in strip order, each showing its tab's title.
    void expectItemsMatchTabs(const TabBar& bar, const char* when) {
        const auto widgets = bar.itemWidgets();
        ASSERT_EQ(widgets.size(), state->tabs->size()) << when;
        for (std::size_t i = 0; i < widgets.size(); ++i) {
            const BrowserTab& tab = *state->tabs.get()[i];
            TabItem* item = bar.itemFor(tab.id());
            ASSERT_NE(item, nullptr) << when;
            EXPECT_EQ(widgets[i], item->widget()) << when << ", place " << i;
            EXPECT_STREQ(accessibleLabel(item->capsule()), tab.title->c_str()) << when;
        }
    }
    std::map<Uuid, GtkWidget*> widgetsByTab(const TabBar& bar) {
        std::map<Uuid, GtkWidget*> widgets;
        for (const auto& tab : state->tabs.get()) {
            widgets[tab->id()] = bar.itemFor(tab->id())->widget();
        }
        return widgets;
    }
};

TEST_F(TabBarTest, ItemsFollowTheTabListAndKeepTheirWidgets) {
    openTabs(5);
    TabBar bar(*state);
    show(bar.widget());
    expectItemsMatchTabs(bar, "at start");
    const auto before = widgetsByTab(bar);

    state->moveTabLeft(4);
    state->togglePinTab(2);
    state->closeTab(0);
    showPage(1, "https://t9.test/", "Renamed");
    expectItemsMatchTabs(bar, "after a move, a pin, a close and a new title");
    for (const auto& tab : state->tabs.get()) {
        EXPECT_EQ(bar.itemFor(tab->id())->widget(), before.at(tab->id()))
            << tab->title.get() << " kept its widget";
    }

    // Each close button is named after its tab.
    const std::size_t count = state->tabs->size();
    EXPECT_TRUE(click(bar.widget(), "Close " + state->tabs.get()[0]->title.get()));
    EXPECT_EQ(state->tabs->size(), count - 1);
    expectItemsMatchTabs(bar, "after the close button");
    EXPECT_NE(findByName(bar.widget(), "New Tab"), nullptr);

    state->reopenLastClosedTab();
    state->closeOtherTabs(1);
    expectItemsMatchTabs(bar, "after a reopen and closing the others");
    EXPECT_EQ(bar.itemFor(state->tabs.get()[0]->id())->widget(),
              before.at(state->tabs.get()[0]->id()));

    state->createProfile();
    expectItemsMatchTabs(bar, "after the whole list was replaced");
}

TEST_F(TabBarTest, ContextMenuOffersWhatTheTabsPlaceAllows) {
    openTabs(4);
    state->togglePinTab(0);
    state->togglePinTab(1); // T1p T2p T3 T4
    TabBar bar(*state);
    show(bar.widget());
    struct Case {
        int index;
        const char* pinEntry;
        bool left;
        bool right;
    };
    // Where a tab may move is the unit tests' to list; here, that each entry follows its own tab.
    const Case cases[] = {{1, "Unpin Tab", true, false}, {2, "Pin Tab", false, true}};
    for (const Case& c : cases) {
        TabItem& item = *bar.itemFor(state->tabs.get()[c.index]->id());
        item.refreshMenu();
        std::vector<std::string> titles;
        for (int i = 0; i < g_menu_model_get_n_items(item.menu()); ++i) {
            char* title = nullptr;
            g_menu_model_get_item_attribute(item.menu(), i, G_MENU_ATTRIBUTE_LABEL, "s", &title);
            titles.emplace_back(title);
            g_free(title);
        }
        EXPECT_EQ(titles,
                  (std::vector<std::string>{c.pinEntry, "Move Left", "Move Right", "Close Tab"}))
            << c.index;
        GActionGroup* actions = item.menuActions();
        EXPECT_EQ(g_action_group_get_action_enabled(actions, "move-left"), c.left) << c.index;
        EXPECT_EQ(g_action_group_get_action_enabled(actions, "move-right"), c.right) << c.index;
    }

    // The entries act on the tab where it is now.
    const Uuid third = state->tabs.get()[2]->id();
    g_action_group_activate_action(bar.itemFor(third)->menuActions(), "move-right", nullptr);
    EXPECT_EQ(state->indexOfTab(third), 3);
    g_action_group_activate_action(bar.itemFor(third)->menuActions(), "close", nullptr);
    EXPECT_EQ(state->indexOfTab(third), -1);
    expectItemsMatchTabs(bar, "after the menu's move and close");
}

} // namespace
} // namespace ovel::test
