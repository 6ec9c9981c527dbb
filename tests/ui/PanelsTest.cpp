#include "chrome/BrowserRootView.h"
#include "gutil/GObjectRef.h"
#include "support/BrowserFixture.h"
#include "support/TestEnvironment.h"
#include "support/ViewFixture.h"
#include "widgets/SlideRevealer.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <map>
#include <string>
#include <vector>

namespace ovel {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;

// The whole window's view on fake tabs, each with a label for a page.
class PanelsTest : public test::ViewFixture {
protected:
    void SetUp() override {
        launch();
        view_ = std::make_unique<BrowserRootView>(
            *state,
            [this](const BrowserTab& tab) {
                auto& page = pages_[&tab];
                if (!page) {
                    page = GObjectRef<GtkWidget>::retain(gtk_label_new("page"));
                }
                return page.get();
            },
            nullptr);
        window_ = GTK_WINDOW(gtk_window_new());
        gtk_widget_add_css_class(GTK_WIDGET(window_), "ovel-window");
        gtk_window_set_default_size(window_, 1200, 780);
        gtk_window_set_child(window_, view_->widget());
        gtk_window_present(window_);
        ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(view_->widget()); }, 5s));
    }
    void TearDown() override {
        ViewFixture::TearDown();
        view_.reset();
        pages_.clear();
        state.reset();
    }

    bool press(const std::string& name) { return click(view_->widget(), name); }
    // How many widgets under `root` are named `name`.
    static std::size_t countNamed(GtkWidget* root, const std::string& name) {
        return widgetsWhere(root, [&](GtkWidget* w) { return findByName(w, name) == w; }).size();
    }

    // A download from the selected tab's page, its first report applied.
    std::shared_ptr<test::FakeDownload> download(const std::string& fileName) {
        auto transfer = viewOf(*state->selectedTab()).simulateDownload(fileName);
        mainQueue.drain();
        return transfer;
    }

    std::map<const BrowserTab*, GObjectRef<GtkWidget>> pages_;
    std::unique_ptr<BrowserRootView> view_;
};

TEST_F(PanelsTest, EachPanelFollowsItsFlagWithOrWithoutSmoothAnimations) {
    struct Case {
        const char* name;
        SlideRevealer& panel;
        std::function<void(bool)> show;
    };
    const Case cases[] = {
        {"sidebar", view_->sidebar(), [&](bool on) { state->setShowSidebar(on); }},
        {"find bar", view_->findBar(), [&](bool on) { state->setShowFindBar(on); }},
        {"download shelf", view_->downloadShelf(),
         [&](bool on) {
             if (on) {
                 download("D1.bin");
             } else {
                 state->clearDownloads();
             }
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GtkWidget* content = gtk_widget_get_first_child(c.panel.widget());
        EXPECT_FALSE(gtk_widget_get_visible(content)) << "a hidden panel is out of the tree";
        for (const bool smooth : {true, false}) {
            state->setSmoothAnimations(smooth);
            for (const bool open : {true, false}) {
                c.show(open);
                EXPECT_TRUE(waitUntil([&] { return c.panel.progress() == (open ? 1.0 : 0.0); }));
                EXPECT_EQ(c.panel.revealed(), open);
                EXPECT_EQ(gtk_widget_get_visible(content), open);
            }
        }
    }
}

TEST_F(PanelsTest, FindBarDoneHidesAndClearsTheText) {
    state->setSmoothAnimations(false);
    state->toggleFindBar();
    ASSERT_TRUE(waitUntil([&] { return view_->findBar().progress() == 1.0; }, 5s));
    GtkEditable* field = GTK_EDITABLE(view_->findBarView().field());
    EXPECT_TRUE(gtk_widget_has_focus(GTK_WIDGET(field)) ||
                gtk_widget_has_focus(gtk_widget_get_first_child(GTK_WIDGET(field))))
        << "the field takes the keyboard when the bar opens";

    gtk_editable_set_text(field, "needle");
    EXPECT_EQ(state->findText.get(), "needle") << "typing is the find text";
    state->setFindText("other");
    EXPECT_STREQ(gtk_editable_get_text(field), "other") << "and the other way round";

    EXPECT_TRUE(press("Done"));
    EXPECT_FALSE(state->showFindBar.get());
    EXPECT_EQ(state->findText.get(), "");
    EXPECT_STREQ(gtk_editable_get_text(field), "");
    state->toggleFindBar();
    EXPECT_STREQ(gtk_editable_get_text(field), "") << "reopened, the bar starts empty";
}

TEST_F(PanelsTest, TheShelfShowsEightItemsWithTheirControlsAndClearLeavesTransfersAlone) {
    state->setSmoothAnimations(false);
    const auto started = download("started.bin");
    download("paused.bin");
    state->pauseDownload(state->downloads->front());
    download("failed.bin")->fail("Refused");
    download("finished.bin")->finish();
    for (int i = 0; i < 6; ++i) {
        download("more" + std::to_string(i) + ".bin");
        state->cancelDownload(state->downloads->front());
    }
    ASSERT_TRUE(waitUntil([&] { return view_->downloadShelf().progress() == 1.0; }, 5s));
    test::runMainLoopFor(100ms);
    GtkWidget* shelf = view_->downloadShelf().widget();
    // Ten records, newest first: six cancelled, finished, failed, paused, started; the first
    // eight shown.
    EXPECT_EQ(countNamed(shelf, "Show in Folder"), 8u) << "each has its file's path";
    EXPECT_EQ(countNamed(shelf, "Retry"), 7u) << "six cancelled and one failed";
    EXPECT_EQ(countNamed(shelf, "Pause") + countNamed(shelf, "Resume"), 0u)
        << "the paused one is ninth and the started one tenth: not shown";

    EXPECT_TRUE(press("Clear"));
    EXPECT_TRUE(state->downloads->empty());
    EXPECT_TRUE(waitUntil([&] { return !view_->downloadShelf().revealed(); }, 5s));
    // The transfer still runs: its next event brings it back onto the shelf.
    started->finish();
    mainQueue.drain();
    ASSERT_EQ(state->downloads->size(), 1u);
    EXPECT_EQ(state->downloads->front().status, DownloadStatus::Finished);
    EXPECT_TRUE(view_->downloadShelf().revealed());
}

TEST_F(PanelsTest, ASidebarBookmarkLoadsIntoTheSelectedTabOnly) {
    showPage(0, "https://a.test/first", "First page");
    state->addBookmark();
    showPage(0, "https://b.test/second", "A second page with a rather long title to cut short");
    state->addBookmark();
    state->newTab();
    ASSERT_EQ(state->bookmarks->size(), 2u);
    state->setShowSidebar(true);
    ASSERT_TRUE(waitUntil([&] { return view_->sidebar().progress() == 1.0; }, 5s));

    const std::size_t loadsBefore = viewAt(1).loadRequests.size();
    EXPECT_TRUE(press("First page"));
    ASSERT_EQ(viewAt(1).loadRequests.size(), loadsBefore + 1);
    EXPECT_EQ(viewAt(1).loadRequests.back().url, "https://a.test/first");
    EXPECT_EQ(state->tabs->size(), 2u) << "no new tab";
    EXPECT_EQ(state->selectedIndex.get(), 1) << "no change of selection";
}

TEST_F(PanelsTest, TheBackgroundFadesToANewThemeWhileTheOrbsKeepBreathing) {
    for (const bool smooth : {true, false}) {
        state->setSmoothAnimations(smooth);
        state->setTheme(smooth ? BrowserTheme::Ocean : BrowserTheme::Citrus);
        EXPECT_TRUE(view_->orbs().isChangingTheme());
        EXPECT_TRUE(waitUntil([&] { return !view_->orbs().isChangingTheme(); }, 5s));
    }
    EXPECT_TRUE(view_->orbs().isTicking());
}

TEST_F(PanelsTest, APageInFullScreenIsAllThereIsUntilItLeaves) {
    state->setShowSidebar(true);
    auto chromeShown = [&] {
        return std::vector<bool>{gtk_widget_is_visible(view_->tabStripSlot()) != 0,
                                 gtk_widget_is_visible(view_->toolbarSlot()) != 0,
                                 gtk_widget_is_visible(view_->sidebar().widget()) != 0};
    };
    GtkWidget* page = view_->webContainer().shownPage();
    ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(page); }, 5s));
    WebViewDelegate& engineSide = FakeServices::viewOf(*state->selectedTab()).delegate();

    engineSide.pageDidChangeFullscreen(true);
    EXPECT_EQ(chromeShown(), (std::vector<bool>{false, false, false}));
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(page) == 1200; }, 5s))
        << "the page fills the window: " << gtk_widget_get_width(page);

    engineSide.pageDidChangeFullscreen(false);
    EXPECT_EQ(chromeShown(), (std::vector<bool>{true, true, true}));
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(page) < 1000; }, 5s))
        << "the page is framed beside the sidebar again: " << gtk_widget_get_width(page);
}

} // namespace
} // namespace ovel
