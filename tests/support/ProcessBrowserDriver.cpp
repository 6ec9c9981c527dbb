#include "support/ProcessBrowserDriver.h"

#include <gio/gio.h>

#include <cstdio>
#include <vector>

namespace ovel::test {

std::optional<std::string> ProcessBrowserDriver::run(const std::vector<std::string>& argv) const {
    std::vector<char*> args;
    for (const std::string& arg : argv) {
        args.push_back(const_cast<char*>(arg.c_str()));
    }
    args.push_back(nullptr);
    char** environment = g_get_environ();
    environment = g_environ_setenv(environment, "DBUS_SESSION_BUS_ADDRESS",
                                   browser_.busAddress().c_str(), TRUE);
    if (!browser_.display().empty()) {
        environment = g_environ_setenv(environment, "DISPLAY", browser_.display().c_str(), TRUE);
    }
    char* output = nullptr;
    int status = -1;
    const gboolean ran = g_spawn_sync(nullptr, args.data(), environment, G_SPAWN_SEARCH_PATH,
                                      nullptr, nullptr, &output, nullptr, &status, nullptr);
    g_strfreev(environment);
    std::optional<std::string> result;
    if (ran && g_spawn_check_wait_status(status, nullptr)) {
        result = output != nullptr ? output : "";
    }
    g_free(output);
    return result;
}

std::optional<std::string>
ProcessBrowserDriver::atspi(const std::vector<std::string>& arguments) const {
    std::vector<std::string> argv{OVEL_ATSPI_DRIVER, "ovel-web"};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return run(argv);
}

bool ProcessBrowserDriver::exists(const std::string& role, const std::string& name) const {
    return atspi({"exists", role, name}).has_value();
}

bool ProcessBrowserDriver::waitFor(const std::string& role, const std::string& name,
                                   std::chrono::milliseconds limit) const {
    return ProcessBrowser::waitUntil([&] { return exists(role, name); }, limit);
}

bool ProcessBrowserDriver::click(const std::string& role, const std::string& name) const {
    return atspi({"click", role, name}).has_value();
}

std::optional<ProcessBrowserDriver::Extents>
ProcessBrowserDriver::extentsNow(const std::string& role, const std::string& name) const {
    const auto printed = atspi({"extents", role, name});
    Extents area{};
    if (!printed || std::sscanf(printed->c_str(), "%d %d %d %d", &area.x, &area.y, &area.width,
                                &area.height) != 4) {
        return std::nullopt;
    }
    return area;
}

std::optional<ProcessBrowserDriver::Extents>
ProcessBrowserDriver::extents(const std::string& role, const std::string& name) const {
    // A control that was just shown, or whose neighbours just went, may still be on its way to
    // its place: a click at a position read mid-way lands beside it. Wait until two readings a
    // moment apart agree.
    auto last = extentsNow(role, name);
    for (int reading = 0; last && reading < 20; ++reading) {
        g_usleep(150'000);
        auto next = extentsNow(role, name);
        if (!next) {
            return std::nullopt;
        }
        if (next->x == last->x && next->y == last->y && next->width == last->width &&
            next->height == last->height) {
            return next;
        }
        last = next;
    }
    return last;
}

std::string ProcessBrowserDriver::dump() const {
    return atspi({"dump"}).value_or("(no tree)");
}

bool ProcessBrowserDriver::keys(const std::string& combination, const std::string& window) const {
    // Without a window manager nothing gives the window focus: xdotool does.
    if (window == "^Ovel Web$") {
        return run({"xdotool", "search", "--sync", "--limit", "1", "--name", window, "windowfocus",
                    "--sync", "key", "--clearmodifiers", combination})
            .has_value();
    }
    // A dialog may close on the key: sent to the focus rather than to the window, so that its
    // release does not go to a window that is gone (xdotool would stop half-way, keys held).
    return run({"xdotool", "search", "--sync", "--onlyvisible", "--limit", "1", "--name", window,
                "windowfocus", "--sync"})
               .has_value() &&
           run({"xdotool", "key", combination}).has_value();
}

bool ProcessBrowserDriver::type(const std::string& text) const {
    return run({"xdotool", "search", "--sync", "--limit", "1", "--name", "^Ovel Web$",
                "windowfocus", "--sync", "type", "--delay", "40", text})
        .has_value();
}

bool ProcessBrowserDriver::clickAt(int x, int y, int button) const {
    return run({"xdotool", "search", "--sync", "--limit", "1", "--name", "^Ovel Web$", "mousemove",
                "--window", "%1", std::to_string(x), std::to_string(y), "click",
                std::to_string(button)})
        .has_value();
}

bool ProcessBrowserDriver::drag(int fromX, int fromY, int toX, int toY) const {
    // A drag crosses widgets, so it moves in screen coordinates from the window's origin.
    const auto geometry = run({"xdotool", "search", "--sync", "--onlyvisible", "--limit", "1",
                               "--name", "^Ovel Web$", "getwindowgeometry", "--shell"});
    int originX = 0;
    int originY = 0;
    if (!geometry ||
        std::sscanf(geometry->c_str(), "WINDOW=%*d X=%d Y=%d", &originX, &originY) != 2) {
        return false;
    }
    auto at = [](int x, int y) {
        return std::vector<std::string>{"mousemove", std::to_string(x), std::to_string(y)};
    };
    std::vector<std::string> argv{"xdotool"};
    auto add = [&](std::vector<std::string> words) {
        argv.insert(argv.end(), words.begin(), words.end());
    };
    const int sx = originX + fromX, sy = originY + fromY, tx = originX + toX, ty = originY + toY;
    add(at(sx, sy));
    add({"mousedown", "1"});
    add(at(sx + 20, sy));
    add({"sleep", "0.3"});
    // Across in steps, as a hand moves, then a pause over the target before letting go.
    for (int step = 1; step <= 5; ++step) {
        add(at(sx + 20 + (tx - sx - 20) * step / 5, sy + (ty - sy) * step / 5));
        add({"sleep", "0.1"});
    }
    add(at(tx + 1, ty));
    add({"sleep", "0.3"});
    add({"mouseup", "1"});
    return run(argv).has_value();
}

} // namespace ovel::test
