#include "records/RecordsJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
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

constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64Encoded(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            group = (group << 8) | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text.push_back(i <= count ? base64Alphabet[(group >> (18 - 6 * i)) & 0x3F] : '=');
        }
    }
    return text;
}

std::optional<std::string> base64Decoded(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t at = 0; at < text.size(); at += 4) {
        std::uint32_t group = 0;
        std::size_t padding = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const char c = text[at + i];
            const auto value = base64Alphabet.find(c);
            // Padding only at the very end, and never more than two.
            if (c == '=' && at + 4 == text.size() && i >= 2) {
                ++padding;
            } else if (value == std::string_view::npos || padding > 0) {
                return std::nullopt;
            }
            group = (group << 6) | (value == std::string_view::npos ? 0u : value);
        }
        for (std::size_t i = 0; i < 3 - padding; ++i) {
            bytes.push_back(static_cast<char>((group >> (16 - 8 * i)) & 0xFF));
        }
    }
    return bytes;
}

json encodeTab(const TabStore& tab) {
    json object = json::object();
    if (tab.url) {
        object["url"] = *tab.url;
    }
    object["isPinned"] = tab.isPinned;
    if (tab.sessionState) {
        object["sessionState"] = base64Encoded(*tab.sessionState);
    }
    if (tab.index) {
        object["index"] = *tab.index;
    }
    return object;
}

// The tab's history and place are extras: one that cannot be read is dropped, never the tab.
TabStore decodeTab(const json& object) {
    TabStore tab{optionalStringMember(object, "url"), boolMember(object, "isPinned")};
    auto state = object.find("sessionState");
    if (state != object.end() && state->is_string() &&
        state->get_ref<const std::string&>().size() / 4 * 3 <= TabStore::maxSessionStateBytes) {
        tab.sessionState = base64Decoded(state->get_ref<const std::string&>());
    }
    if (object.contains("index") && object["index"].is_number()) {
        tab.index = indexMember(object, "index");
    }
    return tab;
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

namespace {

// Reads a history document into its entries as the parser goes, without building the document
// first: the history is the largest collection, read at every start and every profile switch,
// and the document's objects cost more to build than the entries themselves. It reads what
// the other decoders read: an array of objects; in each, the last of equally named members
// counts, other members are passed over whatever they hold, and each entry needs an "id" that
// is a UUID, a "title" and a "url" that are strings and a "visitedAt" that is a number.
class HistoryReader final : public nlohmann::json_sax<json> {
public:
    std::vector<HistoryEntry> history;

    bool null() override { return scalar(Kind::Other); }
    bool boolean(bool) override { return scalar(Kind::Other); }
    bool number_integer(number_integer_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return number(value); }
    bool string(string_t& value) override {
        if (depth_ == entryDepth && member_ != Member::None) {
            Field& field = fields_[static_cast<std::size_t>(member_)];
            field = {Kind::String, std::move(value), 0};
            member_ = Member::None;
            return true;
        }
        return scalar(Kind::Other);
    }
    bool binary(binary_t&) override { return scalar(Kind::Other); }

    bool start_object(std::size_t) override {
        if (depth_ == 0) {
            return false; // the document is not an array
        }
        if (depth_ == arrayDepth) {
            fields_ = {};
            member_ = Member::None;
        } else {
            nested();
        }
        ++depth_;
        return true;
    }
    bool key(string_t& name) override {
        if (depth_ == entryDepth) {
            member_ = name == "id"          ? Member::Id
                      : name == "title"     ? Member::Title
                      : name == "url"       ? Member::Url
                      : name == "visitedAt" ? Member::VisitedAt
                                            : Member::None;
        }
        return true;
    }
    bool end_object() override {
        --depth_;
        if (depth_ == arrayDepth) {
            return finishEntry();
        }
        return true;
    }
    bool start_array(std::size_t) override {
        if (depth_ == arrayDepth) {
            return false; // an entry that is not an object
        }
        if (depth_ > arrayDepth) {
            nested();
        }
        ++depth_;
        return true;
    }
    bool end_array() override {
        --depth_;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

private:
    enum class Member : std::size_t { Id, Title, Url, VisitedAt, None };
    enum class Kind { Absent, String, Number, Other };
    struct Field {
        Kind kind = Kind::Absent;
        std::string text;
        double number = 0;
    };
    static constexpr int arrayDepth = 1;
    static constexpr int entryDepth = 2;

    // A value directly in an entry is its member's; one in the array must be an entry; deeper
    // ones belong to a member's object or array and are passed over.
    bool scalar(Kind kind) {
        if (depth_ == entryDepth) {
            if (member_ != Member::None) {
                fields_[static_cast<std::size_t>(member_)] = {kind, {}, 0};
            }
            member_ = Member::None;
            return true;
        }
        return depth_ > entryDepth;
    }
    bool number(double value) {
        if (depth_ == entryDepth && member_ != Member::None) {
            fields_[static_cast<std::size_t>(member_)] = {Kind::Number, {}, value};
            member_ = Member::None;
            return true;
        }
        return scalar(Kind::Other);
    }
    // An object or array as a member's value: neither a string nor a number.
    void nested() {
        if (depth_ == entryDepth && member_ != Member::None) {
            fields_[static_cast<std::size_t>(member_)] = {Kind::Other, {}, 0};
        }
        member_ = Member::None;
    }
    bool finishEntry() {
        Field& id = fields_[static_cast<std::size_t>(Member::Id)];
        Field& title = fields_[static_cast<std::size_t>(Member::Title)];
        Field& url = fields_[static_cast<std::size_t>(Member::Url)];
        const Field& visitedAt = fields_[static_cast<std::size_t>(Member::VisitedAt)];
        if (id.kind != Kind::String || title.kind != Kind::String || url.kind != Kind::String ||
            visitedAt.kind != Kind::Number) {
            return false;
        }
        history.push_back({upperUuid(std::move(id.text)), std::move(title.text),
                           std::move(url.text), Date{visitedAt.number}});
        return true;
    }

    int depth_ = 0;
    Member member_ = Member::None;
    std::array<Field, 4> fields_;
};

} // namespace

std::optional<std::vector<HistoryEntry>> decodeHistory(std::string_view blob) {
    HistoryReader reader;
    try {
        if (!json::sax_parse(blob.begin(), blob.end(), &reader)) {
            return std::nullopt;
        }
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const ShapeError&) {
        return std::nullopt;
    }
    return std::move(reader.history);
}

std::string encodeSitePermissions(const SitePermissionRules& rules) {
    json object = json::object();
    for (const auto& [host, rule] : rules) {
        object[host] = {{"camera", rawValue(rule.camera)},
                        {"microphone", rawValue(rule.microphone)},
                        {"location", rawValue(rule.location)},
                        {"notifications", rawValue(rule.notifications)}};
        if (rule.allowAds) {
            object[host]["allowAds"] = true;
        }
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
            const auto allowAds = item.find("allowAds");
            if (allowAds != item.end() && !allowAds->is_boolean()) {
                throw ShapeError{};
            }
            rules[host] = SitePermissionRule{
                settingMember(item, "camera"), settingMember(item, "microphone"),
                settingMember(item, "location"), settingMember(item, "notifications"),
                allowAds != item.end() && allowAds->get<bool>()};
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
