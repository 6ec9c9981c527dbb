#pragma once

#include "records/Records.h"

#include <string>
#include <string_view>

namespace ovel {

// The CSS colours of the start page for one theme.
struct StartPagePalette {
    std::string_view bgA;
    std::string_view bgB;
    std::string_view glowA;
    std::string_view glowB;
    std::string_view text;
    std::string_view subtext;
    std::string_view card;
    std::string_view border;
};

StartPagePalette startPagePalette(BrowserTheme theme);

// The start page's HTML document for `theme`.
std::string startPageHTML(BrowserTheme theme);

} // namespace ovel
