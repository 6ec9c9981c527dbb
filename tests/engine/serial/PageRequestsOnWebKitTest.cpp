#include "engine/WebKitTestFixture.h"

#include <vector>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// A link over the whole page, so a click anywhere in the window is a click on it.
std::string wholePageLink(const std::string& attributes) {
    return titled("Links", "<a " + attributes +
                               " href=\"/target\" style=\"position:fixed;inset:0\">link</a>");
}

// A real click in the middle of the test window, as the user makes it: WebKit tells the button
// and the keys held only for events that come from the system. The pointer comes in from the
// window's corner, so the page just put under it sees it arrive before the press.
bool clickInWindow(const std::string& button, bool control) {
    std::vector<std::string> argv = {
        "xdotool",     "search", "--sync",    "--limit",  "1",  "--name", "^Page requests$",
        "windowfocus", "--sync", "mousemove", "--window", "%1", "10",     "10",
        "sleep",       "0.1",    "mousemove", "--window", "%1", "400",    "300",
        "sleep",       "0.1"};
    for (const std::string& step :
         control ? std::vector<std::string>{"keydown", "ctrl", "click", button, "keyup", "ctrl"}
                 : std::vector<std::string>{"click", button}) {
        argv.push_back(step);
    }
    std::vector<char*> args;
    for (auto& arg : argv) {
        args.push_back(arg.data());
    }
    args.push_back(nullptr);
    int status = -1;
    return g_spawn_sync(nullptr, args.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                        nullptr, nullptr, &status, nullptr) &&
           status == 0;
}

class PageRequestsOnWebKit : public WebKitTest {
protected:
    void SetUp() override {
        WebKitTest::SetUp();
        server.serveHtml("/target", titled("Target"));
        server.serveHtml("/plain", wholePageLink(""));
        server.serveHtml("/blank", wholePageLink("target=\"_blank\""));
        gtk_window_set_title(GTK_WINDOW(window), "Page requests");
        server.serveHtml("/auto", titled("Pushy", "<script>window.open('/target');"
                                                  "setTimeout(() => window.open('/target'), 50);"
                                                  "</script>"));
    }

    AdaptedPage& openLoaded(const std::string& path) {
        auto& page = openPage();
        page.view->load({server.url(path)});
        EXPECT_TRUE(page.waitForOutcomes(1)) << page.events();
        return page;
    }
};

// Real clicks, as only they carry the button and the keys held. window.open from a click is the
// end-to-end tests' to show.
TEST_F(PageRequestsOnWebKit, NewWindowsAndModifiedClicksBecomeTabRequests) {
    struct Case {
        const char* what;
        const char* button; // a real click with this button, else none
        bool control;
        const char* path;
        std::size_t newWindows;
        std::size_t backgroundLinks;
    };
    const std::vector<Case> cases = {
        {"a click on target=_blank", "1", false, "/blank", 1, 0},
        {"Ctrl+click", "1", true, "/plain", 0, 1},
        {"middle click", "2", false, "/plain", 0, 1},
        {"Ctrl+click on target=_blank", "1", true, "/blank", 0, 1},
        {"window.open without a gesture", nullptr, false, "/auto", 0, 0},
    };
    for (const Case& c : cases) {
        // One page at a time fills the window, under the click.
        for (const auto& earlier : pages) {
            gtk_box_remove(GTK_BOX(box), earlier->view->widget());
        }
        pages.clear();
        auto& page = openLoaded(c.path);
        // A click before the page's first frame can reach no link: wait for two frames drawn.
        EXPECT_EQ(runScript(page.webKitView(),
                            "return await new Promise(r => requestAnimationFrame("
                            "() => requestAnimationFrame(() => r('drawn'))));"),
                  "drawn")
            << c.what;
        if (c.button != nullptr) {
            EXPECT_TRUE(clickInWindow(c.button, c.control)) << c.what;
        }
        waitUntil(
            [&] {
                return !page.delegate.newWindowRequests.empty() ||
                       !page.delegate.newTabLinks.empty();
            },
            3s);
        runMainLoopFor(300ms);
        EXPECT_EQ(page.delegate.newWindowRequests.size(), c.newWindows) << c.what;
        EXPECT_EQ(page.delegate.newTabLinks.size(), c.backgroundLinks) << c.what;
        for (const auto& link : page.delegate.newTabLinks) {
            EXPECT_EQ(link, server.url("/target")) << c.what;
        }
        EXPECT_EQ(page.view->url(), server.url(c.path)) << c.what << ": the page stays";
    }
}

} // namespace
} // namespace ovel::test
