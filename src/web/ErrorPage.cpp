#include "web/ErrorPage.h"

namespace ovel {

std::string escapedForHTML(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string certificateErrorPageHTML(std::string_view host, std::string_view problem) {
    const std::string site = escapedForHTML(host);
    return "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\" />\n"
           "<title>Not a secure connection</title>\n<style>\n"
           ":root { color-scheme: dark; }\n"
           "body { margin: 0; min-height: 100vh; display: grid; place-items: center;"
           " font-family: Inter, sans-serif; color: #f2f5ff;"
           " background: linear-gradient(135deg, #2a0f14 0%, #151826 100%); }\n"
           "main { width: min(640px, 90vw); padding: 28px; border-radius: 24px;"
           " background: rgba(255,255,255,0.07); border: 1px solid rgba(255,140,140,0.35); }\n"
           "h1 { margin: 0 0 12px; font-size: 28px; }\n"
           "p { margin: 0 0 10px; line-height: 1.45; color: rgba(242,245,255,0.86); }\n"
           "code { font-size: 15px; }\n</style>\n</head>\n<body>\n<main>\n"
           "<h1>Not a secure connection</h1>\n"
           "<p>Ovel Web did not open <code>" +
           site + "</code>: its certificate cannot be trusted.</p>\n<p>" + escapedForHTML(problem) +
           "</p>\n<p>Someone could be pretending to be this site to read what you send it. "
           "Nothing of the page was shown.</p>\n</main>\n</body>\n</html>";
}

} // namespace ovel
