#pragma once

#include "chrome/AddressField.h"
#include "chrome/LoadingProgressBar.h"
#include "gutil/GObjectRef.h"
#include "web/Connections.h"
#include "widgets/IconButton.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace ovel {

class BrowserState;

// The row under the tab strip: the main actions as round glass buttons, the address field
// between two flexible spaces, and the selected tab's loading progress underneath. The buttons'
// disabled states and the progress follow the selected tab as it changes.
class ToolbarView {
public:
    explicit ToolbarView(BrowserState& state);
    ~ToolbarView();

    ToolbarView(const ToolbarView&) = delete;
    ToolbarView& operator=(const ToolbarView&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    AddressField& addressField() { return addressField_; }
    LoadingProgressBar& progressBar() { return progressBar_; }

private:
    IconButton& addButton(const char* symbol, IconButton::Options options,
                          std::function<void()> action);
    void refreshButtons();
    void refreshProgress();

    BrowserState& state_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* row_ = nullptr;
    std::vector<std::unique_ptr<IconButton>> buttons_;
    IconButton* back_ = nullptr;
    IconButton* forward_ = nullptr;
    IconButton* close_ = nullptr;
    AddressField addressField_;
    LoadingProgressBar progressBar_;
    Connections connections_;
};

} // namespace ovel
