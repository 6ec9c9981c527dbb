// Saving the session, the closed tabs, the profile list and each collection under its key.

#include "state/BrowserState.h"

#include "records/RecordsJson.h"
#include "records/SettingsStore.h"
#include "web/UuidSource.h"

#include <algorithm>

namespace ovel {

void BrowserState::persistSession(const std::optional<std::string>& profileID) {
    SessionStore session;
    const int last = std::max(static_cast<int>(tabs->size()) - 1, 0);
    session.selectedIndex = std::clamp(selectedIndex.get(), 0, last);
    for (const auto& tab : tabs.get()) {
        session.tabs.push_back(tab->storedRecord());
    }
    saveBlob(sessionKeyBase, profileID.value_or(activeProfileID.get()),
             [session = std::move(session)] { return encodeSession(session); });
}

void BrowserState::persistClosedTabs(const std::optional<std::string>& profileID) {
    saveBlob(closedTabsKeyBase, profileID.value_or(activeProfileID.get()),
             [tabs = closedTabs_] { return encodeClosedTabs(tabs); });
}

void BrowserState::persistProfiles() {
    services_.settings.setData(profilesKey, encodeProfiles(profiles.get()));
}

void BrowserState::saveBookmarks(const std::string& profileID, const std::vector<Bookmark>& list) {
    std::vector<BookmarkStore> stored;
    stored.reserve(list.size());
    for (const Bookmark& bookmark : list) {
        stored.push_back({bookmark.title, bookmark.url});
    }
    saveBlob(bookmarksKeyBase, profileID,
             [stored = std::move(stored)] { return encodeBookmarks(stored); });
}

void BrowserState::saveHistory(const std::string& profileID,
                               const std::vector<HistoryEntry>& list) {
    saveBlob(historyKeyBase, profileID, [list] { return encodeHistory(list); });
}

void BrowserState::saveSitePermissions(const std::string& profileID,
                                       const SitePermissionRules& rules) {
    saveBlob(sitePermissionsKeyBase, profileID, [rules] { return encodeSitePermissions(rules); });
}

void BrowserState::saveWorkspaceSnapshots(const std::string& profileID,
                                          const std::vector<WorkspaceSnapshot>& list) {
    saveBlob(workspaceSnapshotsKeyBase, profileID,
             [list] { return encodeWorkspaceSnapshots(list); });
}

void BrowserState::saveBlob(std::string_view base, const std::string& profileID,
                            std::function<std::string()> encode) {
    // The store may encode on its own thread: the UI thread only copies the records.
    services_.settings.setDataFrom(profileKey(base, profileID), std::move(encode));
}

std::vector<Bookmark> BrowserState::loadBookmarks(const std::string& profileID) {
    std::vector<Bookmark> loaded;
    auto blob = services_.settings.data(profileKey(bookmarksKeyBase, profileID));
    if (!blob) {
        return loaded;
    }
    for (const BookmarkStore& stored :
         decodeBookmarks(*blob).value_or(std::vector<BookmarkStore>{})) {
        // Ids are not stored: every load gives fresh ones.
        if (auto url = Url::parse(stored.url)) {
            loaded.push_back({services_.uuids.makeUuid(), stored.title, url->absoluteString()});
        }
    }
    return loaded;
}

} // namespace ovel
