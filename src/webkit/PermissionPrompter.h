#pragma once

#include "web/WebView.h"

#include <functional>
#include <string>
#include <variant>

typedef struct _GtkWidget GtkWidget;

namespace ovel {

// A permission request the site's rules leave to the user.
struct PermissionQuestion {
    // Lower-cased; empty when the page has no host.
    std::string host;
    std::variant<MediaCaptureType, SitePermissionKind> kind;
    // The web view asking, to find the window to put the question in.
    GtkWidget* webView = nullptr;
};

// Called exactly once with the user's answer: true allows, false denies. Dropping it unanswered
// denies.
using PermissionAnswer = std::function<void(bool allow)>;

// Puts a question to the user (for example in a modal dialog) and answers it, now or later.
using PermissionPrompter = std::function<void(const PermissionQuestion&, PermissionAnswer)>;

} // namespace ovel
