#pragma once

#include "records/Records.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// The published ad and tracker lists the blocker uses, each read from the first of the folders
// that holds it.
inline constexpr std::array<std::string_view, 2> filterListNames{"easylist.txt", "easyprivacy.txt"};

struct FilterListFiles {
    enum class Status {
        // No folder holds any of the lists.
        Missing,
        // A list is there but cannot be read whole: unreadable, cut short or not text.
        Unreadable,
        Read,
    };
    Status status = Status::Missing;
    std::vector<std::string> texts;
    // Sixteen hex digits of a digest of the texts and the converter's version: the same lists
    // give the same rules.
    std::string contentHash;
    // When the oldest of the lists was published ("! Last modified:" when it is a date, else the
    // file's modification time).
    std::optional<Date> date;
};

// Reads the lists from the first folder of `folders` that has each. Runs on any thread.
FilterListFiles readFilterLists(const std::vector<std::string>& folders);

} // namespace ovel
