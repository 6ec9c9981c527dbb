#include "pages/DriftingOrbs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

// The widget that hands its drawing and its life events to a DriftingOrbs.
#define OVEL_TYPE_DRIFTING_ORBS_WIDGET (ovel_drifting_orbs_widget_get_type())
G_DECLARE_FINAL_TYPE(OvelDriftingOrbsWidget, ovel_drifting_orbs_widget, OVEL, DRIFTING_ORBS_WIDGET,
                     GtkWidget)

struct _OvelDriftingOrbsWidget {
    GtkWidget parent_instance;
    ovel::DriftingOrbs* owner;
};

G_DEFINE_TYPE(OvelDriftingOrbsWidget, ovel_drifting_orbs_widget, GTK_TYPE_WIDGET)

static void ovel_drifting_orbs_widget_snapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
    if (auto* owner = OVEL_DRIFTING_ORBS_WIDGET(widget)->owner) {
        owner->snapshot(snapshot);
    }
}

static void ovel_drifting_orbs_widget_css_changed(GtkWidget* widget, GtkCssStyleChange* change) {
    GTK_WIDGET_CLASS(ovel_drifting_orbs_widget_parent_class)->css_changed(widget, change);
    if (auto* owner = OVEL_DRIFTING_ORBS_WIDGET(widget)->owner) {
        owner->styleChanged();
    }
}

static void ovel_drifting_orbs_widget_map(GtkWidget* widget) {
    GTK_WIDGET_CLASS(ovel_drifting_orbs_widget_parent_class)->map(widget);
    if (auto* owner = OVEL_DRIFTING_ORBS_WIDGET(widget)->owner) {
        owner->mapped();
    }
}

static void ovel_drifting_orbs_widget_unmap(GtkWidget* widget) {
    if (auto* owner = OVEL_DRIFTING_ORBS_WIDGET(widget)->owner) {
        owner->unmapped();
    }
    GTK_WIDGET_CLASS(ovel_drifting_orbs_widget_parent_class)->unmap(widget);
}

static void ovel_drifting_orbs_widget_class_init(OvelDriftingOrbsWidgetClass* klass) {
    GtkWidgetClass* widget_class = GTK_WIDGET_CLASS(klass);
    widget_class->snapshot = ovel_drifting_orbs_widget_snapshot;
    widget_class->css_changed = ovel_drifting_orbs_widget_css_changed;
    widget_class->map = ovel_drifting_orbs_widget_map;
    widget_class->unmap = ovel_drifting_orbs_widget_unmap;
    gtk_widget_class_set_css_name(widget_class, "drifting-orbs");
}

static void ovel_drifting_orbs_widget_init(OvelDriftingOrbsWidget* self) {
    self->owner = nullptr;
}

namespace ovel {

namespace {

constexpr double framesPerSecond = 18;
constexpr gint64 frameMicros = static_cast<gint64>(1e6 / framesPerSecond);

// The theme spring: response 0.4 s, damping fraction 0.86 (stiffness = (2π / response)²).
constexpr double springResponse = 0.4;
constexpr double springDamping = 0.86;

double easeInOut(double t) {
    // Cubic ease in and out, close to the usual (0.42, 0, 0.58, 1) curve.
    return t < 0.5 ? 4 * t * t * t : 1 - std::pow(-2 * t + 2, 3) / 2;
}

// Three passes of a box blur along rows or columns approximate a Gaussian. Kept in floating
// point between passes: rounding to 8 bits after each pass leaves visible rings.
void boxBlur(std::vector<float>& pixels, int size, int radius, bool alongRows) {
    const int step = alongRows ? 1 : size;
    const int lineStep = alongRows ? size : 1;
    std::vector<float> line(static_cast<std::size_t>(size));
    const float window = float(2 * radius + 1);
    for (int l = 0; l < size; ++l) {
        float* start = pixels.data() + l * lineStep;
        for (int i = 0; i < size; ++i) {
            line[static_cast<std::size_t>(i)] = start[i * step];
        }
        auto at = [&](int i) {
            return i < 0 || i >= size ? 0.f : line[static_cast<std::size_t>(i)];
        };
        float sum = 0;
        for (int i = -radius; i <= radius; ++i) {
            sum += at(i);
        }
        for (int i = 0; i < size; ++i) {
            start[i * step] = sum / window;
            sum += at(i + radius + 1) - at(i - radius);
        }
    }
}

// A filled circle of `diameter` points blurred with a Gaussian of deviation `blur`, as an alpha
// mask `scale` times the size in pixels, with room around it for the blur to fade out.
cairo_surface_t* renderOrbMask(double diameter, double blur, int scale, double& sizeInPoints) {
    const double margin = std::ceil(3 * blur);
    sizeInPoints = diameter + 2 * margin;
    const int size = static_cast<int>(std::ceil(sizeInPoints * scale));
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, size, size);
    cairo_t* cr = cairo_create(surface);
    cairo_arc(cr, size / 2.0, size / 2.0, diameter * scale / 2.0, 0, 2 * G_PI);
    cairo_fill(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);

    const int stride = cairo_image_surface_get_stride(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    std::vector<float> pixels(static_cast<std::size_t>(size * size));
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            pixels[static_cast<std::size_t>(y * size + x)] = data[y * stride + x];
        }
    }
    // Three boxes of this half-width blur like a Gaussian of deviation `blur`.
    const int boxRadius = std::max(1, static_cast<int>(std::lround(blur * scale * 0.9)));
    for (int pass = 0; pass < 3; ++pass) {
        boxBlur(pixels, size, boxRadius, true);
        boxBlur(pixels, size, boxRadius, false);
    }
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            data[y * stride + x] = static_cast<unsigned char>(
                std::lround(pixels[static_cast<std::size_t>(y * size + x)]));
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_surface_set_device_scale(surface, scale, scale);
    return surface;
}

bool same(const std::array<GdkRGBA, 2>& a, const std::array<GdkRGBA, 2>& b) {
    return gdk_rgba_equal(&a[0], &b[0]) && gdk_rgba_equal(&a[1], &b[1]);
}

GdkRGBA mix(const GdkRGBA& from, const GdkRGBA& to, double t) {
    auto lerp = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return {lerp(from.red, to.red), lerp(from.green, to.green), lerp(from.blue, to.blue),
            lerp(from.alpha, to.alpha)};
}

} // namespace

DriftingOrbs::DriftingOrbs(const std::array<Orb, 2>& orbs, double secondsEachWay)
    : orbs_(orbs), periodMicros_(static_cast<gint64>(secondsEachWay * 1e6)),
      widget_(GObjectRef<GtkWidget>::retain(
          GTK_WIDGET(g_object_new(OVEL_TYPE_DRIFTING_ORBS_WIDGET, nullptr)))) {
    OVEL_DRIFTING_ORBS_WIDGET(widget_.get())->owner = this;
    gtk_widget_set_can_target(widget_.get(), false);
    gtk_widget_set_hexpand(widget_.get(), true);
    gtk_widget_set_vexpand(widget_.get(), true);
    gtk_widget_set_overflow(widget_.get(), GTK_OVERFLOW_HIDDEN);
    // 0 to 1 from the old colours to the new.
    AdwAnimationTarget* target = adw_callback_animation_target_new(
        +[](double value, gpointer self) {
            static_cast<DriftingOrbs*>(self)->setTransition(value);
        },
        this, nullptr);
    AdwSpringParams* spring =
        adw_spring_params_new(springDamping, 1.0, std::pow(2 * G_PI / springResponse, 2));
    // The animation takes over the spring and the target.
    transition_ = GObjectRef<AdwAnimation>::adopt(
        adw_spring_animation_new(widget_.get(), 0, 1, spring, target));
    adw_spring_animation_set_clamp(ADW_SPRING_ANIMATION(transition_.get()), true);
}

DriftingOrbs::~DriftingOrbs() {
    adw_animation_reset(transition_.get());
    if (tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_.get(), tickId_);
    }
    OVEL_DRIFTING_ORBS_WIDGET(widget_.get())->owner = nullptr;
}

void DriftingOrbs::styleChanged() {
    std::array<GdkRGBA, 2> colours{};
    GtkStyleContext* context = gtk_widget_get_style_context(widget_.get());
    for (std::size_t i = 0; i < colours.size(); ++i) {
        if (!gtk_style_context_lookup_color(context, orbs_[i].colourName, &colours[i])) {
            colours[i] = GdkRGBA{1, 1, 1, 0.2f};
        }
    }
    if (haveColours_ && same(colours, to_)) {
        return;
    }
    from_ = haveColours_ ? shown_ : colours;
    to_ = colours;
    const bool animate =
        haveColours_ && themeChange_ == ThemeChange::Spring && gtk_widget_get_mapped(widget_.get());
    haveColours_ = true;
    if (animate) {
        adw_animation_play(transition_.get());
    } else {
        adw_animation_reset(transition_.get());
        setTransition(1);
    }
}

void DriftingOrbs::setTransition(double progress) {
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        shown_[i] = mix(from_[i], to_[i], progress);
    }
    gtk_widget_queue_draw(widget_.get());
}

void DriftingOrbs::mapped() {
    if (tickId_ == 0) {
        tickId_ = gtk_widget_add_tick_callback(widget_.get(), &DriftingOrbs::onTick, this, nullptr);
    }
}

void DriftingOrbs::unmapped() {
    if (tickId_ != 0) {
        gtk_widget_remove_tick_callback(widget_.get(), tickId_);
        tickId_ = 0;
    }
}

gboolean DriftingOrbs::onTick(GtkWidget*, GdkFrameClock* clock, gpointer self) {
    static_cast<DriftingOrbs*>(self)->tick(gdk_frame_clock_get_frame_time(clock));
    return G_SOURCE_CONTINUE;
}

void DriftingOrbs::tick(gint64 frameTime) {
    if (startTime_ == 0) {
        // The drift starts when the orbs are first shown.
        startTime_ = frameTime;
    }
    if (frameTime - lastDrawTime_ < frameMicros) {
        return;
    }
    lastDrawTime_ = frameTime;
    // Out and back, each way one period long.
    const gint64 phase = (frameTime - startTime_) % (2 * periodMicros_);
    const double t = phase < periodMicros_ ? double(phase) / double(periodMicros_)
                                           : 2 - double(phase) / double(periodMicros_);
    eased_ = easeInOut(t);
    gtk_widget_queue_draw(widget_.get());
}

const DriftingOrbs::Mask& DriftingOrbs::maskFor(const Orb& orb, int scale) {
    struct Masks {
        std::map<std::tuple<double, double, int>, Mask> byShape;
        ~Masks() {
            for (auto& [shape, mask] : byShape) {
                cairo_surface_destroy(mask.surface);
            }
        }
    };
    static Masks masks;
    Mask& mask = masks.byShape[{orb.diameter, orb.blurRadius, scale}];
    if (mask.surface == nullptr) {
        mask.surface = renderOrbMask(orb.diameter, orb.blurRadius, scale, mask.size);
    }
    return mask;
}

void DriftingOrbs::snapshot(GtkSnapshot* snapshot) {
    if (!haveColours_) {
        styleChanged();
    }
    const double width = gtk_widget_get_width(widget_.get());
    const double height = gtk_widget_get_height(widget_.get());
    if (width <= 0 || height <= 0) {
        return;
    }
    const int scale = gtk_widget_get_scale_factor(widget_.get());
    graphene_rect_t bounds = GRAPHENE_RECT_INIT(0, 0, float(width), float(height));
    cairo_t* cr = gtk_snapshot_append_cairo(snapshot, &bounds);
    for (std::size_t i = 0; i < orbs_.size(); ++i) {
        const Orb& orb = orbs_[i];
        const Mask& mask = maskFor(orb, scale);
        const double x = width / 2 + orb.restX + (orb.driftX - orb.restX) * eased_ - mask.size / 2;
        const double y = height / 2 + orb.restY + (orb.driftY - orb.restY) * eased_ - mask.size / 2;
        const GdkRGBA& colour = shown_[i];
        cairo_set_source_rgba(cr, colour.red, colour.green, colour.blue,
                              colour.alpha * orb.opacity);
        // Whole device pixels, so the mask is copied, never resampled.
        cairo_mask_surface(cr, mask.surface, std::round(x * scale) / scale,
                           std::round(y * scale) / scale);
    }
    cairo_destroy(cr);
}

} // namespace ovel
