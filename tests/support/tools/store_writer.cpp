// Saves a session and a history blob to a settings file through SqliteSettingsStore, over and
// over, and prints one line per write once it is on disk: setData has returned and flush() has
// confirmed the commit ("session 17", "history 17").
// The crash test kills it at random moments and checks that every printed write survived.
// It continues from the sequence number of the session it finds in the file.

#include "app/SqliteSettingsStore.h"
#include "records/RecordsJson.h"
#include "support/StoreWriterRecords.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

// Written straight to the descriptor: a line in a stdio buffer would die with the process.
bool acknowledge(const char* what, int sequence) {
    const std::string line = std::string(what) + " " + std::to_string(sequence) + "\n";
    return ::write(STDOUT_FILENO, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

} // namespace

int main(int argc, char** argv) {
    using namespace ovel;
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s SETTINGS-FILE\n", argv[0]);
        return 2;
    }
    const auto store = SqliteSettingsStore::open(argv[1]);
    const std::string sessionKey = test::storeWriterSessionKey();
    const std::string historyKey = test::storeWriterHistoryKey();

    int sequence = 0;
    if (const auto blob = store->data(sessionKey)) {
        const auto session = decodeSession(*blob);
        if (!session) {
            std::fprintf(stderr, "the stored session is unreadable\n");
            return 1;
        }
        sequence = session->selectedIndex;
    }
    for (;;) {
        ++sequence;
        store->setData(sessionKey, encodeSession(test::storeWriterSession(sequence)));
        if (!store->flush() || !acknowledge("session", sequence)) {
            return 1;
        }
        store->setData(historyKey, encodeHistory(test::storeWriterHistory(sequence)));
        if (!store->flush() || !acknowledge("history", sequence)) {
            return 1;
        }
    }
}
