#include "webkit/WebKitSessionState.h"

#include "records/Records.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <vector>

namespace ovel {

namespace {

// Version 2 of WebKitGTK's session state: a version, the list's items (title, frame state,
// whether it shows in the list) and the index of the current one.
constexpr const char* sessionStateType = "(qa(s(ssssasmayxx(ii)dm(sa(uaysxmxmds))av)u)mu)";

std::optional<std::string> keptWhole(std::string state) {
    if (state.size() > TabStore::maxSessionStateBytes) {
        return std::nullopt;
    }
    return state;
}

} // namespace

std::optional<std::string> boundedSessionState(std::string state, std::size_t maxEntries) {
    GBytes* bytes = g_bytes_new(state.data(), state.size());
    GVariant* whole = g_variant_ref_sink(
        g_variant_new_from_bytes(G_VARIANT_TYPE(sessionStateType), bytes, FALSE));
    g_bytes_unref(bytes);
    if (!g_variant_is_normal_form(whole)) {
        g_variant_unref(whole);
        return keptWhole(std::move(state));
    }
    GVariant* items = g_variant_get_child_value(whole, 1);
    const std::size_t count = g_variant_n_children(items);
    if (count <= maxEntries) {
        g_variant_unref(items);
        g_variant_unref(whole);
        return keptWhole(std::move(state));
    }
    GVariant* version = g_variant_get_child_value(whole, 0);
    GVariant* currentMaybe = g_variant_get_child_value(whole, 2);
    GVariant* currentValue = g_variant_get_maybe(currentMaybe);
    std::size_t first = count - maxEntries;
    std::optional<std::size_t> current;
    if (currentValue != nullptr) {
        current = std::min<std::size_t>(g_variant_get_uint32(currentValue), count - 1);
        // The page on show stays, with the entries after it that fit.
        first = std::min(first, *current);
        g_variant_unref(currentValue);
    }
    GVariantBuilder kept;
    g_variant_builder_init(&kept, g_variant_get_type(items));
    for (std::size_t i = first; i < first + maxEntries; ++i) {
        GVariant* item = g_variant_get_child_value(items, i);
        g_variant_builder_add_value(&kept, item);
        g_variant_unref(item);
    }
    GVariant* parts[] = {
        version, g_variant_builder_end(&kept),
        g_variant_new_maybe(G_VARIANT_TYPE_UINT32,
                            current ? g_variant_new_uint32(static_cast<guint32>(*current - first))
                                    : nullptr)};
    GVariant* trimmed = g_variant_ref_sink(g_variant_new_tuple(parts, 3));
    std::string result(static_cast<const char*>(g_variant_get_data(trimmed)),
                       g_variant_get_size(trimmed));
    g_variant_unref(trimmed);
    g_variant_unref(version);
    g_variant_unref(currentMaybe);
    g_variant_unref(items);
    g_variant_unref(whole);
    return keptWhole(std::move(result));
}

std::string serializedSessionState(WebKitWebView* view) {
    WebKitWebViewSessionState* state = webkit_web_view_get_session_state(view);
    GBytes* bytes = webkit_web_view_session_state_serialize(state);
    webkit_web_view_session_state_unref(state);
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    std::string serialised(data != nullptr ? data : "", size);
    g_bytes_unref(bytes);
    return serialised;
}

bool restoreSerializedSessionState(WebKitWebView* view, std::string_view state) {
    if (state.size() > TabStore::maxSessionStateBytes) {
        return false;
    }
    GBytes* bytes = g_bytes_new(state.data(), state.size());
    WebKitWebViewSessionState* restored = webkit_web_view_session_state_new(bytes);
    g_bytes_unref(bytes);
    if (restored == nullptr) {
        return false;
    }
    webkit_web_view_restore_session_state(view, restored);
    webkit_web_view_session_state_unref(restored);
    return true;
}

} // namespace ovel
