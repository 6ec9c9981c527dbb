// Content blocking, per-site permission rules and the scripts they inject.

#include "state/BrowserState.h"

#include "web/ContentPolicies.h"
#include "web/WebEngine.h"

#include <algorithm>

namespace ovel {

void BrowserState::applyAdBlock(BrowserTab& tab) {
    tab.mutableWebView().removeAllContentRuleLists();
    if (adBlockEnabled.get() && adBlockList_) {
        tab.mutableWebView().addContentRuleList(*adBlockList_);
    }
}

void BrowserState::applyAdBlockToAllTabs() {
    auto group = operation();
    for (const auto& tab : tabs.get()) {
        applyAdBlock(*tab);
    }
    if (const auto selected = selectedTab()) {
        selected->mutableWebView().reload();
    }
}

void BrowserState::configureUserScripts(BrowserTab& tab, const std::optional<Url>& url) {
    tab.mutableWebView().removeAllUserScripts();
    const std::optional<std::string> key = url ? siteRuleKey(*url) : std::nullopt;
    if (!key) {
        return;
    }
    auto it = sitePermissionRules->find(*key);
    if (it == sitePermissionRules->end()) {
        return;
    }
    if (std::optional<std::string> source = userScriptSource(it->second)) {
        tab.mutableWebView().addUserScript(UserScript{std::move(*source)});
    }
}

void BrowserState::applyPasskeyPolicy(BrowserTab& tab) {
    configureUserScripts(tab, tab.webViewUrl());
}

std::string BrowserState::currentHost() const {
    const auto tab = selectedTab();
    const std::optional<Url> url = tab ? tab->webViewUrl() : std::nullopt;
    return url ? siteRuleKey(*url).value_or(std::string(hostlessSiteKey))
               : std::string(hostlessSiteKey);
}

void BrowserState::setCurrentSiteRule(const SitePermissionRule& rule) {
    auto group = operation();
    const std::string host = currentHost();
    sitePermissionRules.modify([&](SitePermissionRules& rules) { rules[host] = rule; });
}

SitePermissionRule BrowserState::currentSiteRule() const {
    auto it = sitePermissionRules->find(currentHost());
    return it == sitePermissionRules->end() ? SitePermissionRule{} : it->second;
}

void BrowserState::clearCurrentSiteRule() {
    auto group = operation();
    const std::string host = currentHost();
    sitePermissionRules.modify([&](SitePermissionRules& rules) { rules.erase(host); });
    if (const auto tab = selectedTab()) {
        tab->mutableWebView().reload();
    }
}

} // namespace ovel
