#include "records/RecordsJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>

namespace ovel {

using nlohmann::json;

namespace {

// Thrown inside this file only, when a document does not have the shape of its records.
struct ShapeError {};

const json& member(const json& object, const char* name) {
    if (!object.is_object()) {
        throw ShapeError{};
    }
    auto it = object.find(name);
    if (it == object.end()) {
        throw ShapeError{};
    }
    return *it;
}

std::string stringMember(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_string()) {
        throw ShapeError{};
    }
    return value.get<std::string>();
}

bool boolMember(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_boolean()) {
        throw ShapeError{};
    }
    return value.get<bool>();
}

// A stored selection: any number. Whoever uses it clamps it to the tabs it selects among, so a
// fraction is cut to a whole number and anything past the int range is held at its end, rather
// than losing every tab of the record over one odd number.
int indexMember(const json& object, const char* name) {
    const json& value = member(object, name);
    if (value.is_number_unsigned()) {
        return static_cast<int>(
            std::min(value.get<std::uint64_t>(), static_cast<std::uint64_t>(INT_MAX)));
    }
    if (value.is_number_integer()) {
        return static_cast<int>(
            std::clamp<std::int64_t>(value.get<std::int64_t>(), INT_MIN, INT_MAX));
    }
    if (!value.is_number()) {
        throw ShapeError{};
    }
    return static_cast<int>(std::clamp(std::floor(value.get<double>()),
                                       static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

Date dateMember(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_number()) {
        throw ShapeError{};
    }
    return Date{value.get<double>()};
}

std::optional<std::string> optionalStringMember(const json& object, const char* name) {
    if (!object.is_object()) {
        throw ShapeError{};
    }
    auto it = object.find(name);
    if (it == object.end()) {
        return std::nullopt;
    }
    // A stored null is read like an absent member; we never write one.
    if (it->is_null()) {
        return std::nullopt;
    }
    if (!it->is_string()) {
        throw ShapeError{};
    }
    return it->get<std::string>();
}

std::string upperUuid(std::string text) {
    if (!isUuidText(text)) {
        throw ShapeError{};
    }
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

const json& arrayOf(const json& document) {
    if (!document.is_array()) {
        throw ShapeError{};
    }
    return document;
}

json encodeTab(const TabStore& tab) {
    json object = json::object();
    if (tab.url) {
        object["url"] = *tab.url;
    }
    object["isPinned"] = tab.isPinned;
    return object;
}

TabStore decodeTab(const json& object) {
    return TabStore{optionalStringMember(object, "url"), boolMember(object, "isPinned")};
}

json encodeTabs(const std::vector<TabStore>& tabs) {
    json array = json::array();
    for (const TabStore& tab : tabs) {
        array.push_back(encodeTab(tab));
    }
    return array;
}

std::vector<TabStore> decodeTabs(const json& document) {
    std::vector<TabStore> tabs;
    for (const json& item : arrayOf(document)) {
        tabs.push_back(decodeTab(item));
    }
    return tabs;
}

PermissionSetting settingMember(const json& object, const char* name) {
    auto setting = permissionSettingFromRaw(stringMember(object, name));
    if (!setting) {
        throw ShapeError{};
    }
    return *setting;
}

std::string dump(const json& document) {
    // Replace invalid UTF-8 rather than throw: a page title may carry anything.
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

template <typename Decode>
auto decodeWith(std::string_view blob, Decode&& decode) -> std::optional<decltype(decode(json{}))> {
    try {
        json document = json::parse(blob.begin(), blob.end());
        return decode(document);
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const ShapeError&) {
        return std::nullopt;
    }
}

} // namespace

std::string encodeProfiles(const std::vector<BrowserProfile>& profiles) {
    json array = json::array();
    for (const BrowserProfile& profile : profiles) {
        array.push_back({{"id", profile.id}, {"name", profile.name}});
    }
    return dump(array);
}

std::optional<std::vector<BrowserProfile>> decodeProfiles(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        std::vector<BrowserProfile> profiles;
        for (const json& item : arrayOf(document)) {
            profiles.push_back({stringMember(item, "id"), stringMember(item, "name")});
        }
        return profiles;
    });
}

std::string encodeSession(const SessionStore& session) {
    return dump({{"selectedIndex", session.selectedIndex}, {"tabs", encodeTabs(session.tabs)}});
}

std::optional<SessionStore> decodeSession(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        return SessionStore{indexMember(document, "selectedIndex"),
                            decodeTabs(member(document, "tabs"))};
    });
}

std::string encodeClosedTabs(const std::vector<TabStore>& tabs) {
    return dump(encodeTabs(tabs));
}

std::optional<std::vector<TabStore>> decodeClosedTabs(std::string_view blob) {
    return decodeWith(blob, [](const json& document) { return decodeTabs(document); });
}

std::string encodeBookmarks(const std::vector<BookmarkStore>& bookmarks) {
    json array = json::array();
    for (const BookmarkStore& bookmark : bookmarks) {
        array.push_back({{"title", bookmark.title}, {"url", bookmark.url}});
    }
    return dump(array);
}

std::optional<std::vector<BookmarkStore>> decodeBookmarks(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        std::vector<BookmarkStore> bookmarks;
        for (const json& item : arrayOf(document)) {
            bookmarks.push_back({stringMember(item, "title"), stringMember(item, "url")});
        }
        return bookmarks;
    });
}

std::string encodeHistory(const std::vector<HistoryEntry>& history) {
    json array = json::array();
    for (const HistoryEntry& entry : history) {
        array.push_back({{"id", entry.id},
                         {"title", entry.title},
                         {"url", entry.url},
                         {"visitedAt", entry.visitedAt.secondsSince2001}});
    }
    return dump(array);
}

std::optional<std::vector<HistoryEntry>> decodeHistory(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        std::vector<HistoryEntry> history;
        for (const json& item : arrayOf(document)) {
            history.push_back({upperUuid(stringMember(item, "id")), stringMember(item, "title"),
                               stringMember(item, "url"), dateMember(item, "visitedAt")});
        }
        return history;
    });
}

std::string encodeSitePermissions(const SitePermissionRules& rules) {
    json object = json::object();
    for (const auto& [host, rule] : rules) {
        object[host] = {{"camera", rawValue(rule.camera)},
                        {"microphone", rawValue(rule.microphone)},
                        {"location", rawValue(rule.location)},
                        {"notifications", rawValue(rule.notifications)}};
    }
    return dump(object);
}

std::optional<SitePermissionRules> decodeSitePermissions(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        if (!document.is_object()) {
            throw ShapeError{};
        }
        SitePermissionRules rules;
        for (const auto& [host, item] : document.items()) {
            rules[host] = SitePermissionRule{
                settingMember(item, "camera"), settingMember(item, "microphone"),
                settingMember(item, "location"), settingMember(item, "notifications")};
        }
        return rules;
    });
}

std::string encodeWorkspaceSnapshots(const std::vector<WorkspaceSnapshot>& snapshots) {
    json array = json::array();
    for (const WorkspaceSnapshot& snapshot : snapshots) {
        array.push_back({{"id", snapshot.id},
                         {"name", snapshot.name},
                         {"createdAt", snapshot.createdAt.secondsSince2001},
                         {"selectedIndex", snapshot.selectedIndex},
                         {"tabs", encodeTabs(snapshot.tabs)}});
    }
    return dump(array);
}

std::optional<std::vector<WorkspaceSnapshot>> decodeWorkspaceSnapshots(std::string_view blob) {
    return decodeWith(blob, [](const json& document) {
        std::vector<WorkspaceSnapshot> snapshots;
        for (const json& item : arrayOf(document)) {
            snapshots.push_back({stringMember(item, "id"), stringMember(item, "name"),
                                 dateMember(item, "createdAt"), indexMember(item, "selectedIndex"),
                                 decodeTabs(member(item, "tabs"))});
        }
        return snapshots;
    });
}

} // namespace ovel
