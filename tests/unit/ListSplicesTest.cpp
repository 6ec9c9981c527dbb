#include "web/ListSplices.h"

#include <gtest/gtest.h>

#include <string>

namespace ovel {
namespace {

struct Item {
    std::string id;
    int value = 0;
    bool operator==(const Item&) const = default;
};

std::vector<Item> items(const std::string& ids) {
    std::vector<Item> list;
    for (char id : ids) {
        list.push_back({std::string(1, id), 0});
    }
    return list;
}

// Applies the splices to `before` as a list model would and returns the result.
std::vector<Item> applied(std::vector<Item> list, const std::vector<Item>& after,
                          const std::vector<ListSplice>& splices) {
    for (const ListSplice& s : splices) {
        list.erase(list.begin() + long(s.position), list.begin() + long(s.position + s.removed));
        list.insert(list.begin() + long(s.position), after.begin() + long(s.addedFrom),
                    after.begin() + long(s.addedFrom + s.addedCount));
    }
    return list;
}

TEST(ListSplices, TurnTheOldListIntoTheNewWithFewSplices) {
    std::vector<Item> retitled = items("abc");
    retitled[1].value = 1;
    const struct {
        std::vector<Item> before;
        std::vector<Item> after;
        std::vector<ListSplice> splices;
    } cases[] = {
        {items("abc"), items("abc"), {}},
        {items("abc"), items("xabc"), {{0, 0, 0, 1}}},
        // A visit at the front pushes the oldest out at the back.
        {items("abcd"), items("xabc"), {{0, 0, 0, 1}, {4, 1, 4, 0}}},
        {items("abcd"), items(""), {{0, 4, 0, 0}}},
        {items(""), items("ab"), {{0, 0, 0, 2}}},
        {items("abcd"), items("ad"), {{1, 2, 1, 0}}},
        {items("abc"), retitled, {{1, 1, 1, 1}}},
        {items("abc"), items("cab"), {{0, 2, 0, 0}, {1, 0, 1, 2}}},
        {items("abc"), items("bca"), {{0, 1, 0, 0}, {2, 0, 2, 1}}},
        {items("abc"), items("xyz"), {{0, 3, 0, 3}}},
    };
    for (const auto& c : cases) {
        const auto splices = listSplices(c.before, c.after);
        EXPECT_EQ(splices, c.splices);
        EXPECT_EQ(applied(c.before, c.after, splices), c.after);
    }
}

} // namespace
} // namespace ovel
