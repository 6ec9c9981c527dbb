#pragma once

#include "chrome/OrbImage.h"
#include "records/Records.h"

#include <cairo.h>
#include <gtk/gtk.h>

#include <array>
#include <cstdint>
#include <optional>

namespace ovel {

// The window's background: the theme's gradient and two large blurred orbs that glide between
// their resting and their spread-out offsets, 6 s each way, eased in and out, for as long as
// `breathe` is on.
//
// Drawing is kept cheap (a few per cent of a core on the cairo renderer): each orb is blurred
// once per theme and scale into an image surface and then only copied, at whole-pixel
// positions; nothing is drawn where the opaque page covers the layer; and the orbs move at most
// 20 times a second, which at their speed looks the same as 60. The clock stops while the
// window is not shown, and the orbs rest while the desktop asks for no animations.
class AnimatedOrbs {
public:
    AnimatedOrbs();
    ~AnimatedOrbs();

    AnimatedOrbs(const AnimatedOrbs&) = delete;
    AnimatedOrbs& operator=(const AnimatedOrbs&) = delete;

    GtkWidget* widget() const;

    // Shows `theme` at once.
    void setTheme(BrowserTheme theme);
    // Shows `theme` over the current one, by `setThemeBlend` from 0 (the old theme) to 1 (the
    // new one), until `endThemeChange`. Whoever shows the layer runs that animation.
    void beginThemeChange(BrowserTheme theme);
    void setThemeBlend(double blend);
    void endThemeChange();
    void setBreathe(bool breathe);
    // The opaque page laid over this layer (a rectangle with rounded corners of
    // `cornerRadius`): the orbs are not drawn under it. Null draws everywhere.
    void setCoveringWidget(GtkWidget* cover, double cornerRadius);

    // Whether the breathing clock is running now (breathe on, shown, animations allowed).
    bool isTicking() const { return tickId_ != 0; }
    // How far the orbs are between resting (0) and spread out (1).
    double spread() const { return spread_; }
    // Whether a theme change is still fading in.
    bool isChangingTheme() const { return previousTheme_.has_value(); }
    // How many frames the layer has drawn; for tests and benchmarks.
    std::uint64_t framesDrawn() const { return framesDrawn_; }

    // Called by the widget.
    void snapshot(GtkSnapshot* snapshot);
    void updateClock();

private:
    static gboolean onTick(GtkWidget* widget, GdkFrameClock* clock, gpointer self);
    void tick(std::int64_t frameTime);
    using OrbPair = std::array<OrbImage, 2>;
    void renderOrbs(OrbPair& orbs, BrowserTheme theme);
    void appendGradient(GtkSnapshot* snapshot, BrowserTheme theme, double width, double height);
    cairo_region_t* visibleRegion(double width, double height) const;
    bool shouldTick() const;
    void watchToplevel(bool watch);

    GtkWidget* widget_;
    BrowserTheme theme_ = BrowserTheme::Midnight;
    bool breathe_ = false;
    GtkWidget* cover_ = nullptr;
    double coverRadius_ = 0;

    OrbPair orbs_;
    int orbScale_ = 0;
    // The theme being left during a theme change, and how far the change has come.
    std::optional<BrowserTheme> previousTheme_;
    OrbPair previousOrbs_;
    double themeBlend_ = 1;

    guint tickId_ = 0;
    // Time spent breathing before the clock last started, and when it started (µs).
    std::int64_t elapsedBefore_ = 0;
    std::int64_t runningSince_ = -1;
    std::int64_t lastFrame_ = 0;
    double spread_ = 0;
    std::uint64_t framesDrawn_ = 0;

    GtkSettings* settings_ = nullptr;
    gulong settingsHandler_ = 0;
    GdkSurface* toplevel_ = nullptr;
    gulong toplevelHandler_ = 0;
};

} // namespace ovel
