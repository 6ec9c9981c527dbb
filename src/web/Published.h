#pragma once

#include "web/Notices.h"

#include <sigc++/signal.h>

#include <functional>
#include <utility>

namespace ovel {

// A field everyone may read and only its `Owner` may write. Every assignment runs the owner's
// reactions at once (`assigned`, for example a store write, also when the value is the same);
// views hear `changed` with the new value once per operation, and only when it differed.
template <typename T, typename Owner> class Published {
public:
    // Announces on its own `changed` signal.
    Published(NoticeQueue& queue, T initial = T{})
        : value_(std::move(initial)), queue_(queue),
          noteChange_([this] { queue_.enqueue(this, [this] { changed_.emit(value_); }); }) {}
    // Tells `noteChange` instead, which gathers several fields into one notice.
    Published(NoticeQueue& queue, std::function<void()> noteChange, T initial = T{})
        : value_(std::move(initial)), queue_(queue), noteChange_(std::move(noteChange)) {}
    ~Published() { queue_.cancel(this); }

    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& get() const { return value_; }
    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    sigc::signal<void(const T&)>& changed() { return changed_; }

private:
    friend Owner;

    void set(T value) {
        if (queue_.refusesChange("a published field")) {
            return;
        }
        const bool differs = !(value_ == value);
        value_ = std::move(value);
        if (differs) {
            noteChange_();
        }
        assigned_.emit();
    }

    // An in-place change (append, remove, edit) counts as an assignment.
    template <typename Mutator> void modify(Mutator&& mutate) {
        T value = value_;
        std::forward<Mutator>(mutate)(value);
        set(std::move(value));
    }

    // Gives the field a value without announcing it or reacting: only for initial values.
    void setInitial(T value) { value_ = std::move(value); }

    sigc::signal<void()>& assigned() { return assigned_; }

    T value_;
    NoticeQueue& queue_;
    std::function<void()> noteChange_;
    sigc::signal<void(const T&)> changed_;
    sigc::signal<void()> assigned_;
};

} // namespace ovel
