#pragma once

#include "gutil/GLibTimer.h"
#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <array>
#include <cstdint>
#include <memory>

namespace ovel {

// The two blurred orbs behind a sheet's content, breathing between their resting and spread-out
// places (6 s each way, eased). Each orb is blurred once per colour into an image surface and
// then only painted at whole-pixel offsets, 18 times a second while the layer is on screen; the
// colours are the theme's named colours @ovel_orb_a and @ovel_orb_b.
class SheetOrbs {
public:
    SheetOrbs();
    SheetOrbs(const SheetOrbs&) = delete;
    SheetOrbs& operator=(const SheetOrbs&) = delete;

    GtkWidget* widget() const { return area_.get(); }

private:
    struct SurfaceRelease {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    using Surface = std::unique_ptr<cairo_surface_t, SurfaceRelease>;
    struct Orb {
        GdkRGBA colour{};
        Surface surface;
    };

    static void drawThunk(GtkDrawingArea* area, cairo_t* cr, int width, int height, void* self);
    void draw(cairo_t* cr, int width, int height);
    void scheduleFrame();
    // Brings `orb` to the theme's current colour, blurring it again only when that changed.
    void refresh(Orb& orb, const char* colourName, int diameter, double blurRadius);
    // How far the orbs are between resting (0) and spread out (1) now.
    double breath() const;

    GObjectRef<GtkWidget> area_;
    GSignalConnections signals_;
    GLibTimer frameTimer_;
    std::array<Orb, 2> orbs_;
    std::int64_t startTime_ = 0;
};

} // namespace ovel
