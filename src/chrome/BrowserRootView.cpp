#include "chrome/BrowserRootView.h"

#include "state/BrowserState.h"

namespace ovel {

namespace {

constexpr double pageCornerRadius = 22;
constexpr int sidebarWidth = 220;

GtkWidget* box(GtkOrientation orientation, const char* cssClass) {
    GtkWidget* widget = gtk_box_new(orientation, 0);
    gtk_widget_add_css_class(widget, cssClass);
    return widget;
}

void setAccessibleLabel(GtkWidget* widget, const char* label) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label,
                                   -1);
}

} // namespace

BrowserRootView::BrowserRootView(BrowserState& state, WebContainer::WidgetResolver resolver)
    : state_(state), style_(gdk_display_get_default()),
      sidebar_(SlideRevealer::Edge::Leading, Spring{0.45, 0.86}),
      findBar_(SlideRevealer::Edge::Top, Spring{0.35, 0.86}),
      // The shelf has no animation of its own in the design; it moves like the find bar.
      downloadShelf_(SlideRevealer::Edge::Bottom, Spring{0.35, 0.86}),
      webContainer_(std::make_unique<WebContainer>(state, std::move(resolver))),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_overlay_new()))),
      tabStripSlot_(box(GTK_ORIENTATION_HORIZONTAL, "tab-strip")),
      toolbarSlot_(box(GTK_ORIENTATION_HORIZONTAL, "toolbar")),
      addressEntry_(GTK_ENTRY(g_object_ref_sink(gtk_entry_new()))) {
    gtk_widget_add_css_class(root_, "browser-root");
    gtk_overlay_set_child(GTK_OVERLAY(root_), orbs_.widget());

    // The sidebar, sliding in from the leading edge.
    GtkWidget* sidebarPanel = box(GTK_ORIENTATION_VERTICAL, "sidebar");
    setAccessibleLabel(sidebarPanel, "Sidebar");
    gtk_widget_set_size_request(sidebarPanel, sidebarWidth, -1);
    sidebar_.setChild(sidebarPanel);

    // The tab strip row: the window's drag handle, with the window controls at its end.
    GtkWidget* tabStripRow = box(GTK_ORIENTATION_HORIZONTAL, "tab-strip-row");
    gtk_widget_set_hexpand(tabStripSlot_, TRUE);
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

    // The toolbar row, holding the address field.
    GtkWidget* toolbarRow = box(GTK_ORIENTATION_HORIZONTAL, "toolbar-row");
    gtk_widget_set_hexpand(toolbarSlot_, TRUE);
    gtk_widget_add_css_class(GTK_WIDGET(addressEntry_), "address-entry");
    gtk_widget_set_hexpand(GTK_WIDGET(addressEntry_), TRUE);
    gtk_widget_set_valign(GTK_WIDGET(addressEntry_), GTK_ALIGN_CENTER);
    gtk_entry_set_placeholder_text(addressEntry_, "Search or enter address");
    setAccessibleLabel(GTK_WIDGET(addressEntry_), "Address");
    gtk_box_append(GTK_BOX(toolbarSlot_), GTK_WIDGET(addressEntry_));
    gtk_box_append(GTK_BOX(toolbarRow), toolbarSlot_);

    GtkWidget* findBarPanel = box(GTK_ORIENTATION_HORIZONTAL, "find-bar");
    findBar_.setChild(findBarPanel);

    // The page, inset in its outlined frame.
    GtkWidget* pageFrame = box(GTK_ORIENTATION_VERTICAL, "page-frame");
    gtk_widget_set_vexpand(pageFrame, TRUE);
    gtk_widget_set_hexpand(pageFrame, TRUE);
    gtk_box_append(GTK_BOX(pageFrame), webContainer_->widget());

    GtkWidget* shelfPanel = box(GTK_ORIENTATION_VERTICAL, "download-shelf");
    downloadShelf_.setChild(shelfPanel);

    GtkWidget* column = box(GTK_ORIENTATION_VERTICAL, "chrome-column");
    gtk_widget_set_hexpand(column, TRUE);
    gtk_box_append(GTK_BOX(column), dragHandle);
    gtk_box_append(GTK_BOX(column), toolbarRow);
    gtk_box_append(GTK_BOX(column), findBar_.widget());
    gtk_box_append(GTK_BOX(column), pageFrame);
    gtk_box_append(GTK_BOX(column), downloadShelf_.widget());

    GtkWidget* card = box(GTK_ORIENTATION_HORIZONTAL, "chrome-card");
    gtk_widget_set_overflow(card, GTK_OVERFLOW_HIDDEN);
    gtk_box_append(GTK_BOX(card), sidebar_.widget());
    gtk_box_append(GTK_BOX(card), column);
    gtk_overlay_add_overlay(GTK_OVERLAY(root_), card);
    gtk_overlay_set_measure_overlay(GTK_OVERLAY(root_), card, TRUE);

    // The orbs are not drawn where the opaque page hides them.
    orbs_.setCoveringWidget(webContainer_->widget(), pageCornerRadius);

    g_signal_connect(addressEntry_, "activate", G_CALLBACK(+[](GtkEntry* entry, gpointer self) {
                         auto* view = static_cast<BrowserRootView*>(self);
                         view->state_.openURL(gtk_editable_get_text(GTK_EDITABLE(entry)));
                     }),
                     this);
    auto showAddress = [this](const auto&...) {
        gtk_editable_set_text(GTK_EDITABLE(addressEntry_), state_.addressText.get().c_str());
    };
    connections_.push_back(state_.addressText.changed().connect(showAddress));
    showAddress();
    auto* onBlend = +[](double value, gpointer orbs) {
        static_cast<AnimatedOrbs*>(orbs)->setThemeBlend(value);
    };
    themeSpring_ =
        adw_spring_animation_new(root_, 0, 1, springParams(Spring{0.42, 0.86}),
                                 adw_callback_animation_target_new(onBlend, &orbs_, nullptr));
    themeInstant_ = adw_timed_animation_new(
        root_, 0, 1, 10, adw_callback_animation_target_new(onBlend, &orbs_, nullptr));
    adw_timed_animation_set_easing(ADW_TIMED_ANIMATION(themeInstant_), ADW_LINEAR);
    for (AdwAnimation* animation : {themeSpring_, themeInstant_}) {
        g_signal_connect_swapped(animation, "done", G_CALLBACK(onThemeChangeDone), this);
    }
    shownTheme_ = state_.theme.get();
    style_.applyTheme(shownTheme_);
    orbs_.setTheme(shownTheme_);
    connections_.push_back(
        state_.theme.changed().connect([this](const auto&...) { applyTheme(); }));

    // The orbs breathe from the moment the window is first shown, for its whole life.
    orbs_.setBreathe(true);
}

BrowserRootView::~BrowserRootView() {
    for (sigc::connection& connection : connections_) {
        connection.disconnect();
    }
    g_signal_handlers_disconnect_by_data(addressEntry_, this);
    for (AdwAnimation* animation : {themeSpring_, themeInstant_}) {
        g_signal_handlers_disconnect_by_data(animation, this);
        adw_animation_reset(animation);
        g_object_unref(animation);
    }
    orbs_.setCoveringWidget(nullptr, 0);
    webContainer_.reset();
    g_object_unref(addressEntry_);
    g_object_unref(root_);
}

void BrowserRootView::setPrimaryMenu(GMenuModel* menu) {
    gtk_menu_button_set_menu_model(primaryMenuButton_, menu);
}

void BrowserRootView::applyTheme() {
    const BrowserTheme theme = state_.theme.get();
    if (theme == shownTheme_) {
        return;
    }
    shownTheme_ = theme;
    style_.applyTheme(theme);
    // The background fades from the old theme to the new one.
    orbs_.beginThemeChange(theme);
    adw_animation_reset(themeSpring_);
    adw_animation_reset(themeInstant_);
    adw_animation_play(state_.smoothAnimations.get() ? themeSpring_ : themeInstant_);
}

void BrowserRootView::onThemeChangeDone(BrowserRootView* view) {
    view->orbs_.endThemeChange();
}

} // namespace ovel
