#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ovel {

// The back/forward list as WebKit serialises it (webkit_web_view_session_state_serialize),
// kept to its last `maxEntries` entries around the current one. WebKit's format is a GVariant
// whose items stand on their own, so entries can be dropped from the front; a state of another
// shape is kept whole while it is small enough, and dropped otherwise.
std::optional<std::string> boundedSessionState(std::string state, std::size_t maxEntries);

} // namespace ovel
