// Drives a running program through its accessibility tree, as a screen reader would see it.
// One command per run, so each run talks to whatever session bus its environment names:
//   atspi_driver APP dump
//   atspi_driver APP exists ROLE NAME      exit 0 when a showing element matches
//   atspi_driver APP click ROLE NAME       runs the element's first action ("click")
//   atspi_driver APP extents ROLE NAME     prints x y width height, window-relative
// ROLE is AT-SPI's role name ("push button", "toggle button", "menu item", "text", "label");
// NAME is the accessible name, matched exactly. Only elements inside visible parents count.
#include <atspi/atspi.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

struct Query {
    std::string role;
    std::string name;
    // Only elements that can be clicked.
    bool actionable = false;
};

bool hasAction(AtspiAccessible* node) {
    AtspiAction* action = atspi_accessible_get_action_iface(node);
    const bool has = action != nullptr && atspi_action_get_n_actions(action, nullptr) > 0;
    if (action != nullptr) {
        g_object_unref(action);
    }
    return has;
}

std::string takeString(char* value) {
    std::string result = value != nullptr ? value : "";
    g_free(value);
    return result;
}

// GTK 4.8 marks each widget visible or not, but not whether its parents are; the search only
// descends through visible elements, so together that is "showing".
bool isShowing(AtspiAccessible* node) {
    AtspiStateSet* states = atspi_accessible_get_state_set(node);
    const bool showing = states != nullptr && atspi_state_set_contains(states, ATSPI_STATE_VISIBLE);
    if (states != nullptr) {
        g_object_unref(states);
    }
    return showing;
}

// Depth first; the caller owns the returned reference.
AtspiAccessible* find(AtspiAccessible* node, const Query& query, int depth) {
    if (depth > 60) {
        return nullptr;
    }
    // The application itself is never marked visible; its windows are.
    if (depth > 0 && !isShowing(node)) {
        return nullptr;
    }
    if (takeString(atspi_accessible_get_role_name(node, nullptr)) == query.role &&
        takeString(atspi_accessible_get_name(node, nullptr)) == query.name &&
        (!query.actionable || hasAction(node))) {
        return ATSPI_ACCESSIBLE(g_object_ref(node));
    }
    const int count = atspi_accessible_get_child_count(node, nullptr);
    for (int i = 0; i < count; ++i) {
        AtspiAccessible* child = atspi_accessible_get_child_at_index(node, i, nullptr);
        if (child == nullptr) {
            continue;
        }
        AtspiAccessible* found = find(child, query, depth + 1);
        g_object_unref(child);
        if (found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

void dump(AtspiAccessible* node, int depth) {
    std::printf("%*s[%s] \"%s\"%s\n", depth * 2, "",
                takeString(atspi_accessible_get_role_name(node, nullptr)).c_str(),
                takeString(atspi_accessible_get_name(node, nullptr)).c_str(),
                isShowing(node) ? "" : " (hidden)");
    const int count = atspi_accessible_get_child_count(node, nullptr);
    for (int i = 0; i < count && depth < 60; ++i) {
        if (AtspiAccessible* child = atspi_accessible_get_child_at_index(node, i, nullptr)) {
            dump(child, depth + 1);
            g_object_unref(child);
        }
    }
}

AtspiAccessible* application(const std::string& name) {
    AtspiAccessible* desktop = atspi_get_desktop(0);
    const int count = atspi_accessible_get_child_count(desktop, nullptr);
    AtspiAccessible* found = nullptr;
    for (int i = 0; i < count && found == nullptr; ++i) {
        AtspiAccessible* app = atspi_accessible_get_child_at_index(desktop, i, nullptr);
        if (app != nullptr && takeString(atspi_accessible_get_name(app, nullptr)) == name) {
            found = app;
        } else if (app != nullptr) {
            g_object_unref(app);
        }
    }
    g_object_unref(desktop);
    return found;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: atspi_driver APP COMMAND [ROLE NAME]\n");
        return 2;
    }
    if (atspi_init() > 1) {
        std::fprintf(stderr, "atspi_driver: no accessibility bus\n");
        return 3;
    }
    AtspiAccessible* app = application(argv[1]);
    if (app == nullptr) {
        return 1;
    }
    const std::string command = argv[2];
    if (command == "dump") {
        dump(app, 0);
        return 0;
    }
    if (argc < 5) {
        return 2;
    }
    AtspiAccessible* element = find(app, Query{argv[3], argv[4], command == "click"}, 0);
    g_object_unref(app);
    if (element == nullptr) {
        return 1;
    }
    int status = 0;
    if (command == "click") {
        AtspiAction* action = atspi_accessible_get_action_iface(element);
        status = action != nullptr && atspi_action_do_action(action, 0, nullptr) ? 0 : 1;
        if (action != nullptr) {
            g_object_unref(action);
        }
    } else if (command == "extents") {
        AtspiComponent* component = atspi_accessible_get_component_iface(element);
        AtspiRect* rect =
            component != nullptr
                ? atspi_component_get_extents(component, ATSPI_COORD_TYPE_WINDOW, nullptr)
                : nullptr;
        if (rect != nullptr) {
            std::printf("%d %d %d %d\n", rect->x, rect->y, rect->width, rect->height);
            g_free(rect);
        } else {
            status = 1;
        }
        if (component != nullptr) {
            g_object_unref(component);
        }
    } else if (command != "exists") {
        status = 2;
    }
    g_object_unref(element);
    return status;
}
