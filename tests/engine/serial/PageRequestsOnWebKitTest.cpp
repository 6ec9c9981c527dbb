#include "engine/WebKitTestFixture.h"

#include <libsoup/soup.h>

#include <vector>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// Scripts run from the test count as the user's gesture, as a click does.
constexpr const char* openerBody =
    R"html(<button id="open" onclick="window.open('/target')">open</button>)html";

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
        server.serveHtml("/", titled("Opener", openerBody));
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
// next test's and the end-to-end tests' to show.
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

TEST_F(PageRequestsOnWebKit, TheNewWindowLoadsInTheViewMadeForItAndKnowsItsOpener) {
    auto& opener = openLoaded("/");
    RecordingWebViewDelegate child;
    opener.delegate.newWindowDelegate = &child;
    EXPECT_EQ(runScript(opener.webKitView(),
                        "document.getElementById('open').click(); return 'clicked';"),
              "clicked");
    ASSERT_TRUE(waitUntil([&] { return opener.delegate.newWindowView != nullptr; }));
    auto* view = static_cast<WebKitWebViewAdapter*>(opener.delegate.newWindowView.get());
    child.view = view;
    gtk_box_append(GTK_BOX(box), view->widget());
    ASSERT_TRUE(waitUntil([&] { return child.count("finish") >= 1 && !child.isLoading(); }))
        << opener.delegate.newWindowRequests.size();
    EXPECT_EQ(child.events.back(), "finish 'Target' " + server.url("/target"));
    EXPECT_EQ(runScript(view->webKitView(), "return String(window.opener !== null);"), "true");
    EXPECT_EQ(opener.view->url(), server.url("/"));
    // The view goes before its window's box: taken out first.
    gtk_box_remove(GTK_BOX(box), view->widget());
    opener.delegate.newWindowView.reset();
}

TEST_F(PageRequestsOnWebKit, ASiteAsksToSignInAndTheGivenNameAndPasswordOpenIt) {
    server.handle("/vault", [](SoupServerMessage* message, const LoopbackServer::Request& request) {
        auto auth = request.headers.find("Authorization");
        if (auth != request.headers.end() && auth->second == "Basic YW5uOnNlc2FtZQ==") {
            const std::string body = titled("Vault open");
            soup_server_message_set_status(message, 200, nullptr);
            soup_server_message_set_response(message, "text/html", SOUP_MEMORY_COPY, body.data(),
                                             body.size());
            return;
        }
        soup_message_headers_append(soup_server_message_get_response_headers(message),
                                    "WWW-Authenticate", "Basic realm=\"The Vault\"");
        soup_server_message_set_status(message, 401, nullptr);
    });
    std::vector<AuthenticationQuestion> questions;
    std::vector<AuthenticationAnswer> answers;
    engine->setAuthenticationPrompter(
        [&](const AuthenticationQuestion& question, AuthenticationAnswer answer) {
            questions.push_back(question);
            answers.push_back(std::move(answer));
        });

    // A refused question fails the load: the end-to-end tests cancel the dialog and show that.
    auto& page = openLoaded("/");
    page.view->load({server.url("/vault")});
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 1; })) << page.events();
    EXPECT_EQ(questions[0].host, "127.0.0.1");
    EXPECT_EQ(questions[0].realm, "The Vault");
    EXPECT_EQ(questions[0].webView, page.view->widget());
    answers[0](Credentials{"ann", "sesame"});
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Vault open' " + server.url("/vault"));
}

TEST_F(PageRequestsOnWebKit, ARefusedCertificateShowsTheErrorPageAndNothingOfTheSite) {
    LoopbackServer secure(LoopbackServer::Transport::Https);
    secure.serveHtml("/", titled("Secret", "SECRET BODY TEXT"));
    auto& page = openLoaded("/");
    page.view->load({secure.url("/")});
    ASSERT_TRUE(waitUntil([&] {
        return page.delegate.count("finish") >= 2 && !page.delegate.isLoading();
    })) << page.events();
    EXPECT_EQ(page.delegate.count("fail"), 1u) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Not a secure connection' " + secure.url("/"));
    EXPECT_EQ(page.view->url(), secure.url("/")) << "the address stays the site's";
    const auto text = runScript(page.webKitView(), "return document.body.innerText;");
    ASSERT_TRUE(text.has_value());
    EXPECT_NE(text->find("127.0.0.1"), std::string::npos) << *text;
    EXPECT_NE(text->find("not issued by an authority"), std::string::npos) << *text;
    EXPECT_EQ(text->find("SECRET"), std::string::npos);
    EXPECT_EQ(secure.requestCount("/"), 0) << "no request went past the handshake";
}

} // namespace
} // namespace ovel::test
