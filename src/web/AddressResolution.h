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

// What typed text asks to load.
struct TypedAddress {
    Url url;
    // Typed without a scheme and tried over https: the same address over plain http, for when
    // no secure connection can be made.
    std::optional<Url> httpFallback;
};

// The web address typed text stands for, or none when it is a search. `text` is trimmed.
// Machines of one's own go over http: localhost, IP literals (IPv6 with or without brackets),
// and a one-word host given a port or a path ("intranet:8080", "wiki/start"); a lone word is a
// search. Any other text without a blank and with a dot tries https first.
std::optional<TypedAddress> typedAddressFor(std::string_view text);
std::optional<Url> webURLForTypedText(std::string_view text);
// The host, with ":port" when the address names one: which server on a machine it reaches.
std::string hostAndPort(const Url& url);

// Percent-encodes everything but the characters a URL query may hold as they are (letters,
// digits and -._~!$&'()*+,;=:@/?); a blank becomes %20.
std::string percentEncodedQuery(std::string_view query);

// The search engine's results page for `query`.
std::optional<Url> queryURL(SearchEngine engine, std::string_view query);

} // namespace ovel
