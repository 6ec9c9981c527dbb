#include "web/Notices.h"

#include <algorithm>
#include <cassert>
#include <cstdio>

namespace ovel {

void NoticeQueue::enqueue(const void* key, std::function<void()> announce) {
    const bool queued = std::any_of(pending_.begin(), pending_.end(),
                                    [key](const auto& entry) { return entry.first == key; });
    if (!queued) {
        pending_.emplace_back(key, std::move(announce));
    }
    if (depth_ == 0) {
        // A change outside any operation is an operation of its own.
        ++depth_;
        close();
    }
}

void NoticeQueue::cancel(const void* key) {
    std::erase_if(pending_, [key](const auto& entry) { return entry.first == key; });
}

bool NoticeQueue::refusesChange(std::string_view what) const {
    if (!announcing_) {
        return false;
    }
    std::fprintf(stderr, "ovel-web: refused a change of %.*s made while notices go out\n",
                 static_cast<int>(what.size()), what.data());
    assert(!"the state was changed from inside a notice");
    return true;
}

void NoticeQueue::close() {
    if (--depth_ > 0 || announcing_) {
        return;
    }
    if (settle_ && !pending_.empty()) {
        // Settling is an operation of its own: what it changes joins the notices below.
        ++depth_;
        settle_();
        --depth_;
    }
    announcing_ = true;
    auto notices = std::move(pending_);
    pending_.clear();
    for (auto& [key, announce] : notices) {
        announce();
    }
    announcing_ = false;
}

} // namespace ovel
