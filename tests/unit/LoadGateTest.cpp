#include "webkit/LoadGate.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace ovel {
namespace {

using namespace std::chrono_literals;
using TimedLoad = LoadGate::TimedLoad;

// Feeds a view's requests and the engine's events, written as words, to a gate with fake timers,
// and reports in order what reached the engine (each request numbered in the order asked), each
// start of the time-out and what its expiry did, then where the timed load stands:
//   load (with a time-out) · html (without) · start · activity · end (a finish or a failure)
//   · stopped (the engine is not loading) · stop (the user's) · forget · expire (the time-out
//   ran out, if it runs) · loop (the main loop runs the hand-over, if one is due)
std::string feed(const std::string& events) {
    std::string heard;
    auto hear = [&](const std::string& what) { heard += (heard.empty() ? "" : " ") + what; };
    bool timing = false;
    bool handOverDue = false;
    LoadGate gate({[&](std::chrono::milliseconds delay) {
                       EXPECT_EQ(delay, 5s);
                       timing = true;
                       hear("time");
                   },
                   [&] { timing = false; }, [&] { handOverDue = true; },
                   [&] { handOverDue = false; }});
    int requests = 0;
    std::istringstream words(events);
    for (std::string word; words >> word;) {
        if (word == "load" || word == "html") {
            const std::string name = word + std::to_string(++requests);
            gate.request([&hear, name] { hear(name); },
                         word == "load" ? std::optional(5s) : std::nullopt);
        } else if (word == "start") {
            gate.loadStarted();
        } else if (word == "activity") {
            gate.activity();
        } else if (word == "end") {
            gate.loadEnded();
        } else if (word == "stopped") {
            gate.loadingStopped();
        } else if (word == "stop") {
            gate.stop();
        } else if (word == "forget") {
            gate.forgetTimedLoad();
        } else if (word == "expire" && timing) {
            timing = false;
            hear(gate.timeoutExpired() == LoadGate::Expiry::Failed ? "failed" : "dropped");
        } else if (word == "loop" && handOverDue) {
            handOverDue = false;
            gate.handOver();
        } else if (word != "expire" && word != "loop") {
            ADD_FAILURE() << "unknown event " << word;
        }
    }
    EXPECT_EQ(timing, gate.timedLoad() != TimedLoad::None) << events;
    switch (gate.timedLoad()) {
    case TimedLoad::None:
        return heard;
    case TimedLoad::Pending:
        return heard + " | pending";
    case TimedLoad::Running:
        return heard + " | running";
    }
    return heard;
}

TEST(LoadGate, HoldsWhatFollowsTheFirstLoadAndTimesOutOnlyAQuietLoadOfItsOwn) {
    const struct {
        const char* events;
        const char* heard;
    } cases[] = {
        {"load", "time load1 | pending"},
        {"load start", "time load1 | running"},
        // What is asked before the first load ends waits for its end and the main loop; the
        // latest request wins, even one made while the hand-over is due.
        {"load load", "time load1 | pending"},
        {"load load start end", "time load1"},
        {"load load start end loop", "time load1 time load2 | pending"},
        {"load html load start end loop", "time load1 time load3 | pending"},
        {"load load start end load loop", "time load1 time load3 | pending"},
        {"html load stopped loop", "html1 time load2 | pending"},
        {"load load start end loop loop", "time load1 time load2 | pending"},
        // Once the first has ended, requests go straight through.
        {"load start end load html", "time load1 time load2 html3"},
        // A stop drops what is held.
        {"load load stop start end loop", "time load1"},
        {"load load start end stop loop", "time load1"},
        {"load load stop load start end loop", "time load1 time load3 | pending"},
        // Every arrival starts the time-out over, whether the engine has started the load yet.
        {"load activity start activity", "time load1 time time | running"},
        // Expiry fails a load under way and drops one the engine never started.
        {"load start expire", "time load1 failed"},
        {"load expire", "time load1 dropped"},
        {"load start activity expire expire", "time load1 time failed"},
        // The time-out is forgotten when its load ends and when something else loads.
        {"load start end activity expire", "time load1"},
        {"load start forget expire", "time load1"},
        {"load start end html", "time load1 html2"},
        // An end heard before the timed load started is an earlier load's.
        {"load start end load end", "time load1 time load2 | pending"},
        // A held load leaves the running one its time-out until it is handed over.
        {"load start load expire", "time load1 failed"},
        {"load start html end loop", "time load1 html2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(feed(c.events), c.heard) << "events: " << c.events;
    }
}

} // namespace
} // namespace ovel
