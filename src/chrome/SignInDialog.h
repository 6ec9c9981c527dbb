#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ovel {

// Asks for a user name and a password for a site: "Cancel" or "Sign In". The answer runs
// exactly once, with the two texts, or with none when cancelled or closed.
class SignInDialog {
public:
    using Answer = std::function<void(std::optional<std::pair<std::string, std::string>>)>;
    static GtkWindow* present(GtkWindow* parent, std::string_view host, std::string_view realm,
                              Answer answer);
};

} // namespace ovel
