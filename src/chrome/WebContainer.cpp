#include "chrome/WebContainer.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

#include <utility>

namespace ovel {

namespace {

// The fade between two tabs' pages: about as long as the spring it stands for (response 0.3 s).
constexpr guint crossFadeMilliseconds = 300;

} // namespace

WebContainer::WebContainer(BrowserState& state, WidgetResolver resolver, PageMaker pages)
    : state_(state), resolver_(std::move(resolver)), pages_(std::move(pages)), troublePage_(state),
      root_(GObjectRef<GtkWidget>::retain(gtk_stack_new())) {
    // Another tab's page fades in over the last one. The stack keeps a picture of the page it
    // leaves, so the page widget itself is taken out at once.
    gtk_stack_set_transition_type(GTK_STACK(widget()), GTK_STACK_TRANSITION_TYPE_CROSSFADE);
    gtk_stack_set_transition_duration(GTK_STACK(widget()), crossFadeMilliseconds);
    gtk_stack_set_interpolate_size(GTK_STACK(widget()), FALSE);
    gtk_widget_add_css_class(widget(), "web-container");
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_vexpand(widget(), TRUE);
    gtk_widget_set_overflow(widget(), GTK_OVERFLOW_HIDDEN);
    // Only a change of the selected tab swaps the page: a tab closed or moved elsewhere in the
    // strip leaves the page on show alone.
    connections_.add(state_.selectionChanged.connect([this](const SelectionChange& change) {
        if (change.newTab != change.oldTab) {
            shownRoute_.reset();
            showSelectedTab();
        }
    }));
    // The selected tab opening or leaving an internal page, or its page crashing, failing or
    // coming back.
    connections_.add(state_.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        const auto selected = state_.selectedTab();
        if (!selected || selected->id() != tab.id()) {
            return;
        }
        if ((fields.has(TabField::DisplayAddress) &&
             pageForDisplayAddress(tab.displayAddress.get()) != shownRoute_) ||
            fields.has(TabField::Crashed) || fields.has(TabField::Failure)) {
            showSelectedTab();
        }
    }));
    showSelectedTab();
}

WebContainer::~WebContainer() {
    connections_.disconnectAll();
    show(nullptr);
    retire_.cancel();
}

void WebContainer::showSelectedTab() {
    const auto tab = state_.selectedTab();
    const std::optional<InternalPage> route =
        tab && pages_ ? pageForDisplayAddress(tab->displayAddress.get()) : std::nullopt;
    PageView leaving = std::exchange(shownPageView_, {});
    shownRoute_ = route;
    if (route) {
        shownPageView_ = pages_(*route);
        show(shownPageView_.widget);
    } else if (tab &&
               (tab->hasCrashed.get() || tab->isUnresponsive.get() || tab->loadFailure.get())) {
        troublePage_.showFor(*tab);
        show(troublePage_.widget());
    } else {
        show(tab ? resolver_(*tab) : nullptr);
    }
    if (leaving.owner) {
        retiring_.push_back(std::move(leaving.owner));
        retire_.start(std::chrono::milliseconds(0), [this] { retiring_.clear(); });
    }
}

void WebContainer::show(GtkWidget* page) {
    if (page == shown_.get()) {
        return;
    }
    // Our own reference keeps a closed tab's view valid until it is taken out here.
    GObjectRef<GtkWidget> leaving = std::exchange(shown_, GObjectRef<GtkWidget>::retain(page));
    if (shown_) {
        gtk_widget_set_hexpand(page, TRUE);
        gtk_widget_set_vexpand(page, TRUE);
        gtk_stack_add_child(GTK_STACK(widget()), page);
        gtk_stack_set_visible_child(GTK_STACK(widget()), page);
    }
    if (leaving) {
        gtk_stack_remove(GTK_STACK(widget()), leaving.get());
    }
}

} // namespace ovel
