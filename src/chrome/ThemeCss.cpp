#include "chrome/ThemeCss.h"

#include <charconv>

namespace ovel {

namespace {

// CSS numbers are written with std::to_chars: GTK sets the process locale, and printf in a
// locale with a decimal comma would write "0,5".
void appendNumber(std::string& out, double value) {
    char buffer[32];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 3);
    out.append(buffer, result.ptr);
}

std::string cssColor(const Rgba& color) {
    std::string out = "rgba(";
    for (double component : {color.red, color.green, color.blue}) {
        appendNumber(out, component * 255.0);
        out += ", ";
    }
    appendNumber(out, color.alpha);
    out += ")";
    return out;
}

} // namespace

std::string_view fontFamily(FontDesign design) {
    switch (design) {
    case FontDesign::Rounded:
        return "Quicksand";
    case FontDesign::Serif:
        return "Noto Serif";
    case FontDesign::Default:
        return "Inter";
    }
    return "Inter";
}

std::string themeCss(const ThemeColors& colors) {
    std::string css;
    css += "@define-color ovel_accent " + cssColor(colors.accent) + ";\n";
    css +=
        "@define-color ovel_gradient_start " + cssColor(*colors.backgroundGradient.begin()) + ";\n";
    css += "@define-color ovel_gradient_end " + cssColor(*(colors.backgroundGradient.end() - 1)) +
           ";\n";

    // Quicksand is thin at its regular weight; the rounded design sets it semibold.
    css += "window.ovel-window, .ovel-design-font { font-family: \"";
    css += fontFamily(colors.uiDesign);
    css += "\"; font-weight: ";
    css += colors.uiDesign == FontDesign::Rounded ? "600" : "400";
    css += "; }\n";

    css += ".theme-gradient { background-image: linear-gradient(to bottom right";
    for (const Rgba& stop : colors.backgroundGradient) {
        css += ", " + cssColor(stop);
    }
    css += "); }\n";

    css += "window.ovel-window entry > text > selection { background-color: alpha(@ovel_accent, "
           "0.35); }\n"
           "window.ovel-window entry { caret-color: @ovel_accent; }\n"
           "window.ovel-window entry:focus-within { outline-color: alpha(@ovel_accent, 0.6); }\n"
           "window.ovel-window .accent { color: @ovel_accent; }\n";
    return css;
}

} // namespace ovel
