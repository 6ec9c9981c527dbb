#include "web/StartPage.h"

namespace ovel {

namespace {

// Slots are marked [[name]] and filled from the palette.
constexpr std::string_view startPageTemplate = R"HTML(<!doctype html>
<html lang="en">
<head>
  <meta charset="utf-8" />
  <meta name="viewport" content="width=device-width, initial-scale=1" />
  <style>
    :root { color-scheme: dark; }
    * { box-sizing: border-box; }
    body {
      margin: 0;
      min-height: 100vh;
      font-family: -apple-system, BlinkMacSystemFont, "SF Pro Display", "SF Pro Text", sans-serif;
      color: [[text]];
      background:
        radial-gradient(800px 420px at 18% 12%, [[glowA]], transparent 60%),
        radial-gradient(640px 360px at 82% 84%, [[glowB]], transparent 60%),
        linear-gradient(135deg, [[bgA]] 0%, [[bgB]] 100%);
      display: grid;
      place-items: center;
    }
    .shell {
      width: min(920px, 92vw);
      padding: 28px;
      border-radius: 28px;
      background: linear-gradient(180deg, [[card]], rgba(255,255,255,0.04));
      border: 1px solid [[border]];
      backdrop-filter: blur(18px) saturate(140%);
      box-shadow: 0 24px 56px rgba(0,0,0,0.42);
    }
    .title { margin: 0 0 8px; font-weight: 680; font-size: clamp(34px, 5vw, 52px); letter-spacing: -0.04em; }
    .sub { margin: 0 0 22px; color: [[subtext]]; font-size: clamp(15px, 2.2vw, 19px); }
    .quote {
      margin: 0;
      padding: 20px 22px;
      border-radius: 20px;
      border: 1px solid rgba(255,255,255,0.16);
      background: rgba(255,255,255,0.06);
      line-height: 1.35;
      font-size: clamp(18px, 2.5vw, 25px);
      letter-spacing: -0.01em;
      font-weight: 560;
    }
    .quote::before { content: "“"; color: rgba(255,255,255,0.68); margin-right: 4px; }
    .quote::after { content: "”"; color: rgba(255,255,255,0.68); margin-left: 4px; }
  </style>
</head>
<body>
  <main class="shell">
    <h1 class="title">Ovel Web</h1>
    <p class="sub">New Tab</p>
    <p class="quote">Experience the fastest, most secure web browser for Linux. Lightweight, powerful, and beautifully designed for modern browsing.</p>
  </main>
</body>
</html>)HTML";

std::string_view slotValue(const StartPagePalette& palette, std::string_view slot) {
    if (slot == "bgA")
        return palette.bgA;
    if (slot == "bgB")
        return palette.bgB;
    if (slot == "glowA")
        return palette.glowA;
    if (slot == "glowB")
        return palette.glowB;
    if (slot == "text")
        return palette.text;
    if (slot == "subtext")
        return palette.subtext;
    if (slot == "card")
        return palette.card;
    if (slot == "border")
        return palette.border;
    return {};
}

} // namespace

StartPagePalette startPagePalette(BrowserTheme theme) {
    switch (theme) {
    case BrowserTheme::Midnight:
        return {"#080d18",
                "#151826",
                "rgba(115,145,255,0.36)",
                "rgba(90,220,255,0.2)",
                "#f2f5ff",
                "rgba(235,241,255,0.84)",
                "rgba(255,255,255,0.08)",
                "rgba(255,255,255,0.2)"};
    case BrowserTheme::Ocean:
        return {"#032638",
                "#0e3f57",
                "rgba(72,202,255,0.34)",
                "rgba(0,163,255,0.22)",
                "#ecf8ff",
                "rgba(223,242,255,0.82)",
                "rgba(255,255,255,0.09)",
                "rgba(165,230,255,0.35)"};
    case BrowserTheme::Sunrise:
        return {"#401f13",
                "#c76437",
                "rgba(255,177,115,0.32)",
                "rgba(255,108,125,0.24)",
                "#fff5ea",
                "rgba(255,240,223,0.84)",
                "rgba(255,255,255,0.1)",
                "rgba(255,228,198,0.34)"};
    case BrowserTheme::Aurora:
        return {"#0b2a22",
                "#1b2952",
                "rgba(112,255,208,0.3)",
                "rgba(154,117,255,0.2)",
                "#f0fffa",
                "rgba(224,248,240,0.82)",
                "rgba(255,255,255,0.09)",
                "rgba(183,255,234,0.3)"};
    case BrowserTheme::Graphite:
        return {"#101116",
                "#33363f",
                "rgba(185,191,222,0.24)",
                "rgba(138,154,194,0.2)",
                "#f1f3fb",
                "rgba(225,230,242,0.8)",
                "rgba(255,255,255,0.08)",
                "rgba(211,216,232,0.28)"};
    case BrowserTheme::Citrus:
        return {"#222c0d",
                "#d08f33",
                "rgba(255,226,97,0.3)",
                "rgba(255,154,82,0.22)",
                "#fffce9",
                "rgba(255,245,212,0.84)",
                "rgba(255,255,255,0.1)",
                "rgba(255,239,171,0.34)"};
    }
    return startPagePalette(BrowserTheme::Midnight);
}

std::string startPageHTML(BrowserTheme theme) {
    const StartPagePalette palette = startPagePalette(theme);
    std::string html;
    html.reserve(startPageTemplate.size() + 256);
    std::string_view rest = startPageTemplate;
    while (true) {
        const auto open = rest.find("[[");
        if (open == std::string_view::npos) {
            html.append(rest);
            break;
        }
        const auto close = rest.find("]]", open);
        html.append(rest.substr(0, open));
        html.append(slotValue(palette, rest.substr(open + 2, close - open - 2)));
        rest.remove_prefix(close + 2);
    }
    return html;
}

} // namespace ovel
