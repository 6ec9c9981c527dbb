#include "webkit/WebKitLoadFailures.h"

#include <webkit/webkit.h>

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

} // namespace ovel
