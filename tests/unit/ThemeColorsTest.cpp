#include "web/ThemeColors.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace ovel {
namespace {

// The rows a wrong case label or a swapped orb would break: the font design, how many gradient
// stops, and which named colours at which opacities make the orbs.
TEST(ThemeColors, DesignStopsAndOrbsPerTheme) {
    using enum NamedColor;
    struct Case {
        BrowserTheme theme;
        FontDesign design;
        std::size_t stops;
        Rgba firstOrb;
        Rgba secondOrb;
    };
    const Case cases[] = {
        {BrowserTheme::Midnight, FontDesign::Rounded, 2, namedColor(White, 0.2),
         namedColor(Blue, 0.25)},
        {BrowserTheme::Ocean, FontDesign::Rounded, 2, namedColor(Cyan, 0.3),
         namedColor(Blue, 0.25)},
        {BrowserTheme::Sunrise, FontDesign::Serif, 2, namedColor(Orange, 0.35),
         namedColor(Pink, 0.3)},
        {BrowserTheme::Aurora, FontDesign::Rounded, 3, namedColor(Green, 0.28),
         namedColor(Purple, 0.22)},
        {BrowserTheme::Graphite, FontDesign::Rounded, 3, namedColor(White, 0.15),
         namedColor(Gray, 0.2)},
        {BrowserTheme::Citrus, FontDesign::Serif, 3, namedColor(Yellow, 0.24),
         namedColor(Orange, 0.26)},
    };
    for (const Case& c : cases) {
        const ThemeColors colors = themeColors(c.theme);
        SCOPED_TRACE(std::string(rawValue(c.theme)));
        EXPECT_EQ(colors.uiDesign, c.design);
        EXPECT_EQ(colors.backgroundGradient.count, c.stops);
        EXPECT_EQ(colors.orbColors[0], c.firstOrb);
        EXPECT_EQ(colors.orbColors[1], c.secondOrb);
    }
}

TEST(ThemeColors, EveryThemeHasItsOwnOpaqueGradientAndAccent) {
    std::set<std::tuple<double, double, double>> accents;
    for (BrowserTheme theme : allThemes) {
        const ThemeColors colors = themeColors(theme);
        SCOPED_TRACE(std::string(rawValue(theme)));
        accents.insert({colors.accent.red, colors.accent.green, colors.accent.blue});
        for (const Rgba& stop : colors.backgroundGradient) {
            for (double component : {stop.red, stop.green, stop.blue, stop.alpha}) {
                EXPECT_GE(component, 0.0);
                EXPECT_LE(component, 1.0);
            }
        }
        // Only midnight's stops are translucent; the others are given as opaque components.
        const bool translucent = theme == BrowserTheme::Midnight;
        EXPECT_EQ(colors.backgroundGradient.begin()->alpha < 1.0, translucent);
    }
    EXPECT_EQ(accents.size(), allThemes.size());
    // Spot checks against the table: a component-given stop and a named-colour accent.
    EXPECT_EQ(themeColors(BrowserTheme::Aurora).backgroundGradient.stops[2],
              (Rgba{0.29, 0.17, 0.46, 1.0}));
    EXPECT_EQ(themeColors(BrowserTheme::Midnight).accent, (Rgba{1.0, 1.0, 1.0, 0.85}));
}

} // namespace
} // namespace ovel
