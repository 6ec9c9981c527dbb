#pragma once

#include "gutil/GObjectRef.h"
#include "records/Records.h"

#include <gtk/gtk.h>

namespace ovel {

// The style of every browser window on a display: the fixed style sheet and icons from the
// chrome's resources, and one provider holding the current theme's generated style sheet,
// replaced whenever the theme changes. Colours never go into widgets one by one.
class ChromeStyle {
public:
    explicit ChromeStyle(GdkDisplay* display);
    ~ChromeStyle();

    ChromeStyle(const ChromeStyle&) = delete;
    ChromeStyle& operator=(const ChromeStyle&) = delete;

    void applyTheme(BrowserTheme theme);

private:
    GdkDisplay* display_;
    GObjectRef<GtkCssProvider> fixed_;
    GObjectRef<GtkCssProvider> theme_;
    bool hasTheme_ = false;
    BrowserTheme appliedTheme_ = BrowserTheme::Midnight;
};

} // namespace ovel
