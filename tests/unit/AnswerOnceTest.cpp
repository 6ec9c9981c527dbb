#include "web/AnswerOnce.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace ovel {
namespace {

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

} // namespace
} // namespace ovel
