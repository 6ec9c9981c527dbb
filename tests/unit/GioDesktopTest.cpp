#include "app/GioDesktop.h"
#include "support/TestEnvironment.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <fstream>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace ovel {
namespace {

class GioDesktopTest : public ::testing::Test {
protected:
    test::TemporaryFolder folder;
    const fs::path& home = folder.path();
};

TEST_F(GioDesktopTest, DownloadsGoToTheNamedFolderElseDownloadsInHome) {
    std::ofstream(home / "file") << "in the way";
    const std::string fallback = home / "Downloads";
    const struct {
        const char* name;
        std::optional<std::string> named;
        std::string expected;
    } cases[] = {
        {"none named", std::nullopt, fallback},
        {"home itself", home.string(), fallback},
        {"home with a slash", home.string() + "/", fallback},
        {"own folder, made with its parents", home / "Incoming" / "New", home / "Incoming" / "New"},
        {"named folder cannot be made", home / "file" / "sub", fallback},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(fallback);
        const auto folder =
            GioDesktop::downloadsFolderFor(c.named ? c.named->c_str() : nullptr, home.string());
        EXPECT_EQ(folder, c.expected);
        EXPECT_TRUE(fs::is_directory(c.expected));
    }

    fs::remove_all(fallback);
    std::ofstream(fallback) << "a file where the folder should be";
    EXPECT_EQ(GioDesktop::downloadsFolderFor(nullptr, home.string()), std::nullopt);
}

TEST_F(GioDesktopTest, FileExistsForAnythingAtThePathEvenADanglingLink) {
    std::ofstream(home / "file") << "x";
    fs::create_directory(home / "folder");
    fs::create_symlink(home / "gone", home / "dangling");
    const struct {
        std::string path;
        bool exists;
    } cases[] = {
        {home / "file", true},
        {home / "folder", true},
        {home / "dangling", true},
        {home / "gone", false},
        {home / "file" / "below", false},
        {(home / "file").string() + "\0suffix"s, false},
        {"", false},
    };
    const GioDesktop desktop;
    for (const auto& c : cases) {
        EXPECT_EQ(desktop.fileExists(c.path), c.exists) << c.path;
    }
}

// A file manager on a private session bus that records what it was asked to show.
struct FakeFileManager {
    std::vector<std::string> shownUris;
    std::string startupId;
    bool called = false;

    static void onMethodCall(GDBusConnection*, const char*, const char*, const char*,
                             const char* method, GVariant* parameters,
                             GDBusMethodInvocation* invocation, gpointer self) {
        auto* manager = static_cast<FakeFileManager*>(self);
        if (std::string_view(method) == "ShowItems") {
            g_autofree const char** uris = nullptr;
            const char* startupId = nullptr;
            g_variant_get(parameters, "(^a&s&s)", &uris, &startupId);
            manager->shownUris.assign(uris, uris + g_strv_length(const_cast<char**>(uris)));
            manager->startupId = startupId;
            manager->called = true;
        }
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
};

TEST(GioDesktopReveal, AsksTheFileManagerOverDBusToShowTheFile) {
    g_autoptr(GTestDBus) privateBus = g_test_dbus_new(G_TEST_DBUS_NONE);
    g_test_dbus_up(privateBus);
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    ASSERT_NE(bus, nullptr);
    g_autoptr(GDBusNodeInfo) node = g_dbus_node_info_new_for_xml(
        "<node><interface name='org.freedesktop.FileManager1'><method name='ShowItems'>"
        "<arg type='as' direction='in'/><arg type='s' direction='in'/></method></interface></node>",
        nullptr);
    FakeFileManager manager;
    const GDBusInterfaceVTable vtable = {FakeFileManager::onMethodCall, nullptr, nullptr, {}};
    const guint object =
        g_dbus_connection_register_object(bus, "/org/freedesktop/FileManager1", node->interfaces[0],
                                          &vtable, &manager, nullptr, nullptr);
    const guint name = g_bus_own_name_on_connection(bus, "org.freedesktop.FileManager1",
                                                    G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr,
                                                    nullptr, nullptr);
    // Let the bus grant the name before anyone calls it.
    g_dbus_connection_flush_sync(bus, nullptr, nullptr);

    GioDesktop().revealFile("/tmp/Big report #2.pdf");
    test::waitUntil([&] { return manager.called; });

    // Replies on one connection arrive in order: once this round trip is back, the reveal's own
    // reply is waiting on the main context, and its handler must see it before the bus goes.
    g_autoptr(GVariant) id = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
        nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    while (g_main_context_pending(nullptr)) {
        g_main_context_iteration(nullptr, FALSE);
    }

    EXPECT_EQ(manager.shownUris, std::vector<std::string>{"file:///tmp/Big%20report%20%232.pdf"});
    EXPECT_EQ(manager.startupId, "");
    g_bus_unown_name(name);
    g_dbus_connection_unregister_object(bus, object);
    g_clear_object(&bus);
    g_test_dbus_down(privateBus);
}

} // namespace
} // namespace ovel
