#pragma once

#include "app/GioDesktop.h"

#include <optional>
#include <string>
#include <vector>

namespace ovel::test {

// The browser's own file tests on the real file system, with a Downloads folder the test
// chooses (GLib reads the user's folders once per process, so a test cannot steer them) and
// reveals and notifications logged instead of shown.
class FolderDesktop : public GioDesktop {
public:
    std::optional<std::string> downloadsFolder() override { return downloads; }
    void revealFile(std::string_view path) override { revealed.emplace_back(path); }
    void showNotification(const DesktopNotification& notification) override {
        shownNotifications.push_back(notification);
    }
    void withdrawNotification(std::string_view id) override {
        withdrawnNotifications.emplace_back(id);
    }

    std::optional<std::string> downloads;
    std::vector<std::string> revealed;
    std::vector<DesktopNotification> shownNotifications;
    std::vector<std::string> withdrawnNotifications;
};

} // namespace ovel::test
