#pragma once

#include <sigc++/signal.h>

#include <utility>

namespace ovel {

// A field whose every assignment is announced. The new value is stored before the
// announcement, so a handler always reads the value it is told about. An owner may pass its
// own aggregate signal, which fires after the field's own one ("something in me changed").
template <typename T> class Published {
public:
    explicit Published(T initial = T{}) : value_(std::move(initial)) {}
    Published(sigc::signal<void()>& ownerChanged, T initial = T{})
        : value_(std::move(initial)), ownerChanged_(&ownerChanged) {}

    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& get() const { return value_; }
    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    void set(T value) {
        value_ = std::move(value);
        announce();
    }

    // An in-place change (append, remove, edit) counts as an assignment.
    template <typename Mutator> void modify(Mutator&& mutate) {
        std::forward<Mutator>(mutate)(value_);
        announce();
    }

    // Gives the field a value without announcing it: only for initial values.
    void setInitial(T value) { value_ = std::move(value); }

    sigc::signal<void()>& changed() { return changed_; }

private:
    void announce() {
        changed_.emit();
        if (ownerChanged_ != nullptr) {
            ownerChanged_->emit();
        }
    }

    T value_;
    sigc::signal<void()> changed_;
    sigc::signal<void()>* ownerChanged_ = nullptr;
};

} // namespace ovel
