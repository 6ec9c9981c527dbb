// Content blocking, per-site permission scripts, and the downloads list.

#include "state/BrowserState.h"

#include "web/Clock.h"
#include "web/Desktop.h"
#include "web/BrowserTab.h"
#include "web/ContentPolicies.h"
#include "web/WebEngine.h"

#include <algorithm>

namespace ovel {

void BrowserState::applyAdBlock(BrowserTab& tab) {
    tab.webView().removeAllContentRuleLists();
    if (adBlockEnabled.get() && adBlockList_) {
        tab.webView().addContentRuleList(*adBlockList_);
    }
}

void BrowserState::applyAdBlockToAllTabs() {
    for (const auto& tab : tabs.get()) {
        applyAdBlock(*tab);
    }
    if (const auto selected = selectedTab()) {
        selected->webView().reload();
    }
}

void BrowserState::configureUserScripts(BrowserTab& tab, const std::optional<Url>& url) {
    tab.webView().removeAllUserScripts();
    const std::optional<std::string> key = url ? siteRuleKey(*url) : std::nullopt;
    if (!key) {
        return;
    }
    auto it = sitePermissionRules->find(*key);
    if (it == sitePermissionRules->end()) {
        return;
    }
    if (std::optional<std::string> source = userScriptSource(it->second)) {
        tab.webView().addUserScript(UserScript{std::move(*source)});
    }
}

void BrowserState::applyPasskeyPolicy(BrowserTab& tab) {
    configureUserScripts(tab, tab.webViewUrl());
}

void BrowserState::applyPasskeyPolicyToAllTabs() {
    for (const auto& tab : tabs.get()) {
        applyPasskeyPolicy(*tab);
    }
}

std::string BrowserState::currentHost() const {
    const auto tab = selectedTab();
    const std::optional<Url> url = tab ? tab->webViewUrl() : std::nullopt;
    return url ? siteRuleKey(*url).value_or(std::string(hostlessSiteKey))
               : std::string(hostlessSiteKey);
}

SitePermissionRule BrowserState::currentSiteRule() const {
    auto it = sitePermissionRules->find(currentHost());
    return it == sitePermissionRules->end() ? SitePermissionRule{} : it->second;
}

void BrowserState::clearCurrentSiteRule() {
    const std::string host = currentHost();
    sitePermissionRules.modify([&](SitePermissionRules& rules) { rules.erase(host); });
    if (const auto tab = selectedTab()) {
        tab->webView().reload();
    }
}

void BrowserState::recordDownload(const DownloadEvent& event) {
    auto it = std::find_if(downloads->begin(), downloads->end(),
                           [&](const DownloadRecord& record) { return record.id == event.id; });
    if (it != downloads->end()) {
        const auto index = static_cast<std::size_t>(it - downloads->begin());
        downloads.modify([&](auto& list) {
            DownloadRecord& record = list[index];
            record.status = event.status;
            if (event.destinationPath) {
                record.destinationPath = event.destinationPath;
            }
            record.progress = event.progress;
            if (event.sourceURL) {
                record.sourceURL = event.sourceURL;
            }
            record.fileName = event.fileName;
        });
    } else {
        downloads.modify([&](auto& list) {
            list.insert(list.begin(), DownloadRecord{event.id, event.fileName, event.sourceURL,
                                                     event.destinationPath, event.status,
                                                     event.progress, services_.clock.now()});
            if (list.size() > maxDownloads) {
                list.pop_back();
            }
        });
    }
}

void BrowserState::openDownload(const DownloadRecord& record) {
    if (record.destinationPath) {
        services_.desktop.revealFile(*record.destinationPath);
    }
}

void BrowserState::retryDownload(const DownloadRecord& record) {
    const std::optional<Url> url = record.sourceURL ? Url::parse(*record.sourceURL) : std::nullopt;
    const auto tab = selectedTab();
    if (url && tab) {
        tab->load(*url);
    }
}

namespace {

template <typename Edit>
void editDownload(Published<std::vector<DownloadRecord>>& downloads, const Uuid& id, Edit edit) {
    auto it = std::find_if(downloads->begin(), downloads->end(),
                           [&](const DownloadRecord& record) { return record.id == id; });
    if (it == downloads->end()) {
        return;
    }
    const auto index = static_cast<std::size_t>(it - downloads->begin());
    downloads.modify([&](auto& list) { edit(list[index]); });
}

} // namespace

void BrowserState::pauseDownload(const DownloadRecord& record) {
    editDownload(downloads, record.id, [](DownloadRecord& entry) {
        entry.status = DownloadStatus::Paused;
        entry.progress = std::min(entry.progress, 0.5);
    });
}

void BrowserState::resumeDownload(const DownloadRecord& record) {
    editDownload(downloads, record.id,
                 [](DownloadRecord& entry) { entry.status = DownloadStatus::Started; });
}

void BrowserState::cancelDownload(const DownloadRecord& record) {
    editDownload(downloads, record.id, [](DownloadRecord& entry) {
        entry.status = DownloadStatus::Cancelled;
        entry.progress = 0.0;
    });
    // The transfer stops too, in whichever tab started it.
    for (const auto& tab : tabs.get()) {
        if (tab->cancelDownload(record.id)) {
            break;
        }
    }
}

} // namespace ovel
