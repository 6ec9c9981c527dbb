#include "support/RecordingWebViewDelegate.h"
#include "web/AnswerOnce.h"
#include "webkit/LoadEventSequencer.h"
#include "webkit/LoadGate.h"
#include "webkit/UrlFilterAlternations.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace ovel::test {
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

using namespace std::chrono_literals;
using TimedLoad = LoadGate::TimedLoad;

// Feeds a view's requests and the engine's events, written as words, to a gate with fake timers,
// and reports in order what reached the engine (each request numbered in the order asked), each
// start of the time-out and what its expiry did, then where the timed load stands:
//   load (with a time-out) · html (without) · start · activity · end (a finish or a failure)
//   · stopped (the engine is not loading) · stop (the user's) · forget · expire (the time-out
//   ran out, if it runs) · loop (the main loop runs the hand-over, if one is due)
std::string throughTheGate(const std::string& events) {
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
        EXPECT_EQ(throughTheGate(c.events), c.heard) << "events: " << c.events;
    }
}

TEST(AnswerOnce, TheFirstAnswerCountsAndADroppedOneGivesTheDefault) {
    std::vector<std::string> heard;
    auto record = [&](std::optional<std::string> value) { heard.push_back(value.value_or("-")); };
    {
        AnswerOnce<std::optional<std::string>> reply(record, std::nullopt);
        reply("ann");
        reply("bob");
    }
    EXPECT_EQ(heard, std::vector<std::string>{"ann"}) << "a second answer or the drop answered";

    heard.clear();
    { AnswerOnce<std::optional<std::string>> dropped(record, "default"); }
    EXPECT_EQ(heard, std::vector<std::string>{"default"});

    heard.clear();
    {
        AnswerOnce<std::optional<std::string>> first(record, std::nullopt);
        AnswerOnce<std::optional<std::string>> moved(std::move(first));
        first("from the moved-from one");
    }
    EXPECT_EQ(heard, std::vector<std::string>{"-"}) << "only the moved-to reply answers";

    // An answer that drops its own reply (a dialog destroyed by its answer) is not followed by
    // the default.
    heard.clear();
    AnswerOnce<std::optional<std::string>>* closing = nullptr;
    closing = new AnswerOnce<std::optional<std::string>>(
        [&](std::optional<std::string> value) {
            record(value);
            delete closing;
        },
        "default");
    (*closing)("ann");
    EXPECT_EQ(heard, std::vector<std::string>{"ann"});
}

std::string joined(const std::optional<std::vector<std::string>>& patterns) {
    if (!patterns) {
        return "(none)";
    }
    std::string text;
    for (const auto& pattern : *patterns) {
        text += (text.empty() ? "" : " ") + pattern;
    }
    return text;
}

TEST(UrlFilterAlternations, SpellsOutEachAlternative) {
    const std::pair<const char*, const char*> cases[] = {
        {R"((a|b|c))", "a b c"},
        {R"((doubleclick\.net|tracker\.example/tr|ads\.))",
         R"(doubleclick\.net tracker\.example/tr ads\.)"},
        {R"(ads\.)", R"(ads\.)"},
        {R"(a|b)", "a b"},
        {R"(^https?://(a|b)\.com/)", R"(^https?://a\.com/ ^https?://b\.com/)"},
        {R"((a|b)\.(x|y))", R"(a\.x a\.y b\.x b\.y)"},
        {R"((a|(b|c)))", "a b c"},
        {R"((?:a|b))", "a b"},
        {R"((a|))", "a "},
        {R"((abc)(d|e))", "(abc)d (abc)e"},
        // No syntax inside a character class or after a backslash.
        {R"([a|b])", "[a|b]"},
        {R"([]|])", "[]|]"},
        {R"(a\|b)", R"(a\|b)"},
        {R"(\((a|b)\))", R"(\(a\) \(b\))"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(joined(expandAlternations(pattern)), expected) << "pattern: " << pattern;
    }
}

TEST(UrlFilterAlternations, LeavesWhatCannotBeSpelledOut) {
    const char* cases[] = {
        R"((a|b)+)",  R"((a|b)*)", R"((a|b){2})", R"((a|b)?)",
        R"((?=a|b))", R"((a|b)",   R"(a|b))",     R"([a|b)",
    };
    for (const char* pattern : cases) {
        EXPECT_EQ(joined(expandAlternations(pattern)), "(none)") << "pattern: " << pattern;
    }
    // Ten two-way groups would make 1024 patterns; eleven pass the limit.
    std::string ten;
    for (int i = 0; i < 10; ++i) {
        ten += "(a|b)";
    }
    EXPECT_EQ(expandAlternations(ten)->size(), 1024u);
    EXPECT_FALSE(expandAlternations(ten + "(a|b)").has_value());
}

TEST(UrlFilterAlternations, RewritesRulesWithAlternationIntoOneRuleEach) {
    const auto rules = nlohmann::json::parse(R"json([
        {"trigger": {"url-filter": "(one\\.example|two\\.example/tr|ads\\.)"},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": ".*", "resource-type": ["image"],
                     "if-domain": ["a.example", "b.example", "c.example"]},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": "(x|y)", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}}
    ])json");
    // Each alternative is a rule of its own with the rest of the trigger and the action; rules
    // without alternation pass as they were.
    const auto expected = nlohmann::json::parse(R"json([
        {"trigger": {"url-filter": "one\\.example"}, "action": {"type": "block"}},
        {"trigger": {"url-filter": "two\\.example/tr"}, "action": {"type": "block"}},
        {"trigger": {"url-filter": "ads\\."}, "action": {"type": "block"}},
        {"trigger": {"url-filter": ".*", "resource-type": ["image"],
                     "if-domain": ["a.example", "b.example", "c.example"]},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": "x", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}},
        {"trigger": {"url-filter": "y", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}}
    ])json");
    EXPECT_EQ(nlohmann::json::parse(expandUrlFilterAlternations(rules.dump())), expected);
}

TEST(UrlFilterAlternations, PassesOtherTextThrough) {
    for (const char* text : {"", "not json", "{\"trigger\": {}}", "[1, \"two\", {\"x\": 1}]",
                             R"([{"trigger": {"url-filter": "(a|b)+"}, "action": {}}])"}) {
        const auto rewritten = expandUrlFilterAlternations(text);
        const auto original = nlohmann::json::parse(text, nullptr, false);
        if (original.is_discarded() || !original.is_array()) {
            EXPECT_EQ(rewritten, text);
        } else {
            EXPECT_EQ(nlohmann::json::parse(rewritten), original) << text;
        }
    }
}

} // namespace
} // namespace ovel::test
