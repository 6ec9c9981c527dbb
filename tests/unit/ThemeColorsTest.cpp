#include "presentation/ThemeColors.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace ovel {
namespace {

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
}

} // namespace
} // namespace ovel
