#pragma once

#include "web/Desktop.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ovel::test {

// A desktop whose file system is a set of paths.
class FakeDesktop : public Desktop {
public:
    std::optional<std::string> downloadsFolder() override { return downloads; }
    bool fileExists(std::string_view path) const override {
        return existingFiles.count(std::string(path)) > 0;
    }
    void revealFile(std::string_view path) override { revealed.emplace_back(path); }
    void showNotification(const DesktopNotification& notification) override {
        shownNotifications.push_back(notification);
    }
    void withdrawNotification(std::string_view id) override {
        withdrawnNotifications.emplace_back(id);
    }

    std::optional<std::string> downloads = std::string("/home/user/Downloads");
    std::set<std::string> existingFiles;
    std::vector<std::string> revealed;
    std::vector<DesktopNotification> shownNotifications;
    std::vector<std::string> withdrawnNotifications;
};

} // namespace ovel::test
