#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/Spring.h"

#include <adwaita.h>

#include <functional>

namespace ovel {

// A change over a fixed time with an easing curve.
struct Timed {
    unsigned milliseconds = 250;
    AdwEasing easing = ADW_EASE_OUT_CUBIC;
};

// One number a view animates (a hover, a highlight's position, a panel's reveal), handed to
// `apply` on every frame; `settled`, if given, hears when an animation has come to its end. A new
// target mid-flight starts from where the value is, never stacking animations.
class AnimatedValue {
public:
    AnimatedValue(GtkWidget* widget, double initial, std::function<void(double)> apply,
                  std::function<void()> settled = {});
    ~AnimatedValue();

    AnimatedValue(const AnimatedValue&) = delete;
    AnimatedValue& operator=(const AnimatedValue&) = delete;

    // Springs to `target`, or gets there in 0.01 s linearly when smooth animations are off.
    void animateTo(double target, Spring spring, bool smooth);
    void animateTo(double target, Timed timing);
    // Puts the value at `value` at once, without a frame.
    void setValue(double value);
    double value() const { return value_; }

private:
    static void onFrame(double value, gpointer self);
    static void onDone(AnimatedValue* self);

    double value_;
    std::function<void(double)> apply_;
    std::function<void()> settled_;
    GObjectRef<AdwAnimation> spring_;
    GObjectRef<AdwAnimation> timed_;
};

} // namespace ovel
