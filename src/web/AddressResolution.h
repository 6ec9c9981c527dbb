#pragma once

#include "records/Records.h"
#include "web/Url.h"

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// One internal page as an address names it.
struct InternalRoute {
    std::string_view canonicalAddress;
    std::string_view title;
    // Only the start page also loads something into the web view.
    bool showsStartPage = false;
};

// The internal page that `text` names: compared whole after lower-casing it and spelling
// "chrome://" as "ovel://". No trailing slash, query or fragment is tolerated.
std::optional<InternalRoute> internalRouteFor(std::string_view text);

// The web address typed text stands for, or none when it is a search. `text` is trimmed.
std::optional<Url> webURLForTypedText(std::string_view text);

// Percent-encodes everything but the characters a URL query may hold as they are (letters,
// digits and -._~!$&'()*+,;=:@/?); a blank becomes %20.
std::string percentEncodedQuery(std::string_view query);

// The search engine's results page for `query`.
std::optional<Url> queryURL(SearchEngine engine, std::string_view query);

} // namespace ovel
