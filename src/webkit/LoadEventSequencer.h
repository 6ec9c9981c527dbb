#pragma once

#include "web/WebView.h"

#include <functional>
#include <optional>

namespace ovel {

class WebViewDelegate;

// Turns the engine's load events into the delegate's navigation calls, in order: a provisional
// start, then one finish or one failure.
//
// WebKitGTK tells the title of a page only after the load has finished (even a plain <title>
// in the head arrives just after), and resets it to empty when the next page commits. So a
// finish is held back until the page has a title, for at most the title wait, and whoever reads
// the title at the finish (the tab, and history through it) gets the real one. A page still
// untitled when the wait ends finishes without a title; if a title comes later after all, the
// finish is announced once more so the tab shows it.
class LoadEventSequencer {
public:
    struct TitleWait {
        std::function<void()> start;
        std::function<void()> stop;
    };

    // What is known of the title when a load finishes.
    enum class Title {
        Known,
        // None yet: it may still come, so the finish waits for it.
        Pending,
        // The page is known to have none (generated HTML without a title): no wait.
        Absent,
    };

    LoadEventSequencer(WebViewDelegate& delegate, TitleWait titleWait);

    void loadStarted();
    void loadFinished(Title title);
    // `failure` is what the person is shown; none for a load that ended without an error to
    // show (stopped, become a download, or followed by a page of its own).
    void loadFailed(const std::optional<LoadFailure>& failure);
    void titleChanged(bool hasTitle);
    void titleWaitExpired();
    // The web process crashed or was killed: whatever was under way has failed.
    void processTerminated();

    // Between a provisional start and its finish or failure (a finish held back for the title
    // no longer counts).
    bool isLoading() const { return phase_ == Phase::Loading; }
    bool isAwaitingTitle() const { return phase_ == Phase::AwaitingTitle; }

private:
    enum class Phase { Idle, Loading, AwaitingTitle };

    void finish(bool hasTitle);

    WebViewDelegate& delegate_;
    TitleWait titleWait_;
    Phase phase_ = Phase::Idle;
    // The last finish went out without a title and has not been announced again.
    bool finishedUntitled_ = false;
};

} // namespace ovel
