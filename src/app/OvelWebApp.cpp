#include "app/OvelWebApp.h"

#include "app/AppPaths.h"
#include "app/GioDesktop.h"
#include "app/GlibMainQueue.h"
#include "app/GlibUuidSource.h"
#include "app/SqliteSettingsStore.h"
#include "app/StartupProbe.h"
#include "app/SystemClock.h"
#include "app/ThreadedFilterListSource.h"
#include "chrome/BrowserCommands.h"
#include "chrome/BrowserWindow.h"
#include "chrome/PermissionPromptDialog.h"
#include "chrome/SignInDialog.h"
#include "pages/CommandPaletteSheet.h"
#include "pages/OvelAboutPageNative.h"
#include "pages/OvelDownloadsPageNative.h"
#include "pages/OvelHistoryPageNative.h"
#include "pages/OvelSettingsPageNative.h"
#include "pages/OvelWorkspacesPageNative.h"
#include "pages/SheetHost.h"
#include "pages/TabOverviewSheet.h"
#include "state/BrowserState.h"
#include "web/BrowserTab.h"
#include "webkit/WebKitEngine.h"
#include "webkit/WebKitWebViewAdapter.h"

#include <glib-unix.h>

#include <csignal>

namespace ovel {

namespace {

// What the question asks for, completing "HOST wants to …".
std::string_view requestText(const std::variant<MediaCaptureType, SitePermissionKind>& kind) {
    if (const auto* media = std::get_if<MediaCaptureType>(&kind)) {
        switch (*media) {
        case MediaCaptureType::Camera:
            return "use your camera";
        case MediaCaptureType::Microphone:
            return "use your microphone";
        case MediaCaptureType::CameraAndMicrophone:
            return "use your camera and microphone";
        case MediaCaptureType::Other:
            return "capture your screen or devices";
        }
    }
    switch (std::get<SitePermissionKind>(kind)) {
    case SitePermissionKind::Location:
        return "know your location";
    case SitePermissionKind::Notifications:
        return "show notifications";
    }
    return "use a device";
}

// The native page for an internal address, made for the page area.
template <typename Page> WebContainer::PageView makePage(BrowserState& state) {
    auto page = std::make_shared<Page>(state);
    GtkWidget* widget = page->widget();
    return {widget, std::move(page)};
}

WebContainer::PageView makeInternalPage(BrowserState& state, InternalPage route) {
    switch (route) {
    case InternalPage::Settings:
        return makePage<OvelSettingsPageNative>(state);
    case InternalPage::Downloads:
        return makePage<OvelDownloadsPageNative>(state);
    case InternalPage::History:
        return makePage<OvelHistoryPageNative>(state);
    case InternalPage::Workspaces:
        return makePage<OvelWorkspacesPageNative>(state);
    case InternalPage::About:
        return makePage<OvelAboutPageNative>(state);
    }
    return {};
}

void askUser(const PermissionQuestion& question, PermissionAnswer answer) {
    GtkRoot* root = question.webView != nullptr ? gtk_widget_get_root(question.webView) : nullptr;
    PermissionPromptDialog::present(GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr, question.host,
                                    requestText(question.kind), std::move(answer));
}

// A site's sign-in question, over the window of the tab that asks.
void askToSignIn(const AuthenticationQuestion& question, AuthenticationAnswer answer) {
    GtkRoot* root = question.webView != nullptr ? gtk_widget_get_root(question.webView) : nullptr;
    SignInDialog::present(
        GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr, question.host, question.realm,
        [answer = std::move(answer)](std::optional<std::pair<std::string, std::string>> given) {
            if (given) {
                answer(Credentials{std::move(given->first), std::move(given->second)});
            } else {
                answer(std::nullopt);
            }
        });
}

} // namespace

// Declared in the order they must be built; destroyed in reverse, so the state and its tabs
// go before the services they use.
struct OvelWebApp::Parts {
    AppPaths paths = AppPaths::forCurrentUser();
    std::unique_ptr<SqliteSettingsStore> settings = SqliteSettingsStore::open(paths.settingsFile);
    WebKitEngine engine{WebKitEngine::Folders{paths.websiteDataFolder, paths.websiteCacheFolder,
                                              paths.contentFiltersFolder}};
    GlibMainQueue mainQueue;
    SystemClock clock;
    GlibUuidSource uuids;
    GioDesktop desktop;
    ThreadedFilterListSource filterLists{ThreadedFilterListSource::configuredFolders()};
    std::shared_ptr<BrowserState> state;
    std::unique_ptr<BrowserCommands> commands;
    std::unique_ptr<BrowserWindow> window;
    // The two sheets, laid over the window's card; destroyed before the layer they are on.
    std::unique_ptr<SheetHost> sheets;
    std::unique_ptr<CommandPaletteSheet> palette;
    std::unique_ptr<TabOverviewSheet> overview;
    GSignalConnections windowSignals;
    std::unique_ptr<StartupProbe> startupProbe;

    void closeWindow() {
        palette.reset();
        overview.reset();
        sheets.reset();
        window.reset();
    }
};

OvelWebApp::OvelWebApp()
    : application_(GObjectRef<GtkApplication>::adopt(
          gtk_application_new(applicationID, G_APPLICATION_HANDLES_OPEN))) {
    signals_.connect(application_.get(), "startup", [this](GApplication*) { startup(); });
    signals_.connect(application_.get(), "activate", [this](GApplication*) { activate(); });
    // Links and files given on the command line, to this process or to a second one that hands
    // them over to the running browser: each opens in a new tab, after the restored session.
    signals_.connect(application_.get(), "open",
                     [this](GApplication*, GFile** files, int count, const char*) {
                         for (int i = 0; i < count; ++i) {
                             g_autofree char* uri = g_file_get_uri(files[i]);
                             parts_->state->openInNewTab(uri);
                         }
                         activate();
                     });
    signals_.connect(application_.get(), "shutdown", [this](GApplication*) { shutdown(); });
}

OvelWebApp::~OvelWebApp() {
    signals_.disconnectAll();
    parts_.reset();
}

int OvelWebApp::run(int argc, char** argv) {
    return g_application_run(G_APPLICATION(application_.get()), argc, argv);
}

void OvelWebApp::startup() {
    // "app.quit" (Ctrl+Q, and the session asking over D-Bus) and SIGTERM/SIGINT end the run
    // through the main loop, so every window and web view is torn down in order.
    GtkApplication* application = application_.get();
    auto quit = GObjectRef<GSimpleAction>::adopt(g_simple_action_new("quit", nullptr));
    signals_.connect(quit.get(), "activate", [application](GSimpleAction*, GVariant*) {
        g_application_quit(G_APPLICATION(application));
    });
    g_action_map_add_action(G_ACTION_MAP(application), G_ACTION(quit.get()));
    const char* quitAccels[] = {"<Control>q", nullptr};
    gtk_application_set_accels_for_action(application, "app.quit", quitAccels);
    for (int signalNumber : {SIGTERM, SIGINT}) {
        g_unix_signal_add(
            signalNumber,
            +[](gpointer application) -> gboolean {
                g_application_quit(G_APPLICATION(application));
                return G_SOURCE_CONTINUE;
            },
            application);
    }

    parts_ = std::make_unique<Parts>();
    parts_->engine.setPermissionPrompter(askUser);
    parts_->engine.setAuthenticationPrompter(askToSignIn);
    parts_->state = BrowserState::create(
        BrowserServices{*parts_->settings, parts_->engine, parts_->mainQueue, parts_->clock,
                        parts_->uuids, parts_->desktop, &parts_->filterLists});
    parts_->commands = std::make_unique<BrowserCommands>(application_.get(), *parts_->state);

    // A page's desktop notification, activated: its tab comes forward in the window.
    auto showTab = GObjectRef<GSimpleAction>::adopt(
        g_simple_action_new(GioDesktop::showNotificationTabAction, G_VARIANT_TYPE_STRING));
    signals_.connect(showTab.get(), "activate", [this](GSimpleAction*, GVariant* tabID) {
        BrowserState& state = *parts_->state;
        const int index = state.indexOfTab(g_variant_get_string(tabID, nullptr));
        if (index >= 0) {
            state.selectTab(index);
        }
        activate();
    });
    g_action_map_add_action(G_ACTION_MAP(application), G_ACTION(showTab.get()));
}

void OvelWebApp::activate() {
    if (parts_->window) {
        gtk_window_present(parts_->window->window());
        return;
    }
    BrowserState& state = *parts_->state;
    parts_->window = std::make_unique<BrowserWindow>(
        application_.get(), state,
        [](const BrowserTab& tab) { return WebKitWebViewAdapter::widgetOf(tab.webView()); },
        [&state](InternalPage route) { return makeInternalPage(state, route); },
        parts_->commands->menu());
    BrowserRootView& root = parts_->window->rootView();
    parts_->sheets = std::make_unique<SheetHost>(root.card());
    gtk_overlay_add_overlay(root.overlay(), parts_->sheets->widget());
    parts_->palette = std::make_unique<CommandPaletteSheet>(state, *parts_->sheets);
    parts_->overview = std::make_unique<TabOverviewSheet>(state, *parts_->sheets);
    Parts* parts = parts_.get();
    parts_->windowSignals.connect(parts_->window->window(), "destroy",
                                  [parts](GtkWidget*) { parts->closeWindow(); });
    parts_->startupProbe = StartupProbe::fromEnvironment(*parts_->state, parts_->window->window(),
                                                         G_APPLICATION(application_.get()));
    gtk_window_present(parts_->window->window());
}

void OvelWebApp::shutdown() {
    // Everything was saved when it changed; the last saves may still be on their way to the
    // disk, and the run ends only once they are there.
    if (parts_) {
        parts_->startupProbe.reset();
        parts_->closeWindow();
        parts_->commands.reset();
        parts_->state.reset();
        parts_->settings->flush();
    }
}

} // namespace ovel
