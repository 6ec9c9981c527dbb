#include "webkit/WebKitEngine.h"

#include "webkit/UrlFilterAlternations.h"
#include "webkit/WebKitContentRuleList.h"
#include "webkit/WebKitWebViewAdapter.h"

#include <webkit/webkit.h>

namespace ovel {

namespace {

struct PendingCompilation {
    std::string identifier;
    WebEngine::CompletionHandler completion;
    // Rewritten away from the UI thread: the published lists' rules are megabytes.
    std::string json;
    GObjectRef<WebKitUserContentFilterStore> store;
};

std::shared_ptr<ContentRuleList> compiledList(const std::string& identifier,
                                              WebKitUserContentFilter* filter) {
    if (filter == nullptr) {
        return nullptr;
    }
    return std::make_shared<WebKitContentRuleList>(identifier, filter);
}

void compilationDone(GObject* store, GAsyncResult* result, gpointer data) {
    std::unique_ptr<PendingCompilation> pending(static_cast<PendingCompilation*>(data));
    GError* error = nullptr;
    auto* filter = webkit_user_content_filter_store_save_finish(
        WEBKIT_USER_CONTENT_FILTER_STORE(store), result, &error);
    g_clear_error(&error);
    if (pending->completion) {
        pending->completion(compiledList(pending->identifier, filter));
    }
}

void expandInThread(GTask* task, gpointer, gpointer data, GCancellable*) {
    auto* pending = static_cast<PendingCompilation*>(data);
    pending->json = expandUrlFilterAlternations(pending->json);
    g_task_return_boolean(task, TRUE);
}

void expansionDone(GObject*, GAsyncResult* result, gpointer) {
    auto* pending = static_cast<PendingCompilation*>(g_task_get_task_data(G_TASK(result)));
    g_task_set_task_data(G_TASK(result), nullptr, nullptr);
    auto* bytes = g_bytes_new(pending->json.data(), pending->json.size());
    pending->json = std::string();
    // The callback runs on the main thread and needs nothing of the engine, which may be gone.
    webkit_user_content_filter_store_save(pending->store.get(), pending->identifier.c_str(), bytes,
                                          nullptr, &compilationDone, pending);
    g_bytes_unref(bytes);
}

struct PendingLoad {
    std::string identifier;
    WebEngine::CompletionHandler completion;
};

void loadDone(GObject* store, GAsyncResult* result, gpointer data) {
    std::unique_ptr<PendingLoad> pending(static_cast<PendingLoad*>(data));
    GError* error = nullptr;
    auto* filter = webkit_user_content_filter_store_load_finish(
        WEBKIT_USER_CONTENT_FILTER_STORE(store), result, &error);
    g_clear_error(&error);
    if (pending->completion) {
        pending->completion(compiledList(pending->identifier, filter));
    }
}

void identifiersFetched(GObject* store, GAsyncResult* result, gpointer data) {
    std::unique_ptr<WebEngine::IdentifiersHandler> completion(
        static_cast<WebEngine::IdentifiersHandler*>(data));
    gchar** identifiers = webkit_user_content_filter_store_fetch_identifiers_finish(
        WEBKIT_USER_CONTENT_FILTER_STORE(store), result);
    std::vector<std::string> list;
    for (gchar** identifier = identifiers; identifier != nullptr && *identifier != nullptr;
         ++identifier) {
        list.emplace_back(*identifier);
    }
    g_strfreev(identifiers);
    if (*completion) {
        (*completion)(std::move(list));
    }
}

void removalDone(GObject* store, GAsyncResult* result, gpointer) {
    GError* error = nullptr;
    webkit_user_content_filter_store_remove_finish(WEBKIT_USER_CONTENT_FILTER_STORE(store), result,
                                                   &error);
    g_clear_error(&error);
}

// A tab opens the ovel: and chrome: addresses that name its own pages before WebKit sees
// them; a page's link to any other such address reaches WebKit, which is left to fail it.
// Answering those addresses here makes that failure immediate and always reported: without a
// handler, WebKit's own refusal of a scheme it does not know has been seen to leave the load
// started and never ended.
void failUnknownInternalAddress(WebKitURISchemeRequest* request, gpointer) {
    GError* error = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "No such page");
    webkit_uri_scheme_request_finish_error(request, error);
    g_error_free(error);
}

// Web views created with a network session share the default web context, which keeps its
// handlers for the life of the process.
void registerInternalSchemesOnce() {
    static const bool registered = [] {
        WebKitWebContext* context = webkit_web_context_get_default();
        for (const char* scheme : {"ovel", "chrome"}) {
            webkit_web_context_register_uri_scheme(context, scheme, &failUnknownInternalAddress,
                                                   nullptr, nullptr);
        }
        return true;
    }();
    static_cast<void>(registered);
}

void freeOrigins(GList* list) {
    g_list_free_full(list, reinterpret_cast<GDestroyNotify>(&webkit_security_origin_unref));
}

} // namespace

WebKitEngine::WebKitEngine(const Folders& folders)
    : session_(GObjectRef<WebKitNetworkSession>::adopt(
          webkit_network_session_new(folders.websiteData.c_str(), folders.websiteCache.c_str()))) {
    // Tabs show the icons WebKit finds itself: <link rel="icon"> of any type, on any scheme and
    // port, and /favicon.ico when a page names none.
    webkit_website_data_manager_set_favicons_enabled(
        webkit_network_session_get_website_data_manager(session_.get()), TRUE);
    if (!folders.contentFilters.empty()) {
        filterStore_ = GObjectRef<WebKitUserContentFilterStore>::adopt(
            webkit_user_content_filter_store_new(folders.contentFilters.c_str()));
    }
    signals_.connect(session_.get(), "download-started", G_CALLBACK(&onDownloadStarted), this);
    registerInternalSchemesOnce();
    // Each new web process asks for the permissions already decided; without an answer its
    // pages read "default" for every site.
    signals_.connect(
        webkit_web_context_get_default(), "initialize-notification-permissions",
        [this](WebKitWebContext* context) { initializeNotificationPermissions(context); });
}

WebKitEngine::~WebKitEngine() = default;

std::unique_ptr<WebView> WebKitEngine::createWebView(WebViewDelegate& delegate) {
    return std::make_unique<WebKitWebViewAdapter>(*this, delegate);
}

bool WebKitEngine::compileContentRuleList(std::string_view identifier, std::string_view json,
                                          CompletionHandler completion) {
    if (!filterStore_) {
        return false;
    }
    auto* pending = new PendingCompilation{std::string(identifier), std::move(completion),
                                           std::string(json), filterStore_};
    GTask* task = g_task_new(nullptr, nullptr, &expansionDone, nullptr);
    g_task_set_task_data(task, pending, nullptr);
    g_task_run_in_thread(task, &expandInThread);
    g_object_unref(task);
    return true;
}

bool WebKitEngine::loadContentRuleList(std::string_view identifier, CompletionHandler completion) {
    if (!filterStore_) {
        return false;
    }
    auto* pending = new PendingLoad{std::string(identifier), std::move(completion)};
    webkit_user_content_filter_store_load(filterStore_.get(), pending->identifier.c_str(), nullptr,
                                          &loadDone, pending);
    return true;
}

bool WebKitEngine::fetchContentRuleListIdentifiers(IdentifiersHandler completion) {
    if (!filterStore_) {
        return false;
    }
    webkit_user_content_filter_store_fetch_identifiers(
        filterStore_.get(), nullptr, &identifiersFetched,
        new IdentifiersHandler(std::move(completion)));
    return true;
}

void WebKitEngine::removeContentRuleList(std::string_view identifier) {
    if (filterStore_) {
        webkit_user_content_filter_store_remove(filterStore_.get(), std::string(identifier).c_str(),
                                                nullptr, &removalDone, nullptr);
    }
}

void WebKitEngine::setNotificationPermissions(const NotificationPermissions& permissions) {
    // WebKit takes permissions only when a web process starts: pages already open keep what
    // they read, until a reload or a visit to another site starts a new process.
    notificationPermissions_ = permissions;
}

void WebKitEngine::noteOrigin(const char* uri) {
    if (uri == nullptr) {
        return;
    }
    WebKitSecurityOrigin* origin = webkit_security_origin_new_for_uri(uri);
    const char* scheme = webkit_security_origin_get_protocol(origin);
    const char* host = webkit_security_origin_get_host(origin);
    const unsigned port = webkit_security_origin_get_port(origin);
    // Default ports are always covered; only the others need remembering.
    if (scheme != nullptr && host != nullptr && port != 0) {
        visitedOrigins_.emplace(scheme, host, port);
    }
    webkit_security_origin_unref(origin);
}

void WebKitEngine::appendOrigins(GList** list, const std::string& host) const {
    for (const char* scheme : {"http", "https"}) {
        *list = g_list_prepend(*list, webkit_security_origin_new(scheme, host.c_str(), 0));
    }
    for (const auto& [scheme, originHost, port] : visitedOrigins_) {
        if (originHost == host) {
            *list = g_list_prepend(
                *list, webkit_security_origin_new(scheme.c_str(), originHost.c_str(), port));
        }
    }
}

void WebKitEngine::initializeNotificationPermissions(WebKitWebContext* context) {
    GList* allowed = nullptr;
    GList* denied = nullptr;
    for (const std::string& host : notificationPermissions_.allowedHosts) {
        appendOrigins(&allowed, host);
    }
    for (const std::string& host : notificationPermissions_.deniedHosts) {
        appendOrigins(&denied, host);
    }
    webkit_web_context_initialize_notification_permissions(context, allowed, denied);
    freeOrigins(allowed);
    freeOrigins(denied);
}

void WebKitEngine::setPermissionPrompter(PermissionPrompter prompter) {
    prompter_ = std::move(prompter);
}

void WebKitEngine::setAuthenticationPrompter(AuthenticationPrompter prompter) {
    authenticationPrompter_ = std::move(prompter);
}

void WebKitEngine::onDownloadStarted(WebKitNetworkSession*, WebKitDownload* download,
                                     WebKitEngine*) {
    // Every download of the session arrives here, whether a tab's policy asked for it or WebKit
    // started it by itself (a link with a download attribute): the tab of its web view takes it.
    auto* adapter = WebKitWebViewAdapter::forWebKitView(webkit_download_get_web_view(download));
    if (adapter == nullptr) {
        // No tab to report to or to choose a place: left alone, WebKit would save it anyway.
        webkit_download_cancel(download);
        return;
    }
    adapter->adoptDownload(download);
}

} // namespace ovel
