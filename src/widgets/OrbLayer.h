#pragma once

#include "gutil/Spring.h"
#include "widgets/AnimatedValue.h"
#include "widgets/OrbImage.h"

#include <cairo.h>
#include <gtk/gtk.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace ovel {

// One orb: its size, its blur (GTK's blur-node radius), its opacity, and where its centre rests
// and spreads to, as offsets from the centre of the layer.
struct Orb {
    double diameter;
    double blurRadius;
    double opacity;
    double restX, restY;
    double spreadX, spreadY;
};

// The orbs of a layer, and how long they take to glide from rest to spread out, and back.
struct OrbLayout {
    std::array<Orb, 2> orbs;
    double secondsEachWay;
};

// The window's orbs; the sheets show the same.
inline constexpr OrbLayout windowOrbLayout{{{
                                               {480, 40, 1, 170, -70, 320, -180},
                                               {420, 36, 1, -120, 80, -280, 220},
                                           }},
                                           6};

// What a layer is painted in: a colour for each orb and, if any, the gradient under them.
struct OrbPalette {
    std::array<LayerColor, 2> orbs;
    // From the top-left corner to the bottom-right one, stops evenly spaced; empty draws none.
    std::vector<LayerColor> gradient;

    friend bool operator==(const OrbPalette&, const OrbPalette&) = default;
};

// Large blurred orbs gliding between their resting and spread-out offsets, eased in and out,
// behind the window, the sheets and the internal pages.
//
// Drawing is kept cheap (a few per cent of a core on the cairo renderer): each orb is blurred
// once per size, colour and scale into an image that every layer shares, then only copied at
// whole device pixels; nothing is drawn where an opaque widget covers the layer; and a frame is
// drawn only when an orb has moved a whole device pixel, at most about ten times a second, which
// at their speed looks the same as sixty. The clock stops while the layer is not shown or
// its window is minimised, and the orbs rest while the desktop asks for no animations.
class OrbLayer {
public:
    explicit OrbLayer(const OrbLayout& layout);
    ~OrbLayer();

    OrbLayer(const OrbLayer&) = delete;
    OrbLayer& operator=(const OrbLayer&) = delete;

    GtkWidget* widget() const { return widget_.get(); }

    // Shows `palette` at once.
    void setPalette(const OrbPalette& palette);
    // Fades from what is shown to `palette`, old images fading out as the new fade in: on
    // `spring`, or in 0.01 s when not smooth.
    void fadeToPalette(const OrbPalette& palette, Spring spring, bool smooth);
    // The widget laid over this layer that hides it (a rectangle with rounded corners of
    // `cornerRadius`): the orbs are not drawn under it. Null draws everywhere.
    void setCoveringWidget(GtkWidget* cover, double cornerRadius);

    // Whether the clock is running now (shown, not minimised, animations allowed).
    bool isTicking() const { return tickId_ != 0; }
    // How far the orbs are between resting (0) and spread out (1).
    double spread() const { return spread_; }
    // Whether a palette is still fading in.
    bool isChangingTheme() const { return previous_.has_value(); }
    // How many frames the layer has drawn; for tests and benchmarks.
    std::uint64_t framesDrawn() const { return framesDrawn_; }

    // Called by the widget.
    void snapshot(GtkSnapshot* snapshot);
    void updateClock();

private:
    using Images = std::array<std::shared_ptr<const OrbImage>, 2>;
    using Origins = std::array<std::array<int, 2>, 2>;

    static gboolean onTick(GtkWidget* widget, GdkFrameClock* clock, gpointer self);
    void tick(std::int64_t frameTime);
    void endFade();
    // Where each orb's image goes at `spread`, in device pixels.
    Origins originsAt(double spread, int scale) const;
    void fetchImages(Images& images, const OrbPalette& palette, int scale);
    void appendGradient(GtkSnapshot* snapshot, const OrbPalette& palette, double width,
                        double height);
    cairo_region_t* visibleRegion(double width, double height) const;
    bool shouldTick() const;
    void watchToplevel(bool watch);

    OrbLayout layout_;
    GObjectRef<GtkWidget> widget_;
    GtkWidget* cover_ = nullptr;
    double coverRadius_ = 0;

    OrbPalette palette_;
    Images images_;
    int imageScale_ = 0;
    // The palette being left during a fade, and how far the fade has come (0 to 1).
    std::optional<OrbPalette> previous_;
    Images previousImages_;
    AnimatedValue fade_;

    guint tickId_ = 0;
    // Time spent moving before the clock last started, when it started, the last tick and the
    // last tick that moved the orbs (µs).
    std::int64_t elapsedBefore_ = 0;
    std::int64_t runningSince_ = -1;
    std::int64_t lastTick_ = 0;
    std::int64_t lastMove_ = 0;
    double spread_ = 0;
    // The farthest an orb travels between rest and spread out.
    double longestPath_ = 0;
    std::uint64_t framesDrawn_ = 0;

    GtkSettings* settings_ = nullptr;
    gulong settingsHandler_ = 0;
    GdkSurface* toplevel_ = nullptr;
    gulong toplevelHandler_ = 0;
};

} // namespace ovel
