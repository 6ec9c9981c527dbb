#include "pages/SheetOrbs.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ovel {
namespace {

struct OrbGeometry {
    const char* colourName;
    int diameter;
    double blurRadius;
    double restX, restY;
    double spreadX, spreadY;
};
constexpr OrbGeometry geometry[2] = {
    {"ovel_orb_a", 480, 40, 170, -70, 320, -180},
    {"ovel_orb_b", 420, 36, -120, 80, -280, 220},
};
constexpr std::chrono::milliseconds framePeriod(55);
constexpr double breathSeconds = 6.0;

// Three box blurs along one axis of an 8-bit mask, close to a Gaussian of deviation `sigma`
// (three boxes of 2r+1 pixels have a variance of r(r+1)).
void boxBlur(unsigned char* data, int width, int height, int stride, double sigma, bool rows) {
    const int radius =
        std::max(1, static_cast<int>(std::lround(std::sqrt(sigma * sigma + 0.25) - 0.5)));
    const int lines = rows ? height : width;
    const int length = rows ? width : height;
    const int step = rows ? 1 : stride;
    std::vector<int> line(static_cast<std::size_t>(length));
    for (int l = 0; l < lines; ++l) {
        unsigned char* start = data + (rows ? l * stride : l);
        for (int pass = 0; pass < 3; ++pass) {
            for (int i = 0; i < length; ++i) {
                line[static_cast<std::size_t>(i)] = start[i * step];
            }
            int sum = 0;
            for (int i = -radius; i <= radius; ++i) {
                sum += (i >= 0 && i < length) ? line[static_cast<std::size_t>(i)] : 0;
            }
            const int window = 2 * radius + 1;
            for (int i = 0; i < length; ++i) {
                start[i * step] = static_cast<unsigned char>(sum / window);
                const int leaving = i - radius;
                const int entering = i + radius + 1;
                sum -= leaving >= 0 ? line[static_cast<std::size_t>(leaving)] : 0;
                sum += entering < length ? line[static_cast<std::size_t>(entering)] : 0;
            }
        }
    }
}

double easeInOutQuad(double t) {
    return t < 0.5 ? 2 * t * t : 1 - std::pow(-2 * t + 2, 2) / 2;
}

} // namespace

SheetOrbs::SheetOrbs() : area_(GObjectRef<GtkWidget>::retain(gtk_drawing_area_new())) {
    GtkWidget* area = area_.get();
    gtk_widget_set_can_target(area, FALSE);
    gtk_widget_set_hexpand(area, TRUE);
    gtk_widget_set_vexpand(area, TRUE);
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), &SheetOrbs::drawThunk, this, nullptr);
    // The frame timer runs only while the orbs are on screen.
    signals_.connect(area, "map", [this](GtkWidget*) { scheduleFrame(); });
    signals_.connect(area, "unmap", [this](GtkWidget*) { frameTimer_.cancel(); });
}

void SheetOrbs::scheduleFrame() {
    frameTimer_.start(framePeriod, [this] {
        gtk_widget_queue_draw(area_.get());
        scheduleFrame();
    });
}

double SheetOrbs::breath() const {
    const double seconds = static_cast<double>(g_get_monotonic_time() - startTime_) / 1e6;
    const double cycle = std::fmod(seconds, 2 * breathSeconds) / breathSeconds;
    return easeInOutQuad(cycle <= 1 ? cycle : 2 - cycle);
}

void SheetOrbs::drawThunk(GtkDrawingArea*, cairo_t* cr, int width, int height, void* self) {
    static_cast<SheetOrbs*>(self)->draw(cr, width, height);
}

void SheetOrbs::draw(cairo_t* cr, int width, int height) {
    if (startTime_ == 0) {
        startTime_ = g_get_monotonic_time();
    }
    const double t = breath();
    for (std::size_t i = 0; i < orbs_.size(); ++i) {
        const OrbGeometry& g = geometry[i];
        Orb& orb = orbs_[i];
        refresh(orb, g.colourName, g.diameter, g.blurRadius);
        if (!orb.surface) {
            continue;
        }
        const int size = cairo_image_surface_get_width(orb.surface.get());
        const double centreX = width / 2.0 + g.restX + (g.spreadX - g.restX) * t;
        const double centreY = height / 2.0 + g.restY + (g.spreadY - g.restY) * t;
        // Whole pixels: an image painted at a fraction of a pixel is resampled every frame.
        cairo_set_source_surface(cr, orb.surface.get(), std::round(centreX - size / 2.0),
                                 std::round(centreY - size / 2.0));
        cairo_paint(cr);
    }
}

void SheetOrbs::refresh(Orb& orb, const char* colourName, int diameter, double blurRadius) {
    GdkRGBA colour{};
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    if (!gtk_style_context_lookup_color(gtk_widget_get_style_context(area_.get()), colourName,
                                        &colour)) {
        colour = GdkRGBA{};
    }
    G_GNUC_END_IGNORE_DEPRECATIONS
    if (orb.surface && gdk_rgba_equal(&colour, &orb.colour)) {
        return;
    }
    orb.colour = colour;
    orb.surface.reset();
    if (colour.alpha <= 0) {
        return;
    }
    // The disc, blurred as an alpha mask with room for the blur around it, then tinted. The
    // blur radius reads as twice the Gaussian's deviation.
    const double sigma = blurRadius / 2;
    const int margin = static_cast<int>(std::ceil(sigma * 3));
    const int size = diameter + 2 * margin;
    Surface mask(cairo_image_surface_create(CAIRO_FORMAT_A8, size, size));
    {
        cairo_t* m = cairo_create(mask.get());
        cairo_arc(m, size / 2.0, size / 2.0, diameter / 2.0, 0, 2 * G_PI);
        cairo_fill(m);
        cairo_destroy(m);
    }
    cairo_surface_flush(mask.get());
    unsigned char* data = cairo_image_surface_get_data(mask.get());
    const int stride = cairo_image_surface_get_stride(mask.get());
    boxBlur(data, size, size, stride, sigma, true);
    boxBlur(data, size, size, stride, sigma, false);
    cairo_surface_mark_dirty(mask.get());

    orb.surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size));
    cairo_t* o = cairo_create(orb.surface.get());
    cairo_set_source_rgba(o, colour.red, colour.green, colour.blue, colour.alpha);
    cairo_mask_surface(o, mask.get(), 0, 0);
    cairo_destroy(o);
}

} // namespace ovel
