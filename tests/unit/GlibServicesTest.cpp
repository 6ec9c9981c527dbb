#include "app/GlibMainQueue.h"
#include "app/GlibUuidSource.h"
#include "support/TestEnvironment.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <numeric>
#include <regex>
#include <set>
#include <thread>

namespace ovel {
namespace {

TEST(GlibMainQueue, RunsTasksPostedFromAnotherThreadOnTheMainLoopInOrder) {
    GlibMainQueue queue;
    const auto loopThread = std::this_thread::get_id();
    std::vector<int> ran;
    bool allOnLoopThread = true;
    constexpr int count = 200;

    std::thread poster([&] {
        for (int i = 0; i < count; ++i) {
            queue.post([&, i] {
                ran.push_back(i);
                allOnLoopThread = allOnLoopThread && std::this_thread::get_id() == loopThread;
            });
        }
    });
    test::waitUntil([&] { return ran.size() == count; });
    poster.join();

    std::vector<int> expected(count);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(ran, expected);
    EXPECT_TRUE(allOnLoopThread);
}

TEST(GlibUuidSource, MakesDistinctRandomUuidsInUpperCaseCanonicalForm) {
    const std::regex canonical(
        "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    GlibUuidSource source;
    std::set<Uuid> made;
    for (int i = 0; i < 100; ++i) {
        const auto uuid = source.makeUuid();
        EXPECT_TRUE(std::regex_match(uuid, canonical)) << uuid;
        made.insert(uuid);
    }
    EXPECT_EQ(made.size(), 100u);
}

} // namespace
} // namespace ovel
