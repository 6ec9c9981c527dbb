#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// A page's notification as the desktop shows it; activating it brings the tab forward.
struct DesktopNotification {
    std::string id;
    std::string title;
    std::string body;
    // The tab that showed it, as the text of its id.
    std::string tabID;
    bool operator==(const DesktopNotification&) const = default;
};

// The desktop's services: where downloads go, whether a path is taken, showing a file in the
// file manager, and the notifications of pages.
class Desktop {
public:
    virtual ~Desktop() = default;
    // The user's Downloads folder, created when missing; none when it cannot be had.
    virtual std::optional<std::string> downloadsFolder() = 0;
    virtual bool fileExists(std::string_view path) const = 0;
    virtual void revealFile(std::string_view path) = 0;
    // Shows a notification, replacing any shown under the same id; withdraws one shown.
    virtual void showNotification(const DesktopNotification& notification) = 0;
    virtual void withdrawNotification(std::string_view id) = 0;
};

} // namespace ovel
