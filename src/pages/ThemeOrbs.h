#pragma once

#include "records/Records.h"
#include "widgets/OrbLayer.h"

namespace ovel {

// The orbs' colours in `theme`; the sheets and pages draw their gradient with CSS.
OrbPalette themeOrbPalette(BrowserTheme theme);

} // namespace ovel
