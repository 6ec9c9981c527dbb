#include "chrome/AnimatedOrbs.h"
#include "chrome/BrowserRootView.h"
#include "chrome/ChromeStyle.h"
#include "chrome/SlideRevealer.h"
#include "chrome/ThemeCss.h"
#include "gutil/IconNames.h"
#include "support/BrowserFixture.h"
#include "support/GtkWait.h"
#include "support/ViewFixture.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <map>
#include <string>
#include <vector>

namespace ovel {
namespace {

using namespace std::chrono_literals;
using test::runMainLoopFor;
using test::waitUntil;

// Every parse error a provider reports.
std::vector<std::string> parseErrors(GtkCssProvider* provider, const auto& load) {
    std::vector<std::string> errors;
    const gulong handler =
        g_signal_connect(provider, "parsing-error",
                         G_CALLBACK(+[](GtkCssProvider*, GtkCssSection* section,
                                        const GError* error, std::vector<std::string>* found) {
                             char* where = gtk_css_section_to_string(section);
                             found->push_back(std::string(where) + ": " + error->message);
                             g_free(where);
                         }),
                         &errors);
    load(provider);
    g_signal_handler_disconnect(provider, handler);
    return errors;
}

TEST(ChromeStyle, StyleSheetsParseAndEveryIconIsFound) {
    ChromeStyle style(gdk_display_get_default());
    GtkCssProvider* provider = gtk_css_provider_new();
    EXPECT_EQ(parseErrors(provider,
                          [](GtkCssProvider* p) {
                              gtk_css_provider_load_from_resource(
                                  p, "/org/ovel/Web/chrome/chrome.css");
                          }),
              std::vector<std::string>{});
    for (BrowserTheme theme : allThemes) {
        const std::string css = themeCss(themeColors(theme));
        EXPECT_EQ(parseErrors(provider,
                              [&css](GtkCssProvider* p) {
                                  gtk_css_provider_load_from_data(p, css.c_str(), -1);
                              }),
                  std::vector<std::string>{})
            << rawValue(theme);
    }
    g_object_unref(provider);

    // The named icons come from the Adwaita theme, or from our resources for the one it keeps
    // only among its legacy icons.
    GtkIconTheme* icons = gtk_icon_theme_get_for_display(gdk_display_get_default());
    for (const auto& [symbol, icon] : iconNames) {
        EXPECT_TRUE(gtk_icon_theme_has_icon(icons, std::string(icon).c_str()))
            << symbol << " -> " << icon;
    }
    EXPECT_EQ(iconName("no.such.symbol"), "image-missing");
}

class AnimatedOrbsTest : public ::testing::Test {
protected:
    AnimatedOrbsTest() : window_(GTK_WINDOW(gtk_window_new())) {
        gtk_window_set_default_size(window_, 600, 400);
        gtk_window_set_child(window_, orbs_.widget());
    }
    ~AnimatedOrbsTest() override {
        setAnimations(true);
        gtk_window_destroy(window_);
    }

    static void setAnimations(bool enabled) {
        g_object_set(gtk_settings_get_default(), "gtk-enable-animations", enabled, nullptr);
    }

    AnimatedOrbs orbs_;
    GtkWindow* window_;
};

TEST_F(AnimatedOrbsTest, BreathesOnlyWhileShownAndAnimationsAreAllowed) {
    orbs_.setBreathe(true);
    EXPECT_FALSE(orbs_.isTicking()) << "no clock before the window is shown";

    gtk_window_present(window_);
    ASSERT_TRUE(waitUntil([&] { return orbs_.spread() > 0.0; }, 5s));
    EXPECT_GT(orbs_.framesDrawn(), 0u);

    gtk_widget_set_visible(GTK_WIDGET(window_), FALSE);
    EXPECT_FALSE(orbs_.isTicking()) << "the clock stops with the window hidden";
    const double hiddenAt = orbs_.spread();
    gtk_widget_set_visible(GTK_WIDGET(window_), TRUE);
    ASSERT_TRUE(waitUntil([&] { return orbs_.spread() != hiddenAt; }, 5s))
        << "and goes on when it is shown again";

    setAnimations(false);
    EXPECT_FALSE(orbs_.isTicking());
    EXPECT_EQ(orbs_.spread(), 0.0) << "the orbs rest when the desktop asks for no animations";
    runMainLoopFor(200ms);
    EXPECT_EQ(orbs_.spread(), 0.0);

    setAnimations(true);
    EXPECT_TRUE(orbs_.isTicking());
    orbs_.setBreathe(false);
    EXPECT_FALSE(orbs_.isTicking());
    EXPECT_EQ(orbs_.spread(), 0.0);
}

class SlideRevealerTest : public ::testing::Test {
protected:
    SlideRevealerTest() : window_(GTK_WINDOW(gtk_window_new())), panel_(gtk_label_new("panel")) {
        gtk_widget_set_size_request(panel_, 220, 40);
        revealer_.setChild(panel_);
        GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
        gtk_box_append(GTK_BOX(row), revealer_.widget());
        gtk_box_append(GTK_BOX(row), gtk_label_new("page"));
        gtk_window_set_child(window_, row);
        gtk_window_present(window_);
    }
    ~SlideRevealerTest() override { gtk_window_destroy(window_); }

    int width() const { return gtk_widget_get_width(revealer_.widget()); }

    SlideRevealer revealer_{SlideRevealer::Edge::Leading, Spring{0.45, 0.86}};
    GtkWindow* window_;
    GtkWidget* panel_;
};

TEST_F(SlideRevealerTest, SpringsOpenThroughIntermediateWidthsAndClosesAtOnceWhenInstant) {
    ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(revealer_.widget()); }, 5s));
    EXPECT_EQ(width(), 0);
    EXPECT_FALSE(gtk_widget_get_visible(panel_)) << "a hidden panel is out of the tree";

    std::map<int, int> widthsSeen;
    revealer_.reveal(true, SlideRevealer::Motion::Smooth);
    ASSERT_TRUE(waitUntil(
        [&] {
            ++widthsSeen[width()];
            return revealer_.progress() == 1.0 && width() == 220;
        },
        5s));
    const bool sawMidway = std::any_of(widthsSeen.begin(), widthsSeen.end(), [](auto& entry) {
        return entry.first > 20 && entry.first < 200;
    });
    EXPECT_TRUE(sawMidway) << "the spring moves the panel in, it does not jump";
    EXPECT_TRUE(gtk_widget_get_visible(panel_));

    revealer_.reveal(false, SlideRevealer::Motion::Instant);
    ASSERT_TRUE(waitUntil([&] { return width() == 0; }, 1s));
    EXPECT_EQ(revealer_.progress(), 0.0);
    EXPECT_FALSE(gtk_widget_get_visible(panel_));
}

class BrowserRootViewTest : public test::ViewFixture {
protected:
    void SetUp() override { open(BrowserTheme::Midnight); }
    void TearDown() override { close(); }

    void open(BrowserTheme theme) {
        store = test::RecordingSettingsStore();
        store.setString(BrowserState::themeKey, rawValue(theme));
        launch();
        view_ = std::make_unique<BrowserRootView>(
            *state,
            [this](const BrowserTab& tab) {
                GtkWidget*& page = pages_[&tab];
                if (page == nullptr) {
                    page = GTK_WIDGET(g_object_ref_sink(gtk_label_new("page")));
                }
                return page;
            },
            nullptr);
        window_ = GTK_WINDOW(gtk_window_new());
        gtk_widget_add_css_class(GTK_WIDGET(window_), "ovel-window");
        gtk_window_set_default_size(window_, 1200, 780);
        gtk_window_set_child(window_, view_->widget());
        gtk_window_present(window_);
    }
    void close() {
        gtk_window_destroy(window_);
        view_.reset();
        for (auto& [tab, page] : pages_) {
            g_object_unref(page);
        }
        pages_.clear();
        state.reset();
    }

    std::map<const BrowserTab*, GtkWidget*> pages_;
    std::unique_ptr<BrowserRootView> view_;
    GtkWindow* window_ = nullptr;
};

TEST_F(BrowserRootViewTest, PanelsStartHiddenOrbsBreatheAndThePageSitsInItsFrame) {
    ASSERT_TRUE(waitUntil([&] { return view_->orbs().isTicking(); }, 5s))
        << "the orbs breathe once the window is shown";
    for (SlideRevealer* panel : {&view_->sidebar(), &view_->findBar(), &view_->downloadShelf()}) {
        EXPECT_FALSE(panel->revealed());
        EXPECT_EQ(panel->progress(), 0.0);
    }
    EXPECT_EQ(gtk_widget_get_parent(view_->webContainer().shownPage()),
              view_->webContainer().widget());
    EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(view_->addressEntry())),
                 state->addressText.get().c_str());
}

TEST_F(BrowserRootViewTest, AnotherTabsPageFadesInAndTheLastIsTakenOutAtOnce) {
    const WebContainer& container = view_->webContainer();
    GtkWidget* first = container.shownPage();
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(first); }, 5s));

    state->newTab();
    GtkWidget* second = container.shownPage();
    ASSERT_NE(second, first);
    EXPECT_EQ(gtk_widget_get_parent(first), nullptr) << "the page left is out of the tree";
    EXPECT_EQ(gtk_widget_get_parent(second), container.widget());
    EXPECT_TRUE(gtk_stack_get_transition_running(GTK_STACK(container.widget())))
        << "and the new page fades in over a picture of it";
    EXPECT_TRUE(waitUntil(
        [&] { return !gtk_stack_get_transition_running(GTK_STACK(container.widget())); }, 5s));

    state->closeTab(1);
    EXPECT_EQ(container.shownPage(), first) << "the same widget comes back, not a new one";
}

TEST_F(BrowserRootViewTest, APageInFullScreenIsAllThereIsUntilItLeaves) {
    for (BrowserTheme theme : {BrowserTheme::Midnight, BrowserTheme::Sunrise}) {
        close();
        open(theme);
        state->setShowSidebar(true);
        auto chromeShown = [&] {
            return std::vector<bool>{gtk_widget_is_visible(view_->tabStripSlot()) != 0,
                                     gtk_widget_is_visible(view_->toolbarSlot()) != 0,
                                     gtk_widget_is_visible(view_->sidebar().widget()) != 0};
        };
        GtkWidget* page = view_->webContainer().shownPage();
        ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(page); }, 5s));
        WebViewDelegate& engineSide = FakeServices::viewOf(*state->selectedTab()).delegate();
        const std::string name = "page-full-screen-" + std::string(rawValue(theme));

        engineSide.pageDidChangeFullscreen(true);
        EXPECT_EQ(chromeShown(), (std::vector<bool>{false, false, false}));
        EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(page) == 1200; }, 5s))
            << "the page fills the window: " << gtk_widget_get_width(page);
        saveScreenshot(GTK_WIDGET(window_), name);

        engineSide.pageDidChangeFullscreen(false);
        EXPECT_EQ(chromeShown(), (std::vector<bool>{true, true, true}));
        EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(page) < 1000; }, 5s))
            << "the page is framed beside the sidebar again: " << gtk_widget_get_width(page);
        runMainLoopFor(600ms);
        saveScreenshot(GTK_WIDGET(window_), name + "-left");
    }
}

TEST_F(BrowserRootViewTest, OpenPanelsShareTheCardWithThePage) {
    for (BrowserTheme theme : {BrowserTheme::Ocean, BrowserTheme::Sunrise}) {
        close();
        open(theme);
        GtkWidget* page = view_->webContainer().widget();
        ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_width(page) > 0; }, 5s));
        const int pageWidth = gtk_widget_get_width(page);
        const int pageHeight = gtk_widget_get_height(page);

        for (SlideRevealer* panel :
             {&view_->sidebar(), &view_->findBar(), &view_->downloadShelf()}) {
            panel->reveal(true, SlideRevealer::Motion::Instant);
        }
        ASSERT_TRUE(waitUntil(
            [&] {
                return gtk_widget_get_width(view_->sidebar().widget()) == 220 &&
                       gtk_widget_get_width(page) == pageWidth - 220;
            },
            5s))
            << "the sidebar takes 220 points from the page's width: "
            << gtk_widget_get_width(view_->sidebar().widget()) << ", page " << pageWidth << " -> "
            << gtk_widget_get_width(page);
        EXPECT_LT(gtk_widget_get_height(page), pageHeight)
            << "the find bar and the shelf take their rows from the page's height";
        test::runMainLoopFor(300ms);
        EXPECT_FALSE(
            saveScreenshot(GTK_WIDGET(window_), "root-view-panels-" + std::string(rawValue(theme)))
                .empty());
    }
}

} // namespace
} // namespace ovel
