#pragma once

#include <functional>
#include <utility>

namespace ovel {

// The reply to one question someone must answer exactly once (the engine's permission and
// sign-in requests, the dialogs that put them to the user): the first answer counts, later ones
// are ignored, and a reply dropped unanswered gives `unanswered`. Move-only, so no copy can
// answer a second time.
template <typename Value> class AnswerOnce {
public:
    AnswerOnce(std::function<void(Value)> answer, Value unanswered)
        : answer_(std::move(answer)), unanswered_(std::move(unanswered)) {}
    AnswerOnce(AnswerOnce&& other) noexcept
        : answer_(std::exchange(other.answer_, nullptr)),
          unanswered_(std::move(other.unanswered_)) {}
    ~AnswerOnce() { (*this)(std::move(unanswered_)); }

    void operator()(Value value) {
        // Cleared before the call, so an answer that drops this reply does not answer again.
        if (auto answer = std::exchange(answer_, nullptr)) {
            answer(std::move(value));
        }
    }

private:
    std::function<void(Value)> answer_;
    Value unanswered_;
};

} // namespace ovel
