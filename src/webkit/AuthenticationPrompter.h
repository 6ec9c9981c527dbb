#pragma once

#include <functional>
#include <optional>
#include <string>

typedef struct _GtkWidget GtkWidget;

namespace ovel {

// A site asking the user to sign in (HTTP authentication).
struct AuthenticationQuestion {
    std::string host;
    // The site's own name for what is protected; may be empty.
    std::string realm;
    // The web view asking, to find the window to put the question in.
    GtkWidget* webView = nullptr;
};

struct Credentials {
    std::string user;
    std::string password;
};

// Called exactly once: the credentials to sign in with, or none to cancel. Dropping it
// unanswered cancels.
using AuthenticationAnswer = std::function<void(std::optional<Credentials>)>;

using AuthenticationPrompter =
    std::function<void(const AuthenticationQuestion&, AuthenticationAnswer)>;

} // namespace ovel
