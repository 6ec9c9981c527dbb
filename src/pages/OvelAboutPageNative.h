#pragma once

#include "web/Connections.h"

#include <gtk/gtk.h>

#include <array>
#include <memory>

namespace ovel {

class BrowserState;
class IconButton;
class OvelInfoRow;
class OvelInternalPageShell;

// ovel://about: live counts of profiles, tabs, history entries and downloads, and buttons to
// the other internal pages.
class OvelAboutPageNative {
public:
    explicit OvelAboutPageNative(BrowserState& state);
    ~OvelAboutPageNative();
    OvelAboutPageNative(const OvelAboutPageNative&) = delete;
    OvelAboutPageNative& operator=(const OvelAboutPageNative&) = delete;

    GtkWidget* widget() const;

private:
    void showCounts();

    BrowserState& state_;
    std::array<std::unique_ptr<OvelInfoRow>, 4> lines_;
    std::array<std::unique_ptr<IconButton>, 4> buttons_;
    std::unique_ptr<OvelInternalPageShell> shell_;
    Connections connections_;
};

} // namespace ovel
