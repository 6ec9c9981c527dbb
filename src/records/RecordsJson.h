#pragma once

#include "records/Records.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// Stored blobs are compact UTF-8 JSON documents. Decoders never throw: a blob that is not JSON,
// or that misses a required member, has a member of the wrong type or an unknown enumeration
// string anywhere, is unreadable as a whole and yields nothing.

std::string encodeProfiles(const std::vector<BrowserProfile>& profiles);
std::optional<std::vector<BrowserProfile>> decodeProfiles(std::string_view blob);

std::string encodeSession(const SessionStore& session);
std::optional<SessionStore> decodeSession(std::string_view blob);

std::string encodeClosedTabs(const std::vector<TabStore>& tabs);
std::optional<std::vector<TabStore>> decodeClosedTabs(std::string_view blob);

std::string encodeBookmarks(const std::vector<BookmarkStore>& bookmarks);
std::optional<std::vector<BookmarkStore>> decodeBookmarks(std::string_view blob);

std::string encodeHistory(const std::vector<HistoryEntry>& history);
std::optional<std::vector<HistoryEntry>> decodeHistory(std::string_view blob);

std::string encodeSitePermissions(const SitePermissionRules& rules);
std::optional<SitePermissionRules> decodeSitePermissions(std::string_view blob);

std::string encodeWorkspaceSnapshots(const std::vector<WorkspaceSnapshot>& snapshots);
std::optional<std::vector<WorkspaceSnapshot>> decodeWorkspaceSnapshots(std::string_view blob);

} // namespace ovel
