#include "chrome/AnimatedOrbs.h"

#include "presentation/ThemeColors.h"

#include <algorithm>
#include <cmath>
#include <vector>

struct OvelOrbsWidget {
    GtkWidget parent_instance;
    ovel::AnimatedOrbs* owner;
};

struct OvelOrbsWidgetClass {
    GtkWidgetClass parent_class;
};

G_DEFINE_TYPE(OvelOrbsWidget, ovel_orbs_widget, GTK_TYPE_WIDGET)

static void ovel_orbs_widget_snapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
    auto* self = reinterpret_cast<OvelOrbsWidget*>(widget);
    if (self->owner != nullptr) {
        self->owner->snapshot(snapshot);
    }
}

static void ovel_orbs_widget_map(GtkWidget* widget) {
    GTK_WIDGET_CLASS(ovel_orbs_widget_parent_class)->map(widget);
    auto* self = reinterpret_cast<OvelOrbsWidget*>(widget);
    if (self->owner != nullptr) {
        self->owner->updateClock();
    }
}

static void ovel_orbs_widget_unmap(GtkWidget* widget) {
    GTK_WIDGET_CLASS(ovel_orbs_widget_parent_class)->unmap(widget);
    auto* self = reinterpret_cast<OvelOrbsWidget*>(widget);
    if (self->owner != nullptr) {
        self->owner->updateClock();
    }
}

static void ovel_orbs_widget_class_init(OvelOrbsWidgetClass* klass) {
    GtkWidgetClass* widgetClass = GTK_WIDGET_CLASS(klass);
    widgetClass->snapshot = ovel_orbs_widget_snapshot;
    widgetClass->map = ovel_orbs_widget_map;
    widgetClass->unmap = ovel_orbs_widget_unmap;
}

static void ovel_orbs_widget_init(OvelOrbsWidget* self) {
    self->owner = nullptr;
}

namespace ovel {

namespace {

struct OrbLayout {
    double size;
    double blurRadius;
    double restX, restY;
    double spreadX, spreadY;
};

constexpr std::array<OrbLayout, 2> orbLayouts{{
    {480, 40, 170, -70, 320, -180},
    {420, 36, -120, 80, -280, 220},
}};

constexpr std::int64_t breathMicroseconds = 6'000'000;
// About ten frames a second: each frame redraws the glass over the orbs, and at this drift (at
// most about 60 points a second) their blurred edges hide the steps. A little under 100 ms, so
// a 60 Hz clock draws every sixth frame.
constexpr std::int64_t minimumFrameMicroseconds = 96'000;

double easeInOutQuad(double t) {
    return t < 0.5 ? 2 * t * t : 1 - std::pow(-2 * t + 2, 2) / 2;
}

} // namespace

AnimatedOrbs::AnimatedOrbs()
    : widget_(GTK_WIDGET(g_object_ref_sink(g_object_new(ovel_orbs_widget_get_type(), nullptr)))) {
    reinterpret_cast<OvelOrbsWidget*>(widget_)->owner = this;
    gtk_widget_set_can_target(widget_, FALSE);
    gtk_widget_set_can_focus(widget_, FALSE);
    gtk_widget_set_hexpand(widget_, TRUE);
    gtk_widget_set_vexpand(widget_, TRUE);
    gtk_widget_add_css_class(widget_, "animated-orbs");

    settings_ = gtk_settings_get_default();
    if (settings_ != nullptr) {
        settingsHandler_ = g_signal_connect_swapped(
            settings_, "notify::gtk-enable-animations",
            G_CALLBACK(+[](AnimatedOrbs* orbs) { orbs->updateClock(); }), this);
    }
}

AnimatedOrbs::~AnimatedOrbs() {
    if (settingsHandler_ != 0) {
        g_signal_handler_disconnect(settings_, settingsHandler_);
    }
    watchToplevel(false);
    if (tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_, tickId_);
    }
    reinterpret_cast<OvelOrbsWidget*>(widget_)->owner = nullptr;
    g_object_unref(widget_);
}

GtkWidget* AnimatedOrbs::widget() const {
    return widget_;
}

void AnimatedOrbs::setTheme(BrowserTheme theme) {
    endThemeChange();
    if (theme != theme_) {
        theme_ = theme;
        orbs_ = {};
        gtk_widget_queue_draw(widget_);
    }
}

void AnimatedOrbs::beginThemeChange(BrowserTheme theme) {
    if (theme == theme_) {
        return;
    }
    // A change that starts before the last one ended leaves from what is mostly on show.
    if (!previousTheme_ || themeBlend_ >= 0.5) {
        previousTheme_ = theme_;
        previousOrbs_ = std::move(orbs_);
    }
    theme_ = theme;
    orbs_ = {};
    themeBlend_ = 0;
    gtk_widget_queue_draw(widget_);
}

void AnimatedOrbs::setThemeBlend(double blend) {
    themeBlend_ = std::clamp(blend, 0.0, 1.0);
    gtk_widget_queue_draw(widget_);
}

void AnimatedOrbs::endThemeChange() {
    if (previousTheme_) {
        previousTheme_.reset();
        previousOrbs_ = {};
        themeBlend_ = 1;
        gtk_widget_queue_draw(widget_);
    }
}

void AnimatedOrbs::setBreathe(bool breathe) {
    breathe_ = breathe;
    updateClock();
}

void AnimatedOrbs::setCoveringWidget(GtkWidget* cover, double cornerRadius) {
    cover_ = cover;
    coverRadius_ = cornerRadius;
    gtk_widget_queue_draw(widget_);
}

bool AnimatedOrbs::shouldTick() const {
    if (!breathe_ || !gtk_widget_get_mapped(widget_)) {
        return false;
    }
    gboolean animations = TRUE;
    if (settings_ != nullptr) {
        g_object_get(settings_, "gtk-enable-animations", &animations, nullptr);
    }
    if (!animations) {
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

void AnimatedOrbs::watchToplevel(bool watch) {
    if (toplevel_ != nullptr) {
        g_signal_handler_disconnect(toplevel_, toplevelHandler_);
        g_object_unref(toplevel_);
        toplevel_ = nullptr;
        toplevelHandler_ = 0;
    }
    if (!watch) {
        return;
    }
    GtkNative* native = gtk_widget_get_native(widget_);
    GdkSurface* surface = native != nullptr ? gtk_native_get_surface(native) : nullptr;
    if (surface == nullptr || !GDK_IS_TOPLEVEL(surface)) {
        return;
    }
    toplevel_ = GDK_SURFACE(g_object_ref(surface));
    toplevelHandler_ = g_signal_connect_swapped(
        toplevel_, "notify::state", G_CALLBACK(+[](AnimatedOrbs* orbs) { orbs->updateClock(); }),
        this);
}

void AnimatedOrbs::updateClock() {
    const bool mapped = gtk_widget_get_mapped(widget_);
    if (mapped && toplevel_ == nullptr) {
        watchToplevel(true);
    } else if (!mapped && toplevel_ != nullptr) {
        watchToplevel(false);
    }

    gboolean animations = TRUE;
    if (settings_ != nullptr) {
        g_object_get(settings_, "gtk-enable-animations", &animations, nullptr);
    }
    const bool tickNow = shouldTick();
    if (tickNow && tickId_ == 0) {
        runningSince_ = -1;
        tickId_ = gtk_widget_add_tick_callback(widget_, &AnimatedOrbs::onTick, this, nullptr);
    } else if (!tickNow && tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_, tickId_);
        tickId_ = 0;
        if (runningSince_ >= 0) {
            elapsedBefore_ += lastFrame_ - runningSince_;
        }
        runningSince_ = -1;
    }
    // With animations turned off, or breathing off, the orbs go back to rest.
    if (!animations || !breathe_) {
        elapsedBefore_ = 0;
        if (spread_ != 0) {
            spread_ = 0;
            gtk_widget_queue_draw(widget_);
        }
    }
}

gboolean AnimatedOrbs::onTick(GtkWidget*, GdkFrameClock* clock, gpointer self) {
    static_cast<AnimatedOrbs*>(self)->tick(gdk_frame_clock_get_frame_time(clock));
    return G_SOURCE_CONTINUE;
}

void AnimatedOrbs::tick(std::int64_t frameTime) {
    if (runningSince_ < 0) {
        runningSince_ = frameTime;
        lastFrame_ = frameTime;
    }
    if (frameTime - lastFrame_ < minimumFrameMicroseconds && framesDrawn_ > 0) {
        return;
    }
    lastFrame_ = frameTime;
    const std::int64_t elapsed = elapsedBefore_ + (frameTime - runningSince_);
    // Out for one breath, back for the next.
    const std::int64_t inCycle = elapsed % (2 * breathMicroseconds);
    const double linear = inCycle < breathMicroseconds
                              ? static_cast<double>(inCycle) / breathMicroseconds
                              : 2.0 - static_cast<double>(inCycle) / breathMicroseconds;
    const double spread = easeInOutQuad(linear);
    // Near the ends of a breath an orb moves less than half a pixel a frame: skip those frames.
    double longestPath = 0;
    for (const OrbLayout& layout : orbLayouts) {
        longestPath = std::max(
            longestPath, std::hypot(layout.spreadX - layout.restX, layout.spreadY - layout.restY));
    }
    if (std::abs(spread - spread_) * longestPath < 0.5) {
        return;
    }
    spread_ = spread;
    gtk_widget_queue_draw(widget_);
}

void AnimatedOrbs::renderOrbs(OrbPair& orbs, BrowserTheme theme) {
    const int scale = std::max(1, gtk_widget_get_scale_factor(widget_));
    if (scale != orbScale_) {
        orbs_ = {};
        previousOrbs_ = {};
        orbScale_ = scale;
    }
    if (orbs[0]) {
        return;
    }
    const ThemeColors colors = themeColors(theme);
    for (std::size_t i = 0; i < orbLayouts.size(); ++i) {
        orbs[i] = OrbImage::render(orbLayouts[i].size, orbLayouts[i].blurRadius,
                                   colors.orbColors[i], scale);
    }
}

void AnimatedOrbs::appendGradient(GtkSnapshot* snapshot, BrowserTheme theme, double width,
                                  double height) {
    // From the top-left corner to the bottom-right one, stops evenly spaced.
    const ThemeColors colors = themeColors(theme);
    std::vector<GskColorStop> stops;
    const std::size_t count = colors.backgroundGradient.count;
    for (std::size_t i = 0; i < count; ++i) {
        const Rgba& stop = colors.backgroundGradient.stops[i];
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

cairo_region_t* AnimatedOrbs::visibleRegion(double width, double height) const {
    // Everywhere but under the opaque page, whose rounded corners let the layer show through.
    cairo_rectangle_int_t whole = {0, 0, static_cast<int>(std::ceil(width)),
                                   static_cast<int>(std::ceil(height))};
    cairo_region_t* region = cairo_region_create_rectangle(&whole);
    graphene_rect_t page;
    if (cover_ == nullptr || !gtk_widget_get_mapped(cover_) ||
        !gtk_widget_compute_bounds(cover_, widget_, &page)) {
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

void AnimatedOrbs::snapshot(GtkSnapshot* snapshot) {
    const double width = gtk_widget_get_width(widget_);
    const double height = gtk_widget_get_height(widget_);
    if (width <= 0 || height <= 0) {
        return;
    }
    const bool changingTheme = previousTheme_.has_value();
    if (changingTheme) {
        appendGradient(snapshot, *previousTheme_, width, height);
        gtk_snapshot_push_opacity(snapshot, themeBlend_);
        appendGradient(snapshot, theme_, width, height);
        gtk_snapshot_pop(snapshot);
        renderOrbs(previousOrbs_, *previousTheme_);
    } else {
        appendGradient(snapshot, theme_, width, height);
    }
    renderOrbs(orbs_, theme_);

    // Whole device pixels, so each copy is a plain blit.
    const int scale = orbScale_;
    std::array<graphene_point_t, 2> origins{};
    cairo_region_t* orbArea = cairo_region_create();
    for (std::size_t i = 0; i < orbLayouts.size(); ++i) {
        const OrbLayout& layout = orbLayouts[i];
        const double offsetX = layout.restX + (layout.spreadX - layout.restX) * spread_;
        const double offsetY = layout.restY + (layout.spreadY - layout.restY) * spread_;
        const double side = orbs_[i].side();
        const double x = std::round((width / 2 + offsetX - side / 2) * scale) / scale;
        const double y = std::round((height / 2 + offsetY - side / 2) * scale) / scale;
        origins[i] = GRAPHENE_POINT_INIT(static_cast<float>(x), static_cast<float>(y));
        const int left = static_cast<int>(std::floor(x));
        const int top = static_cast<int>(std::floor(y));
        cairo_rectangle_int_t square = {left, top, static_cast<int>(std::ceil(x + side)) - left,
                                        static_cast<int>(std::ceil(y + side)) - top};
        cairo_region_union_rectangle(orbArea, &square);
    }

    // Drawn only where an orb lies and the page does not hide it. The previous frame's nodes
    // count as damage too, so the place an orb left is repainted with the gradient alone.
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
        for (std::size_t i = 0; i < orbLayouts.size(); ++i) {
            if (changingTheme) {
                cairo_set_source_surface(cr, previousOrbs_[i].surface(), origins[i].x,
                                         origins[i].y);
                cairo_paint_with_alpha(cr, 1 - themeBlend_);
            }
            cairo_set_source_surface(cr, orbs_[i].surface(), origins[i].x, origins[i].y);
            cairo_paint_with_alpha(cr, changingTheme ? themeBlend_ : 1.0);
        }
        cairo_destroy(cr);
    }
    cairo_region_destroy(region);
    ++framesDrawn_;
}

} // namespace ovel
