#include "pages/CommandPaletteSheet.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"
#include "pages/SheetHost.h"
#include "pages/ThemeOrbs.h"
#include "state/BrowserState.h"

#include <algorithm>

namespace ovel {
namespace {

GtkWidget* label(const char* cssClass) {
    GtkWidget* widget = gtk_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(widget), 0);
    gtk_label_set_ellipsize(GTK_LABEL(widget), PANGO_ELLIPSIZE_END);
    gtk_widget_add_css_class(widget, cssClass);
    return widget;
}

} // namespace

CommandPaletteSheet::CommandPaletteSheet(BrowserState& state, SheetHost& host)
    : state_(state), host_(host), frame_("Command Palette", "ovel-command-palette", 760, 480) {
    GtkWidget* panel = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_widget_add_css_class(panel, "ovel-command-palette-panel");
    frame_.setContent(panel);

    GtkWidget* header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
    gtk_box_append(GTK_BOX(panel), header);
    GtkWidget* symbol = gtk_image_new_from_icon_name(iconNameForGtk("command"));
    gtk_widget_add_css_class(symbol, "ovel-sheet-accent");
    gtk_box_append(GTK_BOX(header), symbol);

    entry_ = gtk_entry_new();
    gtk_entry_set_placeholder_text(GTK_ENTRY(entry_), "Type a command, tab, or workspace");
    setAccessibleLabel(entry_, "Type a command, tab, or workspace");
    gtk_widget_set_hexpand(entry_, TRUE);
    gtk_box_append(GTK_BOX(header), entry_);
    entryChanged_ = signals_.connect(entry_, "changed", [this](GtkEditable*) { filter(); });
    signals_.connect(entry_, "activate", [this](GtkEntry*) { executePrimary(); });
    // Down and Tab lead from the field into the list; the rows then behave as buttons.
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    signals_.connect(
        keys, "key-pressed",
        [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
            const bool plain = (modifiers & gtk_accelerator_get_default_mod_mask()) == 0;
            GtkWidget* first = firstRow();
            if (!plain || first == nullptr || (key != GDK_KEY_Down && key != GDK_KEY_Tab)) {
                return FALSE;
            }
            return gtk_widget_grab_focus(first);
        });
    gtk_widget_add_controller(entry_, keys);

    GtkWidget* done = gtk_button_new_with_label("Done");
    gtk_widget_add_css_class(done, "suggested-action");
    gtk_box_append(GTK_BOX(header), done);
    signals_.connect(done, "clicked", [this](GtkButton*) { dismiss(); });

    scroller_ = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller_), GTK_POLICY_NEVER,
                                   GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scroller_), FALSE);
    gtk_widget_set_vexpand(scroller_, TRUE);
    gtk_box_append(GTK_BOX(panel), scroller_);
    list_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_widget_add_css_class(list_, "ovel-command-palette-list");
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller_), list_);

    frame_.orbs().setPalette(themeOrbPalette(state_.theme.get()));
    connections_.add(state_.theme.changed().connect(
        [this](BrowserTheme theme) { frame_.orbs().setPalette(themeOrbPalette(theme)); }));
    connections_.add(
        state_.showCommandPalette.changed().connect([this](bool show) { showFlagChanged(show); }));
    // What the list reads: the tabs, their titles and addresses, the saved workspaces.
    auto listChanged = [this] {
        if (host_.isShowing(widget())) {
            rebuild();
        }
    };
    connections_.add(state_.tabs.changed().connect([listChanged](const auto&) { listChanged(); }));
    connections_.add(state_.tabChanged.connect([listChanged](const BrowserTab&, TabFields fields) {
        if (fields.has(TabField::Title) || fields.has(TabField::Url)) {
            listChanged();
        }
    }));
    connections_.add(
        state_.workspaceSnapshots.changed().connect([listChanged](const auto&) { listChanged(); }));
    if (state_.showCommandPalette.get()) {
        showFlagChanged(true);
    }
}

CommandPaletteSheet::~CommandPaletteSheet() {
    host_.release(widget());
}

void CommandPaletteSheet::showFlagChanged(bool show) {
    if (!show) {
        host_.close(widget());
        return;
    }
    if (host_.isShowing(widget())) {
        return;
    }
    // Every opening starts from an empty query and the top of the full list.
    g_signal_handler_block(entry_, entryChanged_);
    gtk_editable_set_text(GTK_EDITABLE(entry_), "");
    g_signal_handler_unblock(entry_, entryChanged_);
    rebuild();
    gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller_)),
                             0);
    host_.present(widget(), [this] { dismiss(); });
    gtk_widget_grab_focus(entry_);
}

void CommandPaletteSheet::dismiss() {
    state_.setShowCommandPalette(false);
}

void CommandPaletteSheet::rebuild() {
    actions_ = commandPaletteActions(state_, "");
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        const CommandPaletteAction& action = actions_[i];
        Row& row = rowAt(i);
        gtk_image_set_from_icon_name(GTK_IMAGE(row.icon), iconNameForGtk(action.symbol));
        gtk_label_set_text(GTK_LABEL(row.title), action.title.c_str());
        gtk_label_set_text(GTK_LABEL(row.subtitle), action.subtitle.c_str());
        setAccessibleLabel(row.button, action.title);
    }
    for (std::size_t i = actions_.size(); i < rows_.size(); ++i) {
        gtk_widget_set_visible(rows_[i].button, FALSE);
    }
    filter();
}

void CommandPaletteSheet::filter() {
    // The matches come in the full list's order, so each is the next row with its texts; rows
    // with the same texts match alike.
    const auto matches = commandPaletteActions(state_, gtk_editable_get_text(GTK_EDITABLE(entry_)));
    auto match = matches.begin();
    firstShown_ = actions_.size();
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        const bool shown = match != matches.end() && match->title == actions_[i].title &&
                           match->subtitle == actions_[i].subtitle;
        if (shown) {
            ++match;
            firstShown_ = std::min(firstShown_, i);
        }
        gtk_widget_set_visible(rows_[i].button, shown);
    }
}

CommandPaletteSheet::Row& CommandPaletteSheet::rowAt(std::size_t index) {
    while (rows_.size() <= index) {
        Row row{};
        row.button = gtk_button_new();
        gtk_button_set_has_frame(GTK_BUTTON(row.button), FALSE);
        gtk_widget_add_css_class(row.button, "ovel-command-palette-row");
        GtkWidget* content = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
        gtk_button_set_child(GTK_BUTTON(row.button), content);
        row.icon = gtk_image_new();
        gtk_widget_set_size_request(row.icon, 20, -1);
        gtk_widget_add_css_class(row.icon, "ovel-sheet-accent");
        gtk_box_append(GTK_BOX(content), row.icon);
        GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
        gtk_widget_set_hexpand(texts, TRUE);
        gtk_box_append(GTK_BOX(content), texts);
        row.title = label("ovel-command-palette-title");
        gtk_box_append(GTK_BOX(texts), row.title);
        row.subtitle = label("ovel-command-palette-subtitle");
        gtk_box_append(GTK_BOX(texts), row.subtitle);
        gtk_box_append(GTK_BOX(list_), row.button);
        const std::size_t position = rows_.size();
        signals_.connect(row.button, "clicked", [this, position](GtkButton*) {
            if (position < actions_.size()) {
                runEntry(actions_[position]);
            }
        });
        rows_.push_back(row);
    }
    return rows_[index];
}

GtkWidget* CommandPaletteSheet::firstRow() const {
    return firstShown_ < actions_.size() ? rows_[firstShown_].button : nullptr;
}

void CommandPaletteSheet::runEntry(const CommandPaletteAction& action) {
    // A copy: running it changes the state, which rebuilds the list the entry may come from.
    const std::function<void()> run = action.run;
    run();
    dismiss();
}

void CommandPaletteSheet::executePrimary() {
    const auto actions = commandPaletteActions(state_, gtk_editable_get_text(GTK_EDITABLE(entry_)));
    if (!actions.empty()) {
        runEntry(actions.front());
    }
}

} // namespace ovel
