#include "chrome/BrowserRootView.h"

#include "gutil/AccessibleLabel.h"
#include "presentation/ThemeColors.h"
#include "state/BrowserState.h"

#include <string>

namespace ovel {

namespace {

constexpr double pageCornerRadius = 22;
// The background's move from one theme to the next.
constexpr Spring themeSpring{0.42, 0.86};

LayerColor layerColor(const Rgba& color) {
    return {color.red, color.green, color.blue, color.alpha};
}

// The theme's gradient and orbs, which the window draws in its orb layer.
OrbPalette backgroundPalette(BrowserTheme theme) {
    const ThemeColors colors = themeColors(theme);
    OrbPalette palette;
    for (std::size_t i = 0; i < palette.orbs.size(); ++i) {
        palette.orbs[i] = layerColor(colors.orbColors[i]);
    }
    for (const Rgba& stop : colors.backgroundGradient) {
        palette.gradient.push_back(layerColor(stop));
    }
    return palette;
}

GtkWidget* box(GtkOrientation orientation, const char* cssClass) {
    GtkWidget* widget = gtk_box_new(orientation, 0);
    gtk_widget_add_css_class(widget, cssClass);
    return widget;
}

} // namespace

BrowserRootView::BrowserRootView(BrowserState& state, WebContainer::WidgetResolver resolver,
                                 WebContainer::PageMaker pages)
    : state_(state), style_(gdk_display_get_default()), orbs_(windowOrbLayout),
      sidebar_(SlideRevealer::Edge::Leading, Spring{0.45, 0.86}),
      findBar_(SlideRevealer::Edge::Top, Spring{0.35, 0.86}),
      // The shelf has no animation of its own in the design; it moves like the find bar.
      downloadShelf_(SlideRevealer::Edge::Bottom, Spring{0.35, 0.86}),
      webContainer_(std::make_unique<WebContainer>(state, std::move(resolver), std::move(pages))),
      sidebarView_(state), findBarView_(state), downloadShelfView_(state), tabBar_(state),
      toolbar_(state), root_(GObjectRef<GtkWidget>::retain(gtk_overlay_new())),
      tabStripSlot_(box(GTK_ORIENTATION_HORIZONTAL, "tab-strip")),
      toolbarSlot_(box(GTK_ORIENTATION_HORIZONTAL, "toolbar")) {
    gtk_widget_add_css_class(widget(), "browser-root");
    gtk_overlay_set_child(GTK_OVERLAY(widget()), orbs_.widget());

    // The sidebar, sliding in from the leading edge.
    sidebar_.setChild(sidebarView_.widget());

    // The tab strip row: the window's drag handle, with the window controls at its end.
    GtkWidget* tabStripRow = box(GTK_ORIENTATION_HORIZONTAL, "tab-strip-row");
    gtk_widget_set_hexpand(tabStripSlot_, TRUE);
    gtk_widget_set_hexpand(tabBar_.widget(), TRUE);
    gtk_box_append(GTK_BOX(tabStripSlot_), tabBar_.widget());
    gtk_box_append(GTK_BOX(tabStripRow), tabStripSlot_);
    primaryMenuButton_ = GTK_MENU_BUTTON(gtk_menu_button_new());
    gtk_menu_button_set_icon_name(primaryMenuButton_, "open-menu-symbolic");
    gtk_menu_button_set_primary(primaryMenuButton_, TRUE);
    gtk_widget_set_tooltip_text(GTK_WIDGET(primaryMenuButton_), "Main Menu");
    setAccessibleLabel(GTK_WIDGET(primaryMenuButton_), "Main Menu");
    gtk_widget_add_css_class(GTK_WIDGET(primaryMenuButton_), "primary-menu");
    gtk_widget_set_valign(GTK_WIDGET(primaryMenuButton_), GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(tabStripRow), GTK_WIDGET(primaryMenuButton_));
    gtk_box_append(GTK_BOX(tabStripRow), gtk_window_controls_new(GTK_PACK_END));
    GtkWidget* dragHandle = gtk_window_handle_new();
    gtk_window_handle_set_child(GTK_WINDOW_HANDLE(dragHandle), tabStripRow);
    dragHandle_ = dragHandle;

    // The toolbar row: the browser's buttons around the address field.
    GtkWidget* toolbarRow = box(GTK_ORIENTATION_HORIZONTAL, "toolbar-row");
    toolbarRow_ = toolbarRow;
    gtk_widget_set_hexpand(toolbarSlot_, TRUE);
    gtk_widget_set_hexpand(toolbar_.widget(), TRUE);
    gtk_box_append(GTK_BOX(toolbarSlot_), toolbar_.widget());
    gtk_box_append(GTK_BOX(toolbarRow), toolbarSlot_);

    findBar_.setChild(findBarView_.widget());

    // The page, inset in its outlined frame.
    GtkWidget* pageFrame = box(GTK_ORIENTATION_VERTICAL, "page-frame");
    gtk_widget_set_vexpand(pageFrame, TRUE);
    gtk_widget_set_hexpand(pageFrame, TRUE);
    gtk_box_append(GTK_BOX(pageFrame), webContainer_->widget());

    downloadShelf_.setChild(downloadShelfView_.widget());

    GtkWidget* column = box(GTK_ORIENTATION_VERTICAL, "chrome-column");
    gtk_widget_set_hexpand(column, TRUE);
    gtk_box_append(GTK_BOX(column), dragHandle);
    gtk_box_append(GTK_BOX(column), toolbarRow);
    gtk_box_append(GTK_BOX(column), findBar_.widget());
    gtk_box_append(GTK_BOX(column), pageFrame);
    gtk_box_append(GTK_BOX(column), downloadShelf_.widget());

    card_ = box(GTK_ORIENTATION_HORIZONTAL, "chrome-card");
    gtk_widget_set_overflow(card_, GTK_OVERFLOW_HIDDEN);
    gtk_box_append(GTK_BOX(card_), sidebar_.widget());
    gtk_box_append(GTK_BOX(card_), column);
    gtk_overlay_add_overlay(GTK_OVERLAY(widget()), card_);
    gtk_overlay_set_measure_overlay(GTK_OVERLAY(widget()), card_, TRUE);

    // The orbs are not drawn where the opaque page hides them.
    orbs_.setCoveringWidget(webContainer_->widget(), pageCornerRadius);

    // The panels come and go with their flags: on springs, or at once without smooth
    // animations. They start as the state has them, without animating.
    connections_.add(state_.showSidebar.changed().connect(
        [this](bool shown) { sidebar_.reveal(shown, motion()); }));
    connections_.add(state_.showFindBar.changed().connect([this](bool shown) {
        findBar_.reveal(shown, motion());
        if (shown) {
            gtk_widget_grab_focus(GTK_WIDGET(findBarView_.field()));
        }
    }));
    connections_.add(state_.downloads.changed().connect(
        [this](const auto& downloads) { downloadShelf_.reveal(!downloads.empty(), motion()); }));
    connections_.add(state_.pageFullscreen.changed().connect(
        [this](bool fullscreen) { showPageFullscreen(fullscreen); }));
    sidebar_.reveal(state_.showSidebar.get(), SlideRevealer::Motion::Instant);
    findBar_.reveal(state_.showFindBar.get(), SlideRevealer::Motion::Instant);
    downloadShelf_.reveal(!state_.downloads->empty(), SlideRevealer::Motion::Instant);

    shownTheme_ = state_.theme.get();
    style_.applyTheme(shownTheme_);
    orbs_.setPalette(backgroundPalette(shownTheme_));
    connections_.add(state_.theme.changed().connect([this](BrowserTheme) { applyTheme(); }));

    // Ctrl+L (and Alt+D, as elsewhere) puts the caret in the address field, its text selected.
    GtkEventController* keys = gtk_shortcut_controller_new();
    gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(keys), GTK_SHORTCUT_SCOPE_GLOBAL);
    for (const char* trigger : {"<Control>l", "<Alt>d"}) {
        gtk_shortcut_controller_add_shortcut(
            GTK_SHORTCUT_CONTROLLER(keys),
            gtk_shortcut_new(gtk_shortcut_trigger_parse_string(trigger),
                             gtk_callback_action_new(
                                 +[](GtkWidget*, GVariant*, gpointer view) -> gboolean {
                                     static_cast<BrowserRootView*>(view)
                                         ->toolbar_.addressField()
                                         .focusAndSelectAll();
                                     return TRUE;
                                 },
                                 this, nullptr)));
    }
    gtk_widget_add_controller(widget(), keys);
}

BrowserRootView::~BrowserRootView() {
    connections_.disconnectAll();
    orbs_.setCoveringWidget(nullptr, 0);
    webContainer_.reset();
}

void BrowserRootView::setPrimaryMenu(GMenuModel* menu) {
    gtk_menu_button_set_menu_model(primaryMenuButton_, menu);
}

SlideRevealer::Motion BrowserRootView::motion() const {
    return state_.smoothAnimations.get() ? SlideRevealer::Motion::Smooth
                                         : SlideRevealer::Motion::Instant;
}

void BrowserRootView::applyTheme() {
    const BrowserTheme theme = state_.theme.get();
    if (theme == shownTheme_) {
        return;
    }
    shownTheme_ = theme;
    style_.applyTheme(theme);
    // The background fades from the old theme to the new one, on the spring or in 0.01 s.
    orbs_.fadeToPalette(backgroundPalette(theme), themeSpring, state_.smoothAnimations.get());
}

void BrowserRootView::showPageFullscreen(bool fullscreen) {
    for (GtkWidget* chrome : {dragHandle_, toolbarRow_, sidebar_.widget(), findBar_.widget(),
                              downloadShelf_.widget()}) {
        gtk_widget_set_visible(chrome, !fullscreen);
    }
    if (fullscreen) {
        gtk_widget_add_css_class(widget(), "page-fullscreen");
    } else {
        gtk_widget_remove_css_class(widget(), "page-fullscreen");
    }
    // The engine puts the window in full screen for the page and takes it out after; a window
    // that was in full screen of its own before goes back to it, once the engine is done.
    GtkRoot* root = gtk_widget_get_root(widget());
    if (!GTK_IS_WINDOW(root)) {
        return;
    }
    GtkWindow* window = GTK_WINDOW(root);
    if (fullscreen) {
        refullscreen_.cancel();
        windowWasFullscreen_ = gtk_window_is_fullscreen(window);
    } else if (windowWasFullscreen_) {
        windowWasFullscreen_ = false;
        refullscreen_.start(std::chrono::milliseconds(0),
                            [window] { gtk_window_fullscreen(window); });
    }
}

} // namespace ovel
