#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "widgets/AnimatedValue.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

// A 2-point line under the toolbar: an accent fill over a faint track, as wide as the loaded
// fraction but never narrower than 4 points, shown only while loading.
class LoadingProgressBar {
public:
    static constexpr int minimumFill = 4;

    LoadingProgressBar();
    ~LoadingProgressBar();

    LoadingProgressBar(const LoadingProgressBar&) = delete;
    LoadingProgressBar& operator=(const LoadingProgressBar&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    GtkWidget* fill() const { return fill_; }

    void setProgress(double progress);
    void setLoading(bool loading);

private:
    GObjectRef<GtkWidget> root_;
    GtkWidget* fill_ = nullptr;
    std::unique_ptr<AnimatedValue> progress_;
    std::unique_ptr<AnimatedValue> opacity_;
    GSignalConnections signals_;
};

} // namespace ovel
