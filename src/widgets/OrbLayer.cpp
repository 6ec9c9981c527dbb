#include "widgets/OrbLayer.h"

#include <adwaita.h>

#include <algorithm>
#include <cmath>

// The widget that hands its drawing and its mapping to an OrbLayer.
struct OvelOrbLayerWidget {
    GtkWidget parent_instance;
    ovel::OrbLayer* owner;
};

struct OvelOrbLayerWidgetClass {
    GtkWidgetClass parent_class;
};

G_DEFINE_TYPE(OvelOrbLayerWidget, ovel_orb_layer_widget, GTK_TYPE_WIDGET)

static ovel::OrbLayer* orbLayerOf(GtkWidget* widget) {
    return reinterpret_cast<OvelOrbLayerWidget*>(widget)->owner;
}

static void ovel_orb_layer_widget_snapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
    if (ovel::OrbLayer* owner = orbLayerOf(widget)) {
        owner->snapshot(snapshot);
    }
}

static void ovel_orb_layer_widget_map(GtkWidget* widget) {
    GTK_WIDGET_CLASS(ovel_orb_layer_widget_parent_class)->map(widget);
    if (ovel::OrbLayer* owner = orbLayerOf(widget)) {
        owner->updateClock();
    }
}

static void ovel_orb_layer_widget_unmap(GtkWidget* widget) {
    GTK_WIDGET_CLASS(ovel_orb_layer_widget_parent_class)->unmap(widget);
    if (ovel::OrbLayer* owner = orbLayerOf(widget)) {
        owner->updateClock();
    }
}

static void ovel_orb_layer_widget_class_init(OvelOrbLayerWidgetClass* klass) {
    GtkWidgetClass* widgetClass = GTK_WIDGET_CLASS(klass);
    widgetClass->snapshot = ovel_orb_layer_widget_snapshot;
    widgetClass->map = ovel_orb_layer_widget_map;
    widgetClass->unmap = ovel_orb_layer_widget_unmap;
    gtk_widget_class_set_css_name(widgetClass, "orb-layer");
}

static void ovel_orb_layer_widget_init(OvelOrbLayerWidget* self) {
    self->owner = nullptr;
}

namespace ovel {

namespace {

// About ten frames a second: each frame redraws the glass over the orbs, and at this drift (at
// most about 60 points a second) their blurred edges hide the steps. A little under 100 ms, so
// a 60 Hz clock draws every sixth frame.
constexpr std::int64_t minimumFrameMicroseconds = 96'000;

bool animationsAllowed(GtkSettings* settings) {
    gboolean animations = TRUE;
    if (settings != nullptr) {
        g_object_get(settings, "gtk-enable-animations", &animations, nullptr);
    }
    return animations != FALSE;
}

LayerColor withOpacity(const LayerColor& color, double opacity) {
    return {color.red, color.green, color.blue, color.alpha * opacity};
}

} // namespace

OrbLayer::OrbLayer(const OrbLayout& layout)
    : layout_(layout), widget_(GObjectRef<GtkWidget>::retain(
                           GTK_WIDGET(g_object_new(ovel_orb_layer_widget_get_type(), nullptr)))),
      fade_(
          widget_.get(), 1, [this](double) { gtk_widget_queue_draw(widget_.get()); },
          [this] { endFade(); }) {
    reinterpret_cast<OvelOrbLayerWidget*>(widget_.get())->owner = this;
    for (const Orb& orb : layout_.orbs) {
        longestPath_ =
            std::max(longestPath_, std::hypot(orb.spreadX - orb.restX, orb.spreadY - orb.restY));
    }
    GtkWidget* widget = widget_.get();
    gtk_widget_set_can_target(widget, FALSE);
    gtk_widget_set_can_focus(widget, FALSE);
    gtk_widget_set_hexpand(widget, TRUE);
    gtk_widget_set_vexpand(widget, TRUE);

    settings_ = gtk_settings_get_default();
    if (settings_ != nullptr) {
        settingsHandler_ = g_signal_connect_swapped(
            settings_, "notify::gtk-enable-animations",
            G_CALLBACK(+[](OrbLayer* layer) { layer->updateClock(); }), this);
    }
}

OrbLayer::~OrbLayer() {
    if (settingsHandler_ != 0) {
        g_signal_handler_disconnect(settings_, settingsHandler_);
    }
    watchToplevel(false);
    if (tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_.get(), tickId_);
    }
    reinterpret_cast<OvelOrbLayerWidget*>(widget_.get())->owner = nullptr;
}

void OrbLayer::setPalette(const OrbPalette& palette) {
    fade_.setValue(1);
    previous_.reset();
    previousImages_ = {};
    palette_ = palette;
    images_ = {};
    gtk_widget_queue_draw(widget_.get());
}

void OrbLayer::fadeToPalette(const OrbPalette& palette, Spring spring, bool smooth) {
    if (palette == palette_) {
        return;
    }
    // A change that starts before the last one ended leaves from what is mostly on show.
    if (!previous_ || fade_.value() >= 0.5) {
        previous_ = std::move(palette_);
        previousImages_ = std::move(images_);
    }
    palette_ = palette;
    images_ = {};
    fade_.setValue(0);
    gtk_widget_queue_draw(widget_.get());
    fade_.animateTo(1, spring, smooth);
}

void OrbLayer::endFade() {
    if (previous_) {
        previous_.reset();
        previousImages_ = {};
        gtk_widget_queue_draw(widget_.get());
    }
}

void OrbLayer::setCoveringWidget(GtkWidget* cover, double cornerRadius) {
    cover_ = cover;
    coverRadius_ = cornerRadius;
    gtk_widget_queue_draw(widget_.get());
}

bool OrbLayer::shouldTick() const {
    if (!gtk_widget_get_mapped(widget_.get()) || !animationsAllowed(settings_)) {
        return false;
    }
    if (toplevel_ != nullptr && GDK_IS_TOPLEVEL(toplevel_)) {
        const GdkToplevelState state = gdk_toplevel_get_state(GDK_TOPLEVEL(toplevel_));
        if ((state & GDK_TOPLEVEL_STATE_MINIMIZED) != 0) {
            return false;
        }
    }
    return true;
}

void OrbLayer::watchToplevel(bool watch) {
    if (toplevel_ != nullptr) {
        g_signal_handler_disconnect(toplevel_, toplevelHandler_);
        g_object_unref(toplevel_);
        toplevel_ = nullptr;
        toplevelHandler_ = 0;
    }
    if (!watch) {
        return;
    }
    GtkNative* native = gtk_widget_get_native(widget_.get());
    GdkSurface* surface = native != nullptr ? gtk_native_get_surface(native) : nullptr;
    if (surface == nullptr || !GDK_IS_TOPLEVEL(surface)) {
        return;
    }
    toplevel_ = GDK_SURFACE(g_object_ref(surface));
    toplevelHandler_ =
        g_signal_connect_swapped(toplevel_, "notify::state",
                                 G_CALLBACK(+[](OrbLayer* layer) { layer->updateClock(); }), this);
}

void OrbLayer::updateClock() {
    const bool mapped = gtk_widget_get_mapped(widget_.get());
    if (mapped && toplevel_ == nullptr) {
        watchToplevel(true);
    } else if (!mapped && toplevel_ != nullptr) {
        watchToplevel(false);
    }

    const bool tickNow = shouldTick();
    if (tickNow && tickId_ == 0) {
        runningSince_ = -1;
        tickId_ = gtk_widget_add_tick_callback(widget_.get(), &OrbLayer::onTick, this, nullptr);
    } else if (!tickNow && tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_.get(), tickId_);
        tickId_ = 0;
        if (runningSince_ >= 0) {
            elapsedBefore_ += lastTick_ - runningSince_;
        }
        runningSince_ = -1;
    }
    // With animations turned off the orbs go back to rest.
    if (!animationsAllowed(settings_)) {
        elapsedBefore_ = 0;
        if (spread_ != 0) {
            spread_ = 0;
            gtk_widget_queue_draw(widget_.get());
        }
    }
}

gboolean OrbLayer::onTick(GtkWidget*, GdkFrameClock* clock, gpointer self) {
    static_cast<OrbLayer*>(self)->tick(gdk_frame_clock_get_frame_time(clock));
    return G_SOURCE_CONTINUE;
}

void OrbLayer::tick(std::int64_t frameTime) {
    if (runningSince_ < 0) {
        runningSince_ = frameTime;
    }
    lastTick_ = frameTime;
    if (frameTime - lastMove_ < minimumFrameMicroseconds) {
        return;
    }
    // Out for one stretch, back for the next.
    const auto stretch = static_cast<std::int64_t>(layout_.secondsEachWay * 1e6);
    const std::int64_t inCycle = (elapsedBefore_ + frameTime - runningSince_) % (2 * stretch);
    const double linear = inCycle < stretch ? static_cast<double>(inCycle) / stretch
                                            : 2.0 - static_cast<double>(inCycle) / stretch;
    const double spread = adw_easing_ease(ADW_EASE_IN_OUT_QUAD, linear);
    // Orbs are drawn at whole device pixels: a frame waits until one has moved a whole pixel.
    const int scale = std::max(1, gtk_widget_get_scale_factor(widget_.get()));
    if (std::abs(spread - spread_) * longestPath_ * scale < 1) {
        return;
    }
    spread_ = spread;
    lastMove_ = frameTime;
    gtk_widget_queue_draw(widget_.get());
}

OrbLayer::Origins OrbLayer::originsAt(double spread, int scale) const {
    const double width = gtk_widget_get_width(widget_.get());
    const double height = gtk_widget_get_height(widget_.get());
    Origins origins{};
    for (std::size_t i = 0; i < origins.size(); ++i) {
        const Orb& orb = layout_.orbs[i];
        const double offsetX = orb.restX + (orb.spreadX - orb.restX) * spread;
        const double offsetY = orb.restY + (orb.spreadY - orb.restY) * spread;
        const double side = orb.diameter + 2 * OrbImage::margin(orb.blurRadius);
        origins[i] = {static_cast<int>(std::lround((width / 2 + offsetX - side / 2) * scale)),
                      static_cast<int>(std::lround((height / 2 + offsetY - side / 2) * scale))};
    }
    return origins;
}

void OrbLayer::fetchImages(Images& images, const OrbPalette& palette, int scale) {
    for (std::size_t i = 0; i < images.size(); ++i) {
        const Orb& orb = layout_.orbs[i];
        images[i] = OrbImage::shared(orb.diameter, orb.blurRadius,
                                     withOpacity(palette.orbs[i], orb.opacity), scale);
    }
}

void OrbLayer::appendGradient(GtkSnapshot* snapshot, const OrbPalette& palette, double width,
                              double height) {
    const std::size_t count = palette.gradient.size();
    if (count == 0) {
        return;
    }
    std::vector<GskColorStop> stops;
    for (std::size_t i = 0; i < count; ++i) {
        const LayerColor& stop = palette.gradient[i];
        stops.push_back({static_cast<float>(count > 1 ? double(i) / double(count - 1) : 0.0),
                         {static_cast<float>(stop.red), static_cast<float>(stop.green),
                          static_cast<float>(stop.blue), static_cast<float>(stop.alpha)}});
    }
    const graphene_rect_t bounds =
        GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
    const graphene_point_t start = GRAPHENE_POINT_INIT(0, 0);
    const graphene_point_t end =
        GRAPHENE_POINT_INIT(static_cast<float>(width), static_cast<float>(height));
    gtk_snapshot_append_linear_gradient(snapshot, &bounds, &start, &end, stops.data(),
                                        stops.size());
}

cairo_region_t* OrbLayer::visibleRegion(double width, double height) const {
    // Everywhere but under the covering widget, whose rounded corners let the layer show through.
    cairo_rectangle_int_t whole = {0, 0, static_cast<int>(std::ceil(width)),
                                   static_cast<int>(std::ceil(height))};
    cairo_region_t* region = cairo_region_create_rectangle(&whole);
    graphene_rect_t page;
    if (cover_ == nullptr || !gtk_widget_get_mapped(cover_) ||
        !gtk_widget_compute_bounds(cover_, widget_.get(), &page)) {
        return region;
    }
    const int left = static_cast<int>(std::ceil(page.origin.x));
    const int top = static_cast<int>(std::ceil(page.origin.y));
    const int right = static_cast<int>(std::floor(page.origin.x + page.size.width));
    const int bottom = static_cast<int>(std::floor(page.origin.y + page.size.height));
    const int corner = static_cast<int>(std::ceil(coverRadius_));
    if (right - left > 2 * corner && bottom - top > 2 * corner) {
        cairo_rectangle_int_t covered = {left, top, right - left, bottom - top};
        cairo_region_subtract_rectangle(region, &covered);
        for (int x : {left, right - corner}) {
            for (int y : {top, bottom - corner}) {
                cairo_rectangle_int_t square = {x, y, corner, corner};
                cairo_region_union_rectangle(region, &square);
            }
        }
    }
    return region;
}

void OrbLayer::snapshot(GtkSnapshot* snapshot) {
    const double width = gtk_widget_get_width(widget_.get());
    const double height = gtk_widget_get_height(widget_.get());
    if (width <= 0 || height <= 0) {
        return;
    }
    const int scale = std::max(1, gtk_widget_get_scale_factor(widget_.get()));
    if (scale != imageScale_) {
        images_ = {};
        previousImages_ = {};
        imageScale_ = scale;
    }
    const bool fading = previous_.has_value();
    const double blend = fading ? std::clamp(fade_.value(), 0.0, 1.0) : 1.0;
    if (fading) {
        appendGradient(snapshot, *previous_, width, height);
        gtk_snapshot_push_opacity(snapshot, blend);
        appendGradient(snapshot, palette_, width, height);
        gtk_snapshot_pop(snapshot);
        if (!previousImages_[0]) {
            fetchImages(previousImages_, *previous_, scale);
        }
    } else {
        appendGradient(snapshot, palette_, width, height);
    }
    if (!images_[0]) {
        fetchImages(images_, palette_, scale);
    }

    const Origins origins = originsAt(spread_, scale);
    cairo_region_t* orbArea = cairo_region_create();
    for (std::size_t i = 0; i < images_.size(); ++i) {
        const double side = images_[i]->side();
        const double x = double(origins[i][0]) / scale;
        const double y = double(origins[i][1]) / scale;
        const int left = static_cast<int>(std::floor(x));
        const int top = static_cast<int>(std::floor(y));
        cairo_rectangle_int_t square = {left, top, static_cast<int>(std::ceil(x + side)) - left,
                                        static_cast<int>(std::ceil(y + side)) - top};
        cairo_region_union_rectangle(orbArea, &square);
    }

    // Drawn only where an orb lies and nothing hides it. The previous frame's nodes count as
    // damage too, so the place an orb left is repainted with what lies under it.
    cairo_region_t* region = visibleRegion(width, height);
    cairo_region_intersect(region, orbArea);
    cairo_region_destroy(orbArea);
    const int rectangles = cairo_region_num_rectangles(region);
    for (int r = 0; r < rectangles; ++r) {
        cairo_rectangle_int_t area;
        cairo_region_get_rectangle(region, r, &area);
        const graphene_rect_t areaBounds =
            GRAPHENE_RECT_INIT(static_cast<float>(area.x), static_cast<float>(area.y),
                               static_cast<float>(area.width), static_cast<float>(area.height));
        cairo_t* cr = gtk_snapshot_append_cairo(snapshot, &areaBounds);
        cairo_rectangle(cr, area.x, area.y, area.width, area.height);
        cairo_clip(cr);
        for (std::size_t i = 0; i < images_.size(); ++i) {
            // Whole device pixels, so each copy is a plain blit.
            const double x = double(origins[i][0]) / scale;
            const double y = double(origins[i][1]) / scale;
            if (fading) {
                cairo_set_source_surface(cr, previousImages_[i]->surface(), x, y);
                cairo_paint_with_alpha(cr, 1 - blend);
            }
            cairo_set_source_surface(cr, images_[i]->surface(), x, y);
            cairo_paint_with_alpha(cr, blend);
        }
        cairo_destroy(cr);
    }
    cairo_region_destroy(region);
    ++framesDrawn_;
}

} // namespace ovel
