#include "chrome/WebContainer.h"
#include "gutil/GObjectRef.h"
#include "support/ViewFixture.h"

#include <map>

namespace ovel::test {
namespace {

// The page area on fake tabs, each with a label of its own for a page.
class WebContainerTest : public ViewFixture {
protected:
    GtkWidget* pageOf(const BrowserTab& tab) {
        auto& page = pages[tab.id()];
        if (!page) {
            page = GObjectRef<GtkWidget>::retain(gtk_label_new(tab.id().c_str()));
        }
        return page.get();
    }

    std::map<Uuid, GObjectRef<GtkWidget>> pages;
};

TEST_F(WebContainerTest, ShowsTheSelectedTabsOwnPageAndLeavesItAloneForOtherTabs) {
    state->newTab();
    state->newTab();
    WebContainer container(*state, [this](const BrowserTab& tab) { return pageOf(tab); });
    show(container.widget());
    GtkWidget* third = pageOf(*state->selectedTab());
    EXPECT_EQ(container.shownPage(), third);

    // A page taken out and put back would be unparented on the way: watch for that.
    int unparented = 0;
    g_signal_connect_swapped(third, "notify::parent", G_CALLBACK(+[](int* count) { ++*count; }),
                             &unparented);
    state->closeTab(0);
    state->moveTabLeft(1);
    EXPECT_EQ(container.shownPage(), third);
    EXPECT_EQ(unparented, 0) << "the page on show stays in place when other tabs change";

    state->selectTab(1);
    GtkWidget* second = pageOf(*state->selectedTab());
    EXPECT_EQ(container.shownPage(), second);
    EXPECT_EQ(gtk_widget_get_parent(third), nullptr) << "the page left is out of the tree";
    EXPECT_TRUE(gtk_stack_get_transition_running(GTK_STACK(container.widget())))
        << "and the new page fades in over a picture of it";
    state->selectTab(0);
    EXPECT_EQ(container.shownPage(), third) << "the same widget again, not a new one";
    g_signal_handlers_disconnect_by_data(third, &unparented);
}

// What the message says, its Reload button and the other tabs are the end-to-end tests' to show.
TEST_F(WebContainerTest, ACrashedHungOrFailedPageShowsAMessageUntilItComesBack) {
    WebContainer container(*state, [this](const BrowserTab& tab) { return pageOf(tab); });
    show(container.widget(), 900, 560);
    GtkWidget* page = pageOf(*state->selectedTab());

    viewAt(0).delegate().webProcessDidTerminate();
    GtkWidget* message = container.shownPage();
    ASSERT_NE(message, page);
    EXPECT_NE(findByName(message, "This page stopped working"), nullptr);
    state->reload();
    EXPECT_EQ(container.shownPage(), page) << "the page comes back as it reloads";

    viewAt(0).delegate().webProcessResponsivenessDidChange(false);
    ASSERT_EQ(container.shownPage(), message);
    EXPECT_NE(findByName(message, "This page is not responding"), nullptr);
    viewAt(0).delegate().webProcessResponsivenessDidChange(true);
    EXPECT_EQ(container.shownPage(), page) << "a page that answers again is shown again";

    const std::string failing = "http://wiki.intranet.test:8080/start";
    viewAt(0).simulateFailure(LoadFailure{LoadFailureKind::ConnectionRefused, failing, {}});
    ASSERT_EQ(container.shownPage(), message);
    EXPECT_NE(findByName(message, "Can't reach this site"), nullptr);
    EXPECT_NE(findByName(message, "wiki.intranet.test refused to connect. The server may be down, "
                                  "or not running on this port."),
              nullptr);
    GtkWidget* tryAgain = findByName(message, "Try Again");
    ASSERT_NE(tryAgain, nullptr);
    g_signal_emit_by_name(tryAgain, "clicked");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, failing);
    EXPECT_EQ(container.shownPage(), page) << "a new load takes the message away";
}

} // namespace
} // namespace ovel::test
