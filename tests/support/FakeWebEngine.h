#pragma once

#include "support/FakeWebView.h"
#include "web/WebEngine.h"

#include <deque>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ovel::test {

class FakeContentRuleList : public ContentRuleList {
public:
    explicit FakeContentRuleList(std::string identifier) : identifier_(std::move(identifier)) {}
    const std::string& identifier() const override { return identifier_; }

private:
    std::string identifier_;
};

// Makes fake web views and keeps a compile request pending until the test completes it.
class FakeWebEngine : public WebEngine {
public:
    std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) override;
    bool compileContentRuleList(std::string_view identifier, std::string_view json,
                                CompletionHandler completion) override;
    // The store answers at once, from `storedLists`.
    bool loadContentRuleList(std::string_view identifier, CompletionHandler completion) override;
    bool fetchContentRuleListIdentifiers(IdentifiersHandler completion) override;
    void removeContentRuleList(std::string_view identifier) override;
    void setNotificationPermissions(const NotificationPermissions& permissions) override {
        notificationPermissions = permissions;
    }

    // Answers the oldest pending compilation, with a list (kept in the store) or (failed) with
    // none.
    void finishCompilation(bool succeeded);

    // Every view made so far, in creation order; a destroyed view's entry is null. A deque, so
    // the slots the views clear on destruction never move.
    std::deque<FakeWebView*> views;
    int liveViewCount() const;

    bool hasRuleListStore = true;
    // The compilation asked for last.
    std::string compiledIdentifier;
    std::string compiledJson;
    struct Compilation {
        std::string identifier;
        CompletionHandler completion;
    };
    std::deque<Compilation> pendingCompilations;
    std::set<std::string> storedLists;
    NotificationPermissions notificationPermissions;
};

} // namespace ovel::test
