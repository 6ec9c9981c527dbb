#pragma once

#include "gutil/GObjectRef.h"
#include "web/Connections.h"
#include "widgets/OrbLayer.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel {

class BrowserState;

// The frame of every internal page: the theme's gradient with two drifting orbs behind a glass
// panel holding the globe, the title, three accent dots, the subtitle and the page's content.
class OvelInternalPageShell {
public:
    // Page: the panel scrolls in the shell. Content: the content scrolls itself (a long list)
    // and is given the height that is left.
    enum class Scrolling { Page, Content };

    OvelInternalPageShell(BrowserState& state, const std::string& title,
                          const std::string& subtitle, GtkWidget* content,
                          Scrolling scrolling = Scrolling::Page);
    ~OvelInternalPageShell();
    OvelInternalPageShell(const OvelInternalPageShell&) = delete;
    OvelInternalPageShell& operator=(const OvelInternalPageShell&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    const OrbLayer& orbs() const { return orbs_; }

private:
    void followSmoothAnimations(bool smooth);

    GObjectRef<GtkWidget> root_;
    OrbLayer orbs_;
    Connections connections_;
};

} // namespace ovel
