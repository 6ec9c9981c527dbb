#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class WebView;
class WebViewDelegate;

// A content rule list compiled by the engine, ready to attach to web views.
class ContentRuleList {
public:
    virtual ~ContentRuleList() = default;
    virtual const std::string& identifier() const = 0;
};

// The hosts whose pages may show notifications, and those that may not; pages of any other
// host have not been answered yet.
struct NotificationPermissions {
    std::vector<std::string> allowedHosts;
    std::vector<std::string> deniedHosts;
    bool operator==(const NotificationPermissions&) const = default;
};

class WebEngine {
public:
    virtual ~WebEngine() = default;

    // A fresh web view with its own settings and content controller, page zoom 1.1. The
    // delegate must outlive the view.
    virtual std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) = 0;

    using CompletionHandler = std::function<void(std::shared_ptr<ContentRuleList>)>;
    // Compiles a JSON rule list under `identifier`. The handler may run on any thread and gets
    // none when compilation failed. Returns false, without calling the handler, when the engine
    // has no rule-list store.
    virtual bool compileContentRuleList(std::string_view identifier, std::string_view json,
                                        CompletionHandler completion) = 0;
    // The list compiled earlier under `identifier`, as compileContentRuleList hands it over;
    // none when the store has none this engine can use. False, without a call, with no store.
    virtual bool loadContentRuleList(std::string_view identifier, CompletionHandler completion) = 0;
    using IdentifiersHandler = std::function<void(std::vector<std::string>)>;
    // The identifiers of every list in the store. The handler may run on any thread; false,
    // without a call, with no store.
    virtual bool fetchContentRuleListIdentifiers(IdentifiersHandler completion) = 0;
    // Deletes a compiled list from the store; views it is attached to keep it.
    virtual void removeContentRuleList(std::string_view identifier) = 0;

    // What pages read as their notification permission, replacing what was set before.
    virtual void setNotificationPermissions(const NotificationPermissions& permissions) = 0;
};

} // namespace ovel
