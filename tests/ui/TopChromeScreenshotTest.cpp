#include "chrome/DragTabPreview.h"
#include "chrome/TabBar.h"
#include "chrome/ToolbarView.h"
#include "support/ViewFixture.h"

namespace ovel::test {
namespace {

const char* backdropCss = "window { background: black; }"
                          ".test-backdrop { background-image: linear-gradient(135deg, "
                          "@ovel_gradient_start, @ovel_gradient_end); }";

const char* titles[] = {"Ovel Web",
                        "GNOME Web — Browsing the web with GNOME",
                        "Debian -- The Universal Operating System",
                        "WebKitGTK",
                        "libadwaita: Adaptive GTK widgets",
                        "A very long page title that "
                        "goes on well past the tab's width"};

class TopChromeScreenshots : public ViewFixture {
protected:
    // Tabs with titles and round coloured favicons; the first `pinned` are pinned.
    void openTabs(int count, int pinned) {
        launchFresh();
        for (int i = 0; i < count; ++i) {
            if (i > 0) {
                state->newTab();
            }
            showPage(i, "https://t" + std::to_string(i) + ".test/", titles[i % std::size(titles)]);
            viewAt(i).simulateFavicon(icon(i));
        }
        mainQueue.drain();
        for (int i = 0; i < pinned; ++i) {
            state->togglePinTab(i);
        }
    }
    static FaviconImage icon(int seed) {
        FaviconImage image{16, 16, {}};
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                const bool inside = (x - 7.5) * (x - 7.5) + (y - 7.5) * (y - 7.5) < 60;
                image.rgba.insert(image.rgba.end(), {std::uint8_t(60 + seed * 70 % 196),
                                                     std::uint8_t(200 - seed * 40 % 160),
                                                     std::uint8_t(120 + seed * 30 % 136),
                                                     std::uint8_t(inside ? 255 : 0)});
            }
        }
        return image;
    }
};

TEST_F(TopChromeScreenshots, StripAndToolbarWithOneSixAndThirtyTabs) {
    loadCss("tab-strip-toolbar.css");
    struct Case {
        int tabs;
        int pinned;
        int selected;
    };
    for (const Case c : {Case{1, 0, 0}, Case{6, 2, 3}, Case{30, 3, 29}}) {
        openTabs(c.tabs, c.pinned);
        state->selectTab(c.selected);
        if (c.tabs == 6) {
            // A tab dragged over its neighbour, to show the indicator.
            state->beginTabDrag(state->tabs.get()[5]->id());
            state->dropUpdated(state->tabs.get()[2]->id(), 10);
        }
        {
            TabBar bar(*state);
            ToolbarView toolbar(*state);
            GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
            gtk_widget_add_css_class(box, "test-backdrop");
            gtk_widget_set_valign(box, GTK_ALIGN_START);
            gtk_box_append(GTK_BOX(box), bar.widget());
            gtk_box_append(GTK_BOX(box), toolbar.widget());
            // What follows the pointer when the first tab is dragged.
            DragTabPreview preview(*state->tabs.get()[0]);
            gtk_widget_set_halign(preview.widget(), GTK_ALIGN_START);
            gtk_box_append(GTK_BOX(box), preview.widget());
            for (const TestTheme& theme : testThemes) {
                useTheme(theme.css, backdropCss);
                if (window_ == nullptr) {
                    show(box, 1200, 180);
                }
                runMainLoopFor(std::chrono::milliseconds(500));
                const std::string name = "tab-strip-" + std::to_string(c.tabs) + "-" + theme.name;
                EXPECT_FALSE(saveScreenshot(box, name).empty()) << name;
            }
            gtk_window_destroy(window_);
            window_ = nullptr;
            runMainLoopFor(std::chrono::milliseconds(0));
        }
    }
}

} // namespace
} // namespace ovel::test
