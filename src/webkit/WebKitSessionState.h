#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

typedef struct _WebKitWebView WebKitWebView;

namespace ovel {

// The view's back/forward list, serialised by WebKit.
std::string serializedSessionState(WebKitWebView* view);
// Hands a serialised list back to the view; false when it is too large or WebKit cannot read it.
bool restoreSerializedSessionState(WebKitWebView* view, std::string_view state);

// The back/forward list as WebKit serialises it (webkit_web_view_session_state_serialize),
// kept to its last `maxEntries` entries around the current one. WebKit's format is a GVariant
// whose items stand on their own, so entries can be dropped from the front; a state of another
// shape is kept whole while it is small enough, and dropped otherwise.
std::optional<std::string> boundedSessionState(std::string state, std::size_t maxEntries);

} // namespace ovel
