#include "chrome/KeyboardShortcutsWindow.h"

#include "chrome/BrowserCommands.h"

#include <string_view>
#include <vector>

namespace ovel {

namespace {

// GtkBuilder reads XML: every text goes in escaped.
std::string escaped(std::string_view text) {
    char* escapedText = g_markup_escape_text(text.data(), static_cast<gssize>(text.size()));
    std::string result(escapedText);
    g_free(escapedText);
    return result;
}

struct Entry {
    std::string_view title;
    std::string_view accelerators;
};

// The sections in menu order, each with its menu commands first and its other keys after.
std::vector<std::pair<std::string_view, std::vector<Entry>>> groups() {
    std::vector<std::pair<std::string_view, std::vector<Entry>>> list;
    auto groupFor = [&list](std::string_view section) -> std::vector<Entry>& {
        for (auto& [name, entries] : list) {
            if (name == section) {
                return entries;
            }
        }
        return list.emplace_back(section, std::vector<Entry>{}).second;
    };
    for (const BrowserCommand& command : browserCommands) {
        // Commands without a shortcut are only in the menu.
        if (!command.accelerator.empty()) {
            groupFor(command.section).push_back({command.title, command.accelerator});
        }
    }
    for (const KeyShortcut& shortcut : keyOnlyShortcuts) {
        groupFor(shortcut.section).push_back({shortcut.title, shortcut.accelerators});
    }
    return list;
}

GtkWindow* openWindow = nullptr;

} // namespace

std::string KeyboardShortcutsWindow::builderDefinition() {
    std::string xml = "<interface>"
                      "<object class=\"GtkShortcutsWindow\" id=\"window\">"
                      "<property name=\"title\">Keyboard Shortcuts</property>"
                      "<property name=\"modal\">true</property>"
                      "<child><object class=\"GtkShortcutsSection\">"
                      "<property name=\"section-name\">browser</property>"
                      "<property name=\"max-height\">16</property>";
    for (const auto& [section, entries] : groups()) {
        xml += "<child><object class=\"GtkShortcutsGroup\"><property name=\"title\">" +
               escaped(section) + "</property>";
        for (const Entry& entry : entries) {
            xml += "<child><object class=\"GtkShortcutsShortcut\">"
                   "<property name=\"title\">" +
                   escaped(entry.title) +
                   "</property>"
                   "<property name=\"accelerator\">" +
                   escaped(entry.accelerators) + "</property></object></child>";
        }
        xml += "</object></child>";
    }
    xml += "</object></child></object></interface>";
    return xml;
}

GtkWindow* KeyboardShortcutsWindow::create() {
    const std::string xml = builderDefinition();
    GtkBuilder* builder = gtk_builder_new_from_string(xml.c_str(), static_cast<gssize>(xml.size()));
    // GTK keeps its toplevels alive: the window outlives the builder.
    GtkWindow* window = GTK_WINDOW(gtk_builder_get_object(builder, "window"));
    g_object_unref(builder);
    return window;
}

void KeyboardShortcutsWindow::present(GtkApplication* application, GtkWindow* parent) {
    if (openWindow == nullptr) {
        openWindow = create();
        gtk_window_set_transient_for(openWindow, parent);
        gtk_window_set_application(openWindow, application);
        g_object_add_weak_pointer(G_OBJECT(openWindow), reinterpret_cast<gpointer*>(&openWindow));
    }
    gtk_window_present(openWindow);
}

} // namespace ovel
