#include "webkit/LoadEventSequencer.h"
#include "support/RecordingWebViewDelegate.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ovel {
namespace {

// Feeds engine events, written as words, to a sequencer and reports what the delegate heard
// and whether the title wait is running:
//   start · finish+ (finished, title known) · finish- (no title yet) · finish0 (the page has
//   none) · fail · title+ · title-
//   expire (the title wait ran out) · crash
struct Run {
    std::string heard;
    bool waiting;
};

Run feed(const std::string& engineEvents) {
    test::RecordingWebViewDelegate delegate;
    bool waiting = false;
    LoadEventSequencer sequencer(delegate, {[&] { waiting = true; }, [&] { waiting = false; }});
    std::istringstream words(engineEvents);
    for (std::string word; words >> word;) {
        if (word == "start") {
            sequencer.loadStarted();
        } else if (word == "finish+" || word == "finish-" || word == "finish0") {
            using Title = LoadEventSequencer::Title;
            sequencer.loadFinished(word == "finish+"   ? Title::Known
                                   : word == "finish-" ? Title::Pending
                                                       : Title::Absent);
        } else if (word == "fail") {
            sequencer.loadFailed(std::nullopt);
        } else if (word == "title+" || word == "title-") {
            sequencer.titleChanged(word == "title+");
        } else if (word == "expire") {
            waiting = false;
            sequencer.titleWaitExpired();
        } else if (word == "crash") {
            sequencer.processTerminated();
        } else {
            ADD_FAILURE() << "unknown engine event " << word;
        }
    }
    std::string heard;
    for (const auto& event : delegate.events) {
        heard += (heard.empty() ? "" : " ") + event;
    }
    return {heard, waiting};
}

struct Case {
    const char* engine;
    const char* heard;
    bool waiting;
};

TEST(LoadEventSequencer, AnnouncesEachOutcomeOnceWithItsTitle) {
    const Case cases[] = {
        // Each navigation is announced once, in order.
        {"start finish+", "start finish", false},
        // WebKit sends a finish after every failure: it is not a second outcome.
        {"start fail finish+", "start fail", false},
        {"start fail finish-", "start fail", false},
        {"start title+ finish+", "start finish", false},
        {"start finish+ start finish+", "start finish start finish", false},
        // A navigation replaced before it finished fails, then the next one starts.
        {"start fail start finish+", "start fail start finish", false},
        {"finish+ fail", "", false},
        // The finish is held until the title arrives.
        {"start finish-", "start", true},
        {"start finish- title-", "start", true},
        {"start finish- title+", "start finish", false},
        {"start finish- title+ title+", "start finish", false},
        // A page known to have no title finishes at once, and still shows one set later.
        {"start finish0", "start finish", false},
        {"start finish0 title+", "start finish finish", false},
        {"start finish- expire", "start finish", false},
        // The next page starts before the title came: the held finish goes out first.
        {"start finish- start", "start finish start", false},
        {"start finish- start finish+", "start finish start finish", false},
        // A title that comes after the wait is announced once.
        {"start finish- expire title+", "start finish finish", false},
        {"start finish- expire title+ title+", "start finish finish", false},
        {"start finish- expire title-", "start finish", false},
        // A page that had its title at the finish keeps to one finish whatever it sets later.
        {"start finish+ title+", "start finish", false},
        // A title during the next load belongs to that load.
        {"start finish- expire start title+", "start finish start", false},
        // A crash fails what is under way.
        {"start crash", "start fail", false},
        {"start finish- crash", "start fail", false},
        {"start finish- crash title+", "start fail", false},
        {"start finish+ crash", "start finish", false},
        {"crash", "", false},
        {"start crash start finish+", "start fail start finish", false},
    };
    for (const auto& c : cases) {
        const auto run = feed(c.engine);
        EXPECT_EQ(run.heard, c.heard) << "engine: " << c.engine;
        EXPECT_EQ(run.waiting, c.waiting) << "engine: " << c.engine;
    }
}

} // namespace
} // namespace ovel
