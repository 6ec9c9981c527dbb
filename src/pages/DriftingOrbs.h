#pragma once

#include "gutil/GObjectRef.h"

#include <adwaita.h>
#include <cairo.h>
#include <gtk/gtk.h>

#include <array>
#include <memory>

namespace ovel {

// Two large blurred circles drifting slowly between two offsets from the centre of the widget,
// coloured by the named CSS colours @ovel_orb_a and @ovel_orb_b.
//
// Drawing is kept cheap: each orb's blurred shape is rendered once per size and scale into an
// alpha mask (cairo image surface) and painted in its colour with gtk_snapshot_append_cairo at
// whole-pixel offsets (the masks are shared by all instances); the drift redraws at about 18 frames
// per second from a tick callback that runs only while the widget is mapped. A theme change
// recolours the masks, moving from the old colours to the new ones with a spring, or at once.
class DriftingOrbs {
public:
    struct Orb {
        const char* colourName;
        double opacity;
        double diameter;
        double blurRadius;
        double restX, restY;
        double driftX, driftY;
    };

    DriftingOrbs(const std::array<Orb, 2>& orbs, double secondsEachWay);
    ~DriftingOrbs();
    DriftingOrbs(const DriftingOrbs&) = delete;
    DriftingOrbs& operator=(const DriftingOrbs&) = delete;

    GtkWidget* widget() const { return widget_.get(); }

    enum class ThemeChange { Spring, Immediate };
    void setThemeChange(ThemeChange change) { themeChange_ = change; }

    // Where the drift is, from 0 (rest) to 1 (spread), eased; for tests and benchmarks.
    double driftPosition() const { return eased_; }
    // The colour each orb is drawn with now.
    const GdkRGBA& shownColour(int orb) const { return shown_[static_cast<std::size_t>(orb)]; }

    // Called by the widget.
    void snapshot(GtkSnapshot* snapshot);
    void styleChanged();
    void mapped();
    void unmapped();

private:
    struct Mask {
        cairo_surface_t* surface = nullptr;
        double size = 0; // in points, the circle plus room for the blur
    };

    static gboolean onTick(GtkWidget* widget, GdkFrameClock* clock, gpointer self);
    void tick(gint64 frameTime);
    // Shared by every instance: a mask depends only on the orb's size, blur and the scale.
    static const Mask& maskFor(const Orb& orb, int scale);
    void setTransition(double progress);

    std::array<Orb, 2> orbs_;
    gint64 periodMicros_;
    GObjectRef<GtkWidget> widget_;
    std::array<GdkRGBA, 2> from_{};
    std::array<GdkRGBA, 2> to_{};
    std::array<GdkRGBA, 2> shown_{};
    bool haveColours_ = false;
    ThemeChange themeChange_ = ThemeChange::Spring;
    GObjectRef<AdwAnimation> transition_;
    guint tickId_ = 0;
    gint64 startTime_ = 0;
    gint64 lastDrawTime_ = 0;
    double eased_ = 0;
};

} // namespace ovel
