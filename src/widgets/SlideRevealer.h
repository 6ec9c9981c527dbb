#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/Spring.h"
#include "widgets/AnimatedValue.h"

#include <adwaita.h>
#include <gtk/gtk.h>

namespace ovel {

// A panel that enters and leaves by sliding in from one edge of its place while fading in.
// Its size along that edge's axis grows with the panel, so its neighbours make room smoothly.
// The show/hide runs on a spring, or in 0.01 s when smooth animations are off.
class SlideRevealer {
public:
    enum class Edge { Leading, Top, Bottom };

    SlideRevealer(Edge edge, Spring spring);

    SlideRevealer(const SlideRevealer&) = delete;
    SlideRevealer& operator=(const SlideRevealer&) = delete;

    GtkWidget* widget() const { return widget_.get(); }
    void setChild(GtkWidget* child);

    enum class Motion { Smooth, Instant };
    void reveal(bool shown, Motion motion);
    bool revealed() const { return target_ > 0.5; }
    // 0 hidden, 1 shown (a spring may pass 1 for a moment).
    double progress() const;

private:
    void setProgress(double progress);

    Edge edge_;
    Spring spring_;
    GObjectRef<GtkWidget> widget_;
    double target_ = 0;
    AnimatedValue progress_;
};

} // namespace ovel
