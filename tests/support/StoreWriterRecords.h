#pragma once

#include "records/Records.h"
#include "state/BrowserState.h"

#include <cstdio>
#include <string>
#include <vector>

namespace ovel::test {

// What tests/support/tools/store_writer saves as write number `sequence`, so a reader can tell
// from the stored blob which write it holds and that it holds all of it. The sequence is the
// session's selected index and the title of the newest visit.

inline constexpr std::string_view storeWriterProfileID = "C0FFEE00-0000-4000-8000-000000000001";

inline std::string storeWriterSessionKey() {
    return BrowserState::profileKey(BrowserState::sessionKeyBase, storeWriterProfileID);
}

inline std::string storeWriterHistoryKey() {
    return BrowserState::profileKey(BrowserState::historyKeyBase, storeWriterProfileID);
}

inline SessionStore storeWriterSession(int sequence) {
    SessionStore session{sequence, {}};
    for (int i = 0; i <= sequence % 7; ++i) {
        session.tabs.push_back(
            {"https://w.test/" + std::to_string(sequence) + "/" + std::to_string(i), i == 0});
    }
    return session;
}

// From one to three hundred visits (up to about 60 KB), so writes span several pages of the file
// and the log is checkpointed every few hundred writes.
inline std::vector<HistoryEntry> storeWriterHistory(int sequence) {
    std::vector<HistoryEntry> history;
    const int visits = 1 + (sequence * 37) % 300;
    for (int i = 0; i < visits; ++i) {
        char id[40];
        std::snprintf(id, sizeof id, "%08X-0000-4000-8000-%012X", static_cast<unsigned>(sequence),
                      static_cast<unsigned>(i));
        std::string title = i == 0 ? std::to_string(sequence)
                                   : "Visit " + std::to_string(i) + " of write " +
                                         std::to_string(sequence) + std::string(100, '~');
        history.push_back(
            {id, std::move(title),
             "https://w.test/" + std::to_string(sequence) + "/visit/" + std::to_string(i),
             Date{790000000.0 + sequence + i * 0.25}});
    }
    return history;
}

} // namespace ovel::test
