#include "presentation/ThemeColors.h"

namespace ovel {

namespace {

constexpr Rgba rgb(int red, int green, int blue) {
    return {red / 255.0, green / 255.0, blue / 255.0, 1.0};
}

constexpr Rgba rgb(double red, double green, double blue) {
    return {red, green, blue, 1.0};
}

Gradient gradient(Rgba first, Rgba second) {
    return {{first, second, Rgba{}}, 2};
}
Gradient gradient(Rgba first, Rgba second, Rgba third) {
    return {{first, second, third}, 3};
}

} // namespace

// The named colours are the system palette the design was drawn with, in its dark appearance
// (the chrome is always dark glass): white and black exact, gray the neutral system gray
// (142, 142, 147), and the hues as the dark appearance shows them, e.g. blue (10, 132, 255) and
// orange (255, 159, 10). GNOME's palette has no cyan or pink, so it could not stand in for them.
Rgba namedColor(NamedColor color, double opacity) {
    Rgba value;
    switch (color) {
    case NamedColor::White:
        value = rgb(255, 255, 255);
        break;
    case NamedColor::Black:
        value = rgb(0, 0, 0);
        break;
    case NamedColor::Gray:
        value = rgb(142, 142, 147);
        break;
    case NamedColor::Blue:
        value = rgb(10, 132, 255);
        break;
    case NamedColor::Cyan:
        value = rgb(100, 210, 255);
        break;
    case NamedColor::Green:
        value = rgb(48, 209, 88);
        break;
    case NamedColor::Purple:
        value = rgb(191, 90, 242);
        break;
    case NamedColor::Yellow:
        value = rgb(255, 214, 10);
        break;
    case NamedColor::Orange:
        value = rgb(255, 159, 10);
        break;
    case NamedColor::Pink:
        value = rgb(255, 55, 95);
        break;
    }
    return value.withAlpha(opacity);
}

ThemeColors themeColors(BrowserTheme theme) {
    using enum NamedColor;
    switch (theme) {
    case BrowserTheme::Midnight:
        return {gradient(namedColor(Black, 0.94), namedColor(Gray, 0.7)),
                namedColor(White, 0.85),
                {namedColor(White, 0.2), namedColor(Blue, 0.25)},
                FontDesign::Rounded};
    case BrowserTheme::Ocean:
        return {gradient(rgb(0.02, 0.18, 0.28), rgb(0.06, 0.42, 0.55)),
                rgb(0.48, 0.83, 1.0),
                {namedColor(Cyan, 0.3), namedColor(Blue, 0.25)},
                FontDesign::Rounded};
    case BrowserTheme::Sunrise:
        return {gradient(rgb(0.38, 0.18, 0.10), rgb(0.93, 0.53, 0.32)),
                rgb(1.0, 0.78, 0.62),
                {namedColor(Orange, 0.35), namedColor(Pink, 0.3)},
                FontDesign::Serif};
    case BrowserTheme::Aurora:
        return {gradient(rgb(0.04, 0.19, 0.16), rgb(0.08, 0.30, 0.52), rgb(0.29, 0.17, 0.46)),
                rgb(0.69, 0.94, 0.84),
                {namedColor(Green, 0.28), namedColor(Purple, 0.22)},
                FontDesign::Rounded};
    case BrowserTheme::Graphite:
        return {gradient(rgb(0.09, 0.09, 0.11), rgb(0.21, 0.23, 0.27), rgb(0.33, 0.33, 0.37)),
                rgb(0.86, 0.87, 0.92),
                {namedColor(White, 0.15), namedColor(Gray, 0.2)},
                FontDesign::Rounded};
    case BrowserTheme::Citrus:
        return {gradient(rgb(0.15, 0.20, 0.06), rgb(0.60, 0.63, 0.12), rgb(0.95, 0.57, 0.19)),
                rgb(1.0, 0.92, 0.49),
                {namedColor(Yellow, 0.24), namedColor(Orange, 0.26)},
                FontDesign::Serif};
    }
    return themeColors(BrowserTheme::Midnight);
}

} // namespace ovel
