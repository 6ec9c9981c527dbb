#include "widgets/AnimatedValue.h"

namespace ovel {

AnimatedValue::AnimatedValue(GtkWidget* widget, double initial, std::function<void(double)> apply,
                             std::function<void()> settled)
    : value_(initial), apply_(std::move(apply)), settled_(std::move(settled)) {
    spring_ = GObjectRef<AdwAnimation>::adopt(adw_spring_animation_new(
        widget, initial, initial, adw_spring_params_new(1.0, 1.0, 1.0),
        adw_callback_animation_target_new(&AnimatedValue::onFrame, this, nullptr)));
    timed_ = GObjectRef<AdwAnimation>::adopt(adw_timed_animation_new(
        widget, initial, initial, 10,
        adw_callback_animation_target_new(&AnimatedValue::onFrame, this, nullptr)));
    if (settled_) {
        for (AdwAnimation* animation : {spring_.get(), timed_.get()}) {
            g_signal_connect_swapped(animation, "done", G_CALLBACK(&AnimatedValue::onDone), this);
        }
    }
}

AnimatedValue::~AnimatedValue() {
    // A playing animation keeps itself alive; stop it so no frame comes after us.
    for (AdwAnimation* animation : {spring_.get(), timed_.get()}) {
        g_signal_handlers_disconnect_by_data(animation, this);
        adw_animation_pause(animation);
    }
}

void AnimatedValue::animateTo(double target, Spring spring, bool smooth) {
    adw_animation_pause(spring_.get());
    adw_animation_pause(timed_.get());
    if (smooth) {
        auto* animation = ADW_SPRING_ANIMATION(spring_.get());
        AdwSpringParams* params = springParams(spring);
        adw_spring_animation_set_spring_params(animation, params);
        adw_spring_params_unref(params);
        adw_spring_animation_set_value_from(animation, value_);
        adw_spring_animation_set_value_to(animation, target);
        adw_animation_play(spring_.get());
    } else {
        animateTo(target, Timed{10, ADW_LINEAR});
    }
}

void AnimatedValue::animateTo(double target, Timed timing) {
    adw_animation_pause(spring_.get());
    adw_animation_pause(timed_.get());
    auto* animation = ADW_TIMED_ANIMATION(timed_.get());
    adw_timed_animation_set_duration(animation, timing.milliseconds);
    adw_timed_animation_set_easing(animation, timing.easing);
    adw_timed_animation_set_value_from(animation, value_);
    adw_timed_animation_set_value_to(animation, target);
    adw_animation_play(timed_.get());
}

void AnimatedValue::setValue(double value) {
    adw_animation_pause(spring_.get());
    adw_animation_pause(timed_.get());
    value_ = value;
}

void AnimatedValue::onFrame(double value, gpointer self) {
    auto* animated = static_cast<AnimatedValue*>(self);
    animated->value_ = value;
    animated->apply_(value);
}

void AnimatedValue::onDone(AnimatedValue* self) {
    self->settled_();
}

} // namespace ovel
