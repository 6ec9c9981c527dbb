#pragma once

#include "web/BrowserTab.h"

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// What a search field's text is matched as: without blanks at either end, in lower case.
std::string searchKey(std::string_view query);
// Whether `text`, in lower case, contains `key` (a searchKey).
bool containsSearchKey(std::string_view text, const std::string& key);

// The host of the page the tab's web view shows; none for the start page or an address
// without a host.
std::optional<std::string> tabHost(const BrowserTab& tab);
// What a tab's second line reads: its host, or "Start Page".
std::string tabHostOrStartPage(const BrowserTab& tab);

} // namespace ovel
