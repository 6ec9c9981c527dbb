// Content blocking, per-site permission rules and the scripts they inject.

#include "state/BrowserState.h"

#include "web/ContentPolicies.h"
#include "web/WebEngine.h"

#include <algorithm>

namespace ovel {

bool BrowserState::adsAllowedOn(const std::optional<Url>& page) const {
    const std::optional<std::string> key = page ? siteRuleKey(*page) : std::nullopt;
    const auto rule = key ? sitePermissionRules->find(*key) : sitePermissionRules->end();
    return rule != sitePermissionRules->end() && rule->second.allowAds;
}

void BrowserState::applyAdBlock(BrowserTab& tab, const std::optional<Url>& page) {
    const bool blocking = adBlockEnabled.get() && adBlockList_ && !adsAllowedOn(page);
    const unsigned wanted = blocking ? adBlockListGeneration_ : 0;
    const auto attached = attachedAdBlock_.find(tab.id());
    if (attached != attachedAdBlock_.end() && attached->second == wanted) {
        return;
    }
    tab.mutableWebView().removeAllContentRuleLists();
    if (blocking) {
        tab.mutableWebView().addContentRuleList(*adBlockList_);
    }
    attachedAdBlock_[tab.id()] = wanted;
    // Forget the tabs that have left the strip.
    if (attachedAdBlock_.size() > 2 * tabs->size() + 8) {
        std::erase_if(attachedAdBlock_,
                      [this](const auto& entry) { return indexOfTab(entry.first) < 0; });
    }
}

void BrowserState::applyAdBlock(BrowserTab& tab) {
    applyAdBlock(tab, tab.webViewUrl());
}

void BrowserState::attachAdBlockToAllTabs() {
    for (const auto& tab : tabs.get()) {
        applyAdBlock(*tab);
    }
}

void BrowserState::applyAdBlockToAllTabs() {
    auto group = operation();
    attachAdBlockToAllTabs();
    if (const auto selected = selectedTab()) {
        selected->mutableWebView().reload();
    }
}

void BrowserState::adBlockListChanged(std::shared_ptr<ContentRuleList> list,
                                      const AdBlockStatus& status) {
    auto group = operation();
    adBlockStatus.set(status);
    if (list) {
        // The engine applies a list to the loads that follow: pages already open are covered
        // from their next request on, without a reload.
        adBlockList_ = std::move(list);
        ++adBlockListGeneration_;
        attachAdBlockToAllTabs();
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
    const bool allowedAds = currentSiteRule().allowAds;
    sitePermissionRules.modify([&](SitePermissionRules& rules) { rules[host] = rule; });
    // The page on show loads again with or without its ads.
    if (const auto tab = selectedTab(); tab && rule.allowAds != allowedAds) {
        tab->mutableWebView().reload();
    }
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
