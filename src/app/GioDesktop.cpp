#include "app/GioDesktop.h"

#include <gio/gio.h>

#include <memory>
#include <sys/stat.h>

namespace ovel {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

bool ensureFolder(const std::string& folder) {
    return g_mkdir_with_parents(folder.c_str(), 0755) == 0 &&
           g_file_test(folder.c_str(), G_FILE_TEST_IS_DIR);
}

struct RevealRequest {
    std::string fileUri;
    std::string folderUri;
};

std::string uriOf(GFile* file) {
    g_autofree char* uri = g_file_get_uri(file);
    return uri;
}

void onFolderOpened(GObject*, GAsyncResult* result, gpointer) {
    g_autoptr(GError) error = nullptr;
    if (!g_app_info_launch_default_for_uri_finish(result, &error)) {
        g_debug("Could not open the folder of a download: %s", error->message);
    }
}

void openFolder(const RevealRequest& request) {
    g_app_info_launch_default_for_uri_async(request.folderUri.c_str(), nullptr, nullptr,
                                            onFolderOpened, nullptr);
}

void onItemsShown(GObject* bus, GAsyncResult* result, gpointer data) {
    std::unique_ptr<RevealRequest> request(static_cast<RevealRequest*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) reply =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);
    if (!reply) {
        openFolder(*request);
    }
}

void onSessionBus(GObject*, GAsyncResult* result, gpointer data) {
    std::unique_ptr<RevealRequest> request(static_cast<RevealRequest*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_bus_get_finish(result, &error);
    if (!bus) {
        openFolder(*request);
        return;
    }
    const char* uris[] = {request->fileUri.c_str(), nullptr};
    g_dbus_connection_call(bus, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                           "org.freedesktop.FileManager1", "ShowItems",
                           g_variant_new("(^ass)", uris, ""), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                           nullptr, onItemsShown, request.release());
}

} // namespace

std::optional<std::string> GioDesktop::downloadsFolder() {
    return downloadsFolderFor(g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD), g_get_home_dir());
}

std::optional<std::string> GioDesktop::downloadsFolderFor(const char* namedFolder,
                                                          std::string_view homeFolder) {
    const auto home = withoutTrailingSlashes(homeFolder);
    // GLib answers the home folder itself when user-dirs names no Downloads folder, or names
    // "$HOME/": saving straight into the home folder is never what the user chose.
    if (namedFolder && *namedFolder && withoutTrailingSlashes(namedFolder) != home) {
        if (std::string folder(namedFolder); ensureFolder(folder)) {
            return folder;
        }
    }
    if (home.empty()) {
        return std::nullopt;
    }
    std::string folder = std::string(home == "/" ? "" : home) + "/Downloads";
    if (!ensureFolder(folder)) {
        return std::nullopt;
    }
    return folder;
}

bool GioDesktop::fileExists(std::string_view path) const {
    if (path.empty() || path.find('\0') != std::string_view::npos) {
        return false;
    }
    struct stat info;
    return ::lstat(std::string(path).c_str(), &info) == 0;
}

void GioDesktop::revealFile(std::string_view path) {
    if (path.empty()) {
        return;
    }
    g_autoptr(GFile) file = g_file_new_for_path(std::string(path).c_str());
    g_autoptr(GFile) folder = g_file_get_parent(file);
    auto* request = new RevealRequest{uriOf(file), uriOf(folder ? folder : file)};
    g_bus_get(G_BUS_TYPE_SESSION, nullptr, onSessionBus, request);
}

void GioDesktop::showNotification(const DesktopNotification& notification) {
    GApplication* application = g_application_get_default();
    if (application == nullptr) {
        return;
    }
    // GNotification shows its texts as they are: a page's markup stays text.
    GNotification* shown = g_notification_new(notification.title.c_str());
    if (!notification.body.empty()) {
        g_notification_set_body(shown, notification.body.c_str());
    }
    const std::string action = std::string("app.") + showNotificationTabAction;
    g_notification_set_default_action_and_target(shown, action.c_str(), "s",
                                                 notification.tabID.c_str());
    g_application_send_notification(application, notification.id.c_str(), shown);
    g_object_unref(shown);
}

void GioDesktop::withdrawNotification(std::string_view id) {
    if (GApplication* application = g_application_get_default()) {
        g_application_withdraw_notification(application, std::string(id).c_str());
    }
}

} // namespace ovel
