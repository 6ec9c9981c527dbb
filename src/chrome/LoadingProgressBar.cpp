#include "chrome/LoadingProgressBar.h"

#include <algorithm>
#include <cmath>

namespace ovel {

namespace {

constexpr Timed progressTiming{250, ADW_EASE_OUT_CUBIC};
constexpr Timed visibilityTiming{200, ADW_EASE_IN_OUT_QUAD};
constexpr int height = 2;

} // namespace

LoadingProgressBar::LoadingProgressBar() : root_(GObjectRef<GtkWidget>::retain(gtk_overlay_new())) {
    GtkWidget* track = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_add_css_class(track, "loading-progress-track");
    gtk_widget_set_size_request(track, -1, height);
    gtk_widget_set_hexpand(track, TRUE);
    gtk_overlay_set_child(GTK_OVERLAY(widget()), track);
    fill_ = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_add_css_class(fill_, "loading-progress-fill");
    gtk_overlay_add_overlay(GTK_OVERLAY(widget()), fill_);
    gtk_widget_add_css_class(widget(), "loading-progress-bar");
    gtk_widget_set_can_target(widget(), FALSE);
    gtk_widget_set_opacity(widget(), 0);

    progress_ = std::make_unique<AnimatedValue>(
        widget(), 0.0, [this](double) { gtk_widget_queue_allocate(widget()); });
    opacity_ = std::make_unique<AnimatedValue>(
        widget(), 0.0, [this](double value) { gtk_widget_set_opacity(widget(), value); });
    signals_.connect(widget(), "get-child-position",
                     [this](GtkOverlay* overlay, GtkWidget*, GdkRectangle* place) -> gboolean {
                         const int width = gtk_widget_get_width(GTK_WIDGET(overlay));
                         const double filled = std::round(width * progress_->value());
                         place->x = 0;
                         place->y = 0;
                         place->width = std::max(static_cast<int>(filled), minimumFill);
                         place->height = height;
                         return TRUE;
                     });
}

LoadingProgressBar::~LoadingProgressBar() {
    progress_.reset();
    opacity_.reset();
}

void LoadingProgressBar::setProgress(double progress) {
    progress_->animateTo(std::clamp(progress, 0.0, 1.0), progressTiming);
}

void LoadingProgressBar::setLoading(bool loading) {
    opacity_->animateTo(loading ? 1.0 : 0.0, visibilityTiming);
}

} // namespace ovel
