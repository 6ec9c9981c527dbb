#include "webkit/LoadEventSequencer.h"

#include "web/WebView.h"

#include <utility>

namespace ovel {

LoadEventSequencer::LoadEventSequencer(WebViewDelegate& delegate, TitleWait titleWait)
    : delegate_(delegate), titleWait_(std::move(titleWait)) {}

void LoadEventSequencer::loadStarted() {
    if (phase_ == Phase::AwaitingTitle) {
        // The next page is on its way: the held finish goes out first, keeping the order.
        finish(false);
    }
    phase_ = Phase::Loading;
    finishedUntitled_ = false;
    delegate_.didStartProvisionalNavigation();
}

void LoadEventSequencer::loadFinished(Title title) {
    // WebKit also sends a finish after every failure: that one is not a success.
    if (phase_ != Phase::Loading) {
        return;
    }
    if (title != Title::Pending) {
        finish(title == Title::Known);
        return;
    }
    phase_ = Phase::AwaitingTitle;
    titleWait_.start();
}

void LoadEventSequencer::loadFailed(const std::optional<LoadFailure>& failure) {
    if (phase_ != Phase::Loading) {
        return;
    }
    phase_ = Phase::Idle;
    delegate_.didFailNavigation(failure);
}

void LoadEventSequencer::titleChanged(bool hasTitle) {
    if (!hasTitle) {
        return;
    }
    if (phase_ == Phase::AwaitingTitle) {
        finish(true);
    } else if (phase_ == Phase::Idle && finishedUntitled_) {
        finishedUntitled_ = false;
        delegate_.didFinishNavigation();
    }
}

void LoadEventSequencer::titleWaitExpired() {
    if (phase_ == Phase::AwaitingTitle) {
        finish(false);
    }
}

void LoadEventSequencer::processTerminated() {
    if (phase_ == Phase::Idle) {
        return;
    }
    if (phase_ == Phase::AwaitingTitle) {
        titleWait_.stop();
    }
    phase_ = Phase::Idle;
    finishedUntitled_ = false;
    delegate_.didFailNavigation(std::nullopt);
}

void LoadEventSequencer::finish(bool hasTitle) {
    if (phase_ == Phase::AwaitingTitle) {
        titleWait_.stop();
    }
    // Settled before the delegate hears it, so a call back into the view sees the new phase.
    phase_ = Phase::Idle;
    finishedUntitled_ = !hasTitle;
    delegate_.didFinishNavigation();
}

} // namespace ovel
