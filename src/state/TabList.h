#pragma once

#include "web/BrowserTab.h"
#include "web/Notices.h"

#include <sigc++/signal.h>

#include <memory>
#include <utility>
#include <vector>

namespace ovel {

// What an operation did to the tab list, step by step: each step's indices refer to the list
// as the steps before it left it, so a view that replays them in order ends with the new list.
struct TabListChange {
    enum class Kind { Inserted, Removed, Moved, Replaced };
    struct Step {
        Kind kind = Kind::Replaced;
        // Inserted, Removed: the tab's index; Moved: where it was.
        int index = 0;
        // Moved: where it is now.
        int to = 0;
        bool operator==(const Step&) const = default;
    };
    std::vector<Step> steps;
};

// The open tabs in strip order. Everyone reads them; only `Owner` changes them, one primitive at
// a time, and views hear every step of an operation in one notice when it ends.
template <typename Owner> class TabListField {
public:
    using TabList = std::vector<std::shared_ptr<BrowserTab>>;

    explicit TabListField(NoticeQueue& queue) : queue_(queue) {}
    ~TabListField() { queue_.cancel(this); }
    TabListField(const TabListField&) = delete;
    TabListField& operator=(const TabListField&) = delete;

    const TabList& get() const { return tabs_; }
    const TabList& operator*() const { return tabs_; }
    const TabList* operator->() const { return &tabs_; }

    sigc::signal<void(const TabListChange&)>& changed() { return changed_; }

private:
    friend Owner;

    void insert(int index, std::shared_ptr<BrowserTab> tab) {
        if (!refused()) {
            tabs_.insert(tabs_.begin() + index, std::move(tab));
            note({TabListChange::Kind::Inserted, index, index});
        }
    }
    void remove(int index) {
        if (!refused()) {
            tabs_.erase(tabs_.begin() + index);
            note({TabListChange::Kind::Removed, index, index});
        }
    }
    void move(int from, int to) {
        if (!refused() && from != to) {
            auto tab = std::move(tabs_[static_cast<std::size_t>(from)]);
            tabs_.erase(tabs_.begin() + from);
            tabs_.insert(tabs_.begin() + to, std::move(tab));
            note({TabListChange::Kind::Moved, from, to});
        }
    }
    void replace(TabList tabs) {
        if (!refused()) {
            tabs_ = std::move(tabs);
            // Whatever came before in this operation no longer matters; the notice is queued
            // already when there was any.
            const bool queued = !pending_.steps.empty();
            pending_.steps = {{TabListChange::Kind::Replaced, 0, 0}};
            if (!queued) {
                queue_.enqueue(this, [this] { changed_.emit(std::exchange(pending_, {})); });
            }
            if (reaction_) {
                reaction_();
            }
        }
    }
    // Runs when the list changes, before views hear of it.
    void onChange(std::function<void()> reaction) { reaction_ = std::move(reaction); }

    bool refused() const { return queue_.refusesChange("the tab list"); }
    void note(TabListChange::Step step) {
        const bool queued = !pending_.steps.empty();
        pending_.steps.push_back(step);
        // Outside an operation this announces at once, so the step is noted first.
        if (!queued) {
            queue_.enqueue(this, [this] { changed_.emit(std::exchange(pending_, {})); });
        }
        if (reaction_) {
            reaction_();
        }
    }

    NoticeQueue& queue_;
    TabList tabs_;
    TabListChange pending_;
    std::function<void()> reaction_;
    sigc::signal<void(const TabListChange&)> changed_;
};

} // namespace ovel
