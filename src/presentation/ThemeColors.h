#pragma once

#include "records/Records.h"

#include <array>
#include <cstddef>

namespace ovel {

// An sRGB colour, components and opacity from 0 to 1.
struct Rgba {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    Rgba withAlpha(double opacity) const { return {red, green, blue, opacity}; }
    friend bool operator==(const Rgba&, const Rgba&) = default;
};

// The colours the design names instead of giving components.
enum class NamedColor { White, Black, Gray, Blue, Cyan, Green, Purple, Yellow, Orange, Pink };

Rgba namedColor(NamedColor color, double opacity = 1.0);

// The type face family the chrome's texts are set in.
enum class FontDesign { Default, Rounded, Serif };

// A linear gradient from the top-leading to the bottom-trailing corner, stops evenly spaced.
struct Gradient {
    std::array<Rgba, 3> stops{};
    std::size_t count = 0;

    const Rgba* begin() const { return stops.data(); }
    const Rgba* end() const { return stops.data() + count; }
};

// Everything a view needs to paint itself in one theme.
struct ThemeColors {
    Gradient backgroundGradient;
    Rgba accent;
    std::array<Rgba, 2> orbColors;
    FontDesign uiDesign = FontDesign::Default;
};

ThemeColors themeColors(BrowserTheme theme);

} // namespace ovel
