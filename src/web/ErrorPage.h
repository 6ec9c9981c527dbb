#pragma once

#include <string>
#include <string_view>

namespace ovel {

// The page shown in place of a site whose secure connection failed: it names the host and the
// problem, and offers no way on. Both texts are escaped: they come from the network.
std::string certificateErrorPageHTML(std::string_view host, std::string_view problem);

// Text safe to put into HTML as element content or a quoted attribute.
std::string escapedForHTML(std::string_view text);

} // namespace ovel
