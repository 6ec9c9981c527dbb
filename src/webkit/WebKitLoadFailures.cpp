#include "webkit/WebKitLoadFailures.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <array>
#include <string>

namespace ovel {

std::optional<LoadFailure> loadFailureFor(const GError* error, std::string_view failingUri) {
    LoadFailure failure{LoadFailureKind::Other, std::string(failingUri),
                        error != nullptr && error->message != nullptr ? error->message : ""};
    if (error == nullptr) {
        return failure;
    }
    if (g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR,
                        WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE)) {
        return std::nullopt;
    }
    if (error->domain == G_RESOLVER_ERROR ||
        g_error_matches(error, G_IO_ERROR, G_IO_ERROR_HOST_NOT_FOUND)) {
        failure.kind = LoadFailureKind::HostNotFound;
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_REFUSED)) {
        failure.kind = LoadFailureKind::ConnectionRefused;
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
        failure.kind = LoadFailureKind::TimedOut;
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_CLOSED) ||
               g_error_matches(error, G_IO_ERROR, G_IO_ERROR_PARTIAL_INPUT) ||
               g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_CONNECTED)) {
        failure.kind = LoadFailureKind::ConnectionLost;
    } else if (error->domain == G_TLS_ERROR) {
        failure.kind = LoadFailureKind::SecureConnectionFailed;
    } else if (g_error_matches(error, WEBKIT_POLICY_ERROR,
                               WEBKIT_POLICY_ERROR_CANNOT_USE_RESTRICTED_PORT)) {
        failure.kind = LoadFailureKind::PortBlocked;
    }
    return failure;
}

bool usesPortWebKitRefuses(std::string_view uri) {
    static constexpr std::array<int, 82> refused = {
        1,    7,    9,    11,   13,   15,   17,   19,   20,   21,   22,   23,   25,   37,
        42,   43,   53,   69,   77,   79,   87,   95,   101,  102,  103,  104,  109,  110,
        111,  113,  115,  117,  119,  123,  135,  137,  139,  143,  161,  179,  389,  427,
        465,  512,  513,  514,  515,  526,  530,  531,  532,  540,  548,  554,  556,  563,
        587,  601,  636,  989,  990,  993,  995,  1719, 1720, 1723, 2049, 3659, 4045, 4190,
        5060, 5061, 6000, 6566, 6665, 6666, 6667, 6668, 6669, 6679, 6697, 10080};
    GUri* parsed = g_uri_parse(std::string(uri).c_str(), G_URI_FLAGS_NONE, nullptr);
    if (parsed == nullptr) {
        return false;
    }
    const char* scheme = g_uri_get_scheme(parsed);
    const bool web =
        g_ascii_strcasecmp(scheme, "http") == 0 || g_ascii_strcasecmp(scheme, "https") == 0;
    const int port = g_uri_get_port(parsed);
    g_uri_unref(parsed);
    return web && std::binary_search(refused.begin(), refused.end(), port);
}

} // namespace ovel
