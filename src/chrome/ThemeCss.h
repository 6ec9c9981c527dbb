#pragma once

#include "presentation/ThemeColors.h"

#include <string>

namespace ovel {

// The part of the chrome's style sheet that depends on the theme: the accent colour, the
// background gradient for surfaces that paint it themselves, and the font family by design.
std::string themeCss(const ThemeColors& colors);

// The font family set for a design; all three come from Debian's font packages.
std::string_view fontFamily(FontDesign design);

} // namespace ovel
