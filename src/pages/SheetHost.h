#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ovel {

// The layer the sheets show on, inside the window: a dimmed backdrop over the window's content
// with the sheet centred on it. Its widget is an overlay child laid over `covered`, the content
// it hides; while a sheet shows, `covered` takes no focus, no pointer and is hidden from
// assistive technologies, so the keyboard stays in the sheet. Escape and a click on the backdrop
// ask the top sheet to go (its `dismiss`); when the last sheet closes, the focus goes back to
// the widget that had it before the first opened.
class SheetHost {
public:
    explicit SheetHost(GtkWidget* covered);
    ~SheetHost();
    SheetHost(const SheetHost&) = delete;
    SheetHost& operator=(const SheetHost&) = delete;

    GtkWidget* widget() const { return layer_.get(); }

    // Shows `sheet` above any other. `dismiss` is how the backdrop and Escape ask it to close;
    // the sheet closes when its owner calls close().
    void present(GtkWidget* sheet, std::function<void()> dismiss);
    // Hides `sheet`. It stays on the layer, styled and laid out, so it shows again quickly.
    void close(GtkWidget* sheet);
    // Closes `sheet` and takes it off the layer, for good.
    void release(GtkWidget* sheet);
    bool isShowing(GtkWidget* sheet) const;

private:
    struct Shown {
        GObjectRef<GtkWidget> sheet;
        std::function<void()> dismiss;
    };

    void dismissTop();
    void coverContent(bool covered);

    GtkWidget* covered_;
    GObjectRef<GtkWidget> layer_;
    GSignalConnections signals_;
    std::vector<Shown> shown_;
    // The widget that had the focus before the first sheet opened, held weakly.
    GWeakRef focusBefore_;
};

} // namespace ovel
