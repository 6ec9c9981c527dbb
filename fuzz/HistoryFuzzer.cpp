#include "RoundTrip.h"
#include "records/RecordsJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>

namespace {

// The history as the whole document read first would give it: the history decoder reads as it
// parses, and must accept and refuse exactly what this does.
std::optional<std::vector<ovel::HistoryEntry>> readWholeDocument(std::string_view blob) {
    using nlohmann::json;
    try {
        const json document = json::parse(blob.begin(), blob.end());
        if (!document.is_array()) {
            return std::nullopt;
        }
        std::vector<ovel::HistoryEntry> history;
        for (const json& item : document) {
            if (!item.is_object() || !item.contains("id") || !item.contains("title") ||
                !item.contains("url") || !item.contains("visitedAt")) {
                return std::nullopt;
            }
            const json &id = item["id"], &title = item["title"], &url = item["url"],
                       &visitedAt = item["visitedAt"];
            if (!id.is_string() || !title.is_string() || !url.is_string() ||
                !visitedAt.is_number() || !ovel::isUuidText(id.get<std::string>())) {
                return std::nullopt;
            }
            std::string upper = id.get<std::string>();
            std::transform(upper.begin(), upper.end(), upper.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            history.push_back({upper, title.get<std::string>(), url.get<std::string>(),
                               ovel::Date{visitedAt.get<double>()}});
        }
        return history;
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ovel::fuzz::checkRoundTrip(data, size, ovel::decodeHistory, ovel::encodeHistory);
    const std::string_view blob(reinterpret_cast<const char*>(data), size);
    ovel::fuzz::check(ovel::decodeHistory(blob) == readWholeDocument(blob),
                      "the history reads as the whole document does", blob);
    return 0;
}
