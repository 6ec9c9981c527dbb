#include "chrome/ToolbarView.h"

#include "presentation/ToolbarState.h"
#include "state/BrowserState.h"

namespace ovel {

namespace {

GtkWidget* flexibleSpace() {
    GtkWidget* space = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_hexpand(space, TRUE);
    return space;
}

} // namespace

ToolbarView::ToolbarView(BrowserState& state)
    : state_(state), root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_VERTICAL, 6))),
      row_(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10)), addressField_(state) {
    gtk_widget_add_css_class(widget(), "toolbar-view");
    gtk_widget_set_valign(row_, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(widget()), row_);
    gtk_box_append(GTK_BOX(widget()), progressBar_.widget());

    addButton("sidebar.left", {"Show Sidebar"}, [this] { state_.toggleSidebar(); });
    back_ = &addButton("chevron.left", {"Back"}, [this] { state_.goBack(); });
    forward_ = &addButton("chevron.right", {"Forward"}, [this] { state_.goForward(); });
    addButton("house", {"Home"}, [this] { state_.openHome(); });
    addButton("plus", {"New Tab"}, [this] { state_.newTab(); });
    close_ =
        &addButton("xmark", {"Close Tab"}, [this] { state_.closeTab(state_.selectedIndex.get()); });
    addButton("square.grid.2x2", {"Tab Overview"}, [this] { state_.setShowTabOverview(true); });
    addButton("command", {"Command Palette", "Command Palette"},
              [this] { state_.setShowCommandPalette(true); });
    addButton("magnifyingglass", {"Find in Page"}, [this] { state_.toggleFindBar(); });
    gtk_box_append(GTK_BOX(row_), flexibleSpace());
    gtk_box_append(GTK_BOX(row_), addressField_.widget());
    gtk_box_append(GTK_BOX(row_), flexibleSpace());
    addButton("bookmark", {"Add Bookmark"}, [this] { state_.addBookmark(); });
    addButton("arrow.clockwise", {"Reload"}, [this] { state_.reload(); });

    connections_.add(state_.selectionChanged.connect([this](const SelectionChange&) {
        refreshButtons();
        refreshProgress();
    }));
    connections_.add(
        state_.tabs.changed().connect([this](const TabListChange&) { refreshButtons(); }));
    connections_.add(state_.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        if (state_.selectedTab().get() != &tab) {
            return;
        }
        if (fields.has(TabField::BackForward)) {
            refreshButtons();
        }
        if (fields.has(TabField::Progress) || fields.has(TabField::Loading)) {
            refreshProgress();
        }
    }));
    refreshButtons();
    refreshProgress();
}

ToolbarView::~ToolbarView() {
    connections_.disconnectAll();
}

IconButton& ToolbarView::addButton(const char* symbol, IconButton::Options options,
                                   std::function<void()> action) {
    buttons_.push_back(std::make_unique<IconButton>(symbol, std::move(options), std::move(action)));
    gtk_box_append(GTK_BOX(row_), buttons_.back()->widget());
    return *buttons_.back();
}

void ToolbarView::refreshButtons() {
    const ToolbarState toolbar = toolbarStateOf(state_);
    back_->setDisabled(!toolbar.canGoBack);
    forward_->setDisabled(!toolbar.canGoForward);
    close_->setDisabled(!toolbar.canCloseTab);
}

void ToolbarView::refreshProgress() {
    const auto tab = state_.selectedTab();
    progressBar_.setProgress(tab ? tab->loadingProgress.get() : 0.0);
    progressBar_.setLoading(tab && tab->isLoading.get());
}

} // namespace ovel
