#include "pages/OvelInternalPageShell.h"

#include "gutil/IconNames.h"
#include "pages/ThemeOrbs.h"
#include "state/BrowserState.h"

namespace ovel {

namespace {

constexpr OrbLayout shellOrbs{{{
                                  {340, 34, 0.52, 120, -40, 220, -120},
                                  {300, 36, 0.5, -80, 40, -180, 140},
                              }},
                              7};
// Close to the CSS transitions of the theme's colours around the orbs.
constexpr Spring themeSpring{0.4, 0.86};

GtkWidget* headerRow(const std::string& title) {
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
    gtk_widget_add_css_class(row, "ovel-page-header");
    GtkWidget* globe = gtk_image_new_from_icon_name(iconNameForGtk("globe"));
    gtk_widget_add_css_class(globe, "ovel-page-globe");
    gtk_box_append(GTK_BOX(row), globe);
    GtkWidget* titleLabel = gtk_label_new(title.c_str());
    gtk_widget_add_css_class(titleLabel, "ovel-page-title");
    gtk_widget_set_hexpand(titleLabel, true);
    gtk_widget_set_halign(titleLabel, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(row), titleLabel);
    for (const char* dot : {"ovel-page-dot-1", "ovel-page-dot-2", "ovel-page-dot-3"}) {
        GtkWidget* circle = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
        gtk_widget_add_css_class(circle, "ovel-page-dot");
        gtk_widget_add_css_class(circle, dot);
        gtk_widget_set_size_request(circle, 10, 10);
        gtk_widget_set_valign(circle, GTK_ALIGN_CENTER);
        gtk_box_append(GTK_BOX(row), circle);
    }
    return row;
}

} // namespace

OvelInternalPageShell::OvelInternalPageShell(BrowserState& state, const std::string& title,
                                             const std::string& subtitle, GtkWidget* content,
                                             Scrolling scrolling)
    : root_(GObjectRef<GtkWidget>::retain(gtk_overlay_new())), orbs_(shellOrbs) {
    GtkWidget* root = root_.get();
    gtk_widget_add_css_class(root, "ovel-internal-page-shell");
    gtk_widget_set_hexpand(root, true);
    gtk_widget_set_vexpand(root, true);
    gtk_widget_set_overflow(root, GTK_OVERFLOW_HIDDEN);
    gtk_overlay_set_child(GTK_OVERLAY(root), orbs_.widget());

    GtkWidget* panel = gtk_box_new(GTK_ORIENTATION_VERTICAL, 14);
    gtk_widget_add_css_class(panel, "ovel-page-panel");
    gtk_box_append(GTK_BOX(panel), headerRow(title));
    GtkWidget* subtitleLabel = gtk_label_new(subtitle.c_str());
    gtk_widget_add_css_class(subtitleLabel, "ovel-page-subtitle");
    gtk_widget_set_halign(subtitleLabel, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(panel), subtitleLabel);
    gtk_box_append(GTK_BOX(panel), content);

    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_widget_add_css_class(scroller, "ovel-page-scroller");
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scroller), false);
    if (scrolling == Scrolling::Content) {
        gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER,
                                       GTK_POLICY_NEVER);
        gtk_widget_set_vexpand(content, true);
        gtk_widget_set_vexpand(panel, true);
    } else {
        gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER,
                                       GTK_POLICY_ALWAYS);
        gtk_widget_set_valign(panel, GTK_ALIGN_START);
    }
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), panel);
    gtk_overlay_add_overlay(GTK_OVERLAY(root), scroller);

    orbs_.setPalette(themeOrbPalette(state.theme.get()));
    connections_.add(state.theme.changed().connect([this, &state](BrowserTheme theme) {
        orbs_.fadeToPalette(themeOrbPalette(theme), themeSpring, state.smoothAnimations.get());
    }));
    followSmoothAnimations(*state.smoothAnimations);
    connections_.add(state.smoothAnimations.changed().connect(
        [this](bool smooth) { followSmoothAnimations(smooth); }));
}

OvelInternalPageShell::~OvelInternalPageShell() = default;

void OvelInternalPageShell::followSmoothAnimations(bool smooth) {
    // The CSS transitions of the theme's colours follow the same switch as the orbs' fade.
    if (smooth) {
        gtk_widget_remove_css_class(root_.get(), "ovel-instant");
    } else {
        gtk_widget_add_css_class(root_.get(), "ovel-instant");
    }
}

} // namespace ovel
