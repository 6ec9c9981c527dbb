#pragma once

#include "web/Desktop.h"

namespace ovel {

// The desktop's services through GLib and GIO: the XDG Downloads folder, file tests, the file
// manager's D-Bus interface and the application's notifications.
class GioDesktop : public Desktop {
public:
    std::optional<std::string> downloadsFolder() override;
    // Anything at the path counts, a dangling symbolic link too: a name it holds is taken.
    bool fileExists(std::string_view path) const override;
    // Asks the file manager to show the file; without one, opens its folder.
    void revealFile(std::string_view path) override;
    // Through the running application; activating one runs "app.show-notification-tab" with
    // the tab's id.
    void showNotification(const DesktopNotification& notification) override;
    void withdrawNotification(std::string_view id) override;

    static constexpr const char* showNotificationTabAction = "show-notification-tab";

    // The folder user-dirs names (null for none), else "Downloads" in the home folder, created
    // when missing; none when neither can be had.
    static std::optional<std::string> downloadsFolderFor(const char* namedFolder,
                                                         std::string_view homeFolder);
};

} // namespace ovel
