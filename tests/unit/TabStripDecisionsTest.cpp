#include "presentation/ToolbarState.h"
#include "support/BrowserFixture.h"

namespace ovel::test {
namespace {

// Four tabs T1..T4, T1 pinned, T4 selected. Tabs are named by number in the tables (0: none).
class TabStripDecisions : public BrowserFixture {
protected:
    void SetUp() override { launchWithTabs(4).togglePinTab(0); }
    Uuid id(int number) const { return state->tabs.get().at(number - 1)->id(); }
    int number(const std::optional<Uuid>& tab) const {
        return tab ? state->indexOfTab(*tab) + 1 : 0;
    }
};

TEST_F(TabStripDecisions, EnteringShowsTheIndicatorOnlyWhereTheTabCouldLandAndUpdatingAlways) {
    enum class Event { Enter, Update };
    struct Case {
        const char* what;
        int dragged;
        Event event;
        int target;
        double x;
        int shownOn;
        bool after;
    };
    const Case cases[] = {
        {"no drag in progress", 0, Event::Enter, 3, 100, 0, false},
        {"a tab over itself", 3, Event::Enter, 3, 100, 0, false},
        {"pinned over unpinned", 1, Event::Enter, 3, 100, 0, false},
        {"unpinned over pinned", 3, Event::Enter, 1, 100, 0, false},
        {"past the threshold", 2, Event::Enter, 4, 72.5, 4, true},
        {"exactly on the threshold", 2, Event::Enter, 4, 72, 4, false},
        {"at the leading edge", 4, Event::Enter, 2, 0, 2, false},
        {"update: no drag", 0, Event::Update, 3, 100, 3, true},
        {"update: a tab over itself", 3, Event::Update, 3, 10, 3, false},
        {"update: pinned over unpinned", 1, Event::Update, 3, 100, 3, true},
        {"update: exactly on the threshold", 2, Event::Update, 4, 72, 4, false},
    };
    for (const Case& c : cases) {
        SetUp();
        if (c.dragged) {
            state->beginTabDrag(id(c.dragged));
        }
        if (c.event == Event::Enter) {
            state->dropEntered(id(c.target), c.x);
        } else {
            state->dropUpdated(id(c.target), c.x);
        }
        EXPECT_EQ(number(state->dropTargetTabID.get()), c.shownOn) << c.what;
        EXPECT_EQ(state->dropInsertAfter.get(), c.after) << c.what;
    }
}

TEST_F(TabStripDecisions, LeavingClearsOnlyItsOwnIndicatorAndKeepsTheSide) {
    state->beginTabDrag(id(2));
    state->dropUpdated(id(3), 100);
    state->dropExited(id(4));
    EXPECT_EQ(number(state->dropTargetTabID.get()), 3) << "another item's exit is ignored";
    state->dropExited(id(3));
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);
    EXPECT_TRUE(state->dropInsertAfter.get());
}

TEST_F(TabStripDecisions, DroppingMovesTheTabAndEndsTheDrag) {
    state->dropUpdated(id(3), 100);
    state->beginTabDrag(id(4));
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt) << "a new drag starts without indicator";
    state->dropUpdated(id(2), 10);
    EXPECT_TRUE(state->performDrop(id(2)));
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
    EXPECT_EQ(state->draggedTabID(), std::nullopt);
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);

    state->dropUpdated(id(4), 100);
    EXPECT_FALSE(state->performDrop(id(4))) << "no drag in progress";
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);

    state->beginTabDrag(id(3));
    EXPECT_TRUE(state->performDrop(id(3))) << "a tab dropped onto itself stays";
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
}

TEST_F(TabStripDecisions, NextAndPreviousSelectionWrapAround) {
    struct Case {
        int from;
        bool next;
        int expected;
    };
    const Case cases[] = {{0, true, 1}, {3, true, 0}, {0, false, 3}, {2, false, 1}};
    for (const Case& c : cases) {
        state->selectTab(c.from);
        c.next ? state->selectNextTab() : state->selectPreviousTab();
        EXPECT_EQ(state->selectedIndex.get(), c.expected) << c.from << (c.next ? " next" : " prev");
        EXPECT_EQ(state->addressText.get(), *state->selectedTab()->url());
    }
}

TEST_F(TabStripDecisions, ToolbarButtonsFollowTheSelectedTab) {
    viewAt(1).backAvailable = true;
    viewAt(1).forwardAvailable = true;
    showPage(1, "https://t2.test/next", "T2");
    viewAt(2).forwardAvailable = true;
    showPage(2, "https://t3.test/", "T3");
    struct Case {
        int selected;
        ToolbarState expected;
    };
    const Case cases[] = {
        {0, {false, false, true}}, {1, {true, true, true}}, {2, {false, true, true}}};
    for (const Case& c : cases) {
        state->selectTab(c.selected);
        EXPECT_EQ(toolbarStateOf(*state), c.expected) << "tab " << c.selected;
    }
    state->closeOtherTabs(1);
    EXPECT_EQ(toolbarStateOf(*state), (ToolbarState{true, true, false})) << "one tab left";
}

TEST_F(TabStripDecisions, EscapeGivesBackTheSelectedTabsAddress) {
    state->setAddressText("half-typed");
    state->resetAddressText();
    EXPECT_EQ(state->addressText.get(), "https://t4.test/");
}

} // namespace
} // namespace ovel::test
