#include "presentation/TabSearch.h"

#include "web/Url.h"

#include <glib.h>

#include <memory>

namespace ovel {
namespace {

// Lower case as Unicode defines it, so "ÉCOLE" finds "école"; invalid UTF-8 falls back to
// ASCII-only lowering.
std::string lowercased(std::string_view text) {
    if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) {
        return toLowerAscii(text);
    }
    std::unique_ptr<char, decltype(&g_free)> lower(
        g_utf8_strdown(text.data(), static_cast<gssize>(text.size())), &g_free);
    return lower.get();
}

} // namespace

std::string searchKey(std::string_view query) {
    return lowercased(trimmed(query));
}

bool containsSearchKey(std::string_view text, const std::string& key) {
    return lowercased(text).find(key) != std::string::npos;
}

std::optional<std::string> tabHost(const BrowserTab& tab) {
    if (const std::optional<Url> url = tab.webViewUrl()) {
        return url->host();
    }
    return std::nullopt;
}

std::string tabHostOrStartPage(const BrowserTab& tab) {
    return tabHost(tab).value_or("Start Page");
}

} // namespace ovel
