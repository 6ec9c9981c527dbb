#include "pages/OvelAboutPageNative.h"

#include "pages/OvelInfoRow.h"
#include "pages/OvelInternalPageShell.h"
#include "presentation/InternalPages.h"
#include "state/BrowserState.h"
#include "widgets/IconButton.h"

namespace ovel {

namespace {

struct PageLink {
    const char* symbol;
    const char* help;
    const char* address;
};

constexpr PageLink pageLinks[] = {
    {"gearshape", "Open Settings", "ovel://settings"},
    {"arrow.down.circle", "Open Downloads", "ovel://downloads"},
    {"clock.arrow.trianglehead.counterclockwise.rotate.90", "Open History", "ovel://history"},
    {"square.stack.3d.up", "Open Workspaces", "ovel://workspaces"},
};

} // namespace

OvelAboutPageNative::OvelAboutPageNative(BrowserState& state) : state_(state) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_widget_add_css_class(content, "ovel-about-page");
    for (auto& line : lines_) {
        line = std::make_unique<OvelInfoRow>("");
        gtk_box_append(GTK_BOX(content), line->widget());
    }
    GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const char* address = pageLinks[i].address;
        buttons_[i] =
            std::make_unique<IconButton>(pageLinks[i].symbol, IconButton::square(pageLinks[i].help),
                                         [this, address] { state_.openURL(address); });
        gtk_box_append(GTK_BOX(buttons), buttons_[i]->widget());
    }
    gtk_box_append(GTK_BOX(content), buttons);
    shell_ = std::make_unique<OvelInternalPageShell>(state, "ovel://about",
                                                     "Ovel Web status and quick actions", content);
    showCounts();
    connections_.add(state_.profiles.changed().connect([this](auto&) { showCounts(); }));
    connections_.add(state_.tabs.changed().connect([this](auto&) { showCounts(); }));
    connections_.add(state_.historyEntries.changed().connect([this](auto&) { showCounts(); }));
    connections_.add(state_.downloads.changed().connect([this](auto&) { showCounts(); }));
}

OvelAboutPageNative::~OvelAboutPageNative() = default;

GtkWidget* OvelAboutPageNative::widget() const {
    return shell_->widget();
}

void OvelAboutPageNative::showCounts() {
    const auto lines = aboutLines({state_.profiles->size(), state_.tabs->size(),
                                   state_.historyEntries->size(), state_.downloads->size()});
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines_[i]->setText(lines[i]);
    }
}

} // namespace ovel
