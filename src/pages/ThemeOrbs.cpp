#include "pages/ThemeOrbs.h"

#include "presentation/ThemeColors.h"

namespace ovel {

OrbPalette themeOrbPalette(BrowserTheme theme) {
    const ThemeColors colors = themeColors(theme);
    OrbPalette palette;
    for (std::size_t i = 0; i < palette.orbs.size(); ++i) {
        const Rgba& color = colors.orbColors[i];
        palette.orbs[i] = {color.red, color.green, color.blue, color.alpha};
    }
    return palette;
}

} // namespace ovel
