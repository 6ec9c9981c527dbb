#pragma once

#include "records/MemorySettingsStore.h"

#include <string>
#include <vector>

namespace ovel::test {

// A memory store that logs every write, in order, as "set KEY" or "remove KEY", and every
// blob read as "read KEY".
class RecordingSettingsStore : public MemorySettingsStore {
public:
    std::optional<std::string> data(std::string_view key) const override {
        log.push_back("read " + std::string(key));
        return MemorySettingsStore::data(key);
    }
    void setString(std::string_view key, std::string_view value) override {
        log.push_back("set " + std::string(key));
        MemorySettingsStore::setString(key, value);
    }
    void setBoolean(std::string_view key, bool value) override {
        log.push_back("set " + std::string(key));
        MemorySettingsStore::setBoolean(key, value);
    }
    void setData(std::string_view key, std::string_view bytes) override {
        log.push_back("set " + std::string(key));
        MemorySettingsStore::setData(key, bytes);
    }
    void remove(std::string_view key) override {
        log.push_back("remove " + std::string(key));
        MemorySettingsStore::remove(key);
    }

    // Entries that start with `prefix` ("set ", "read ovel.session"), in order.
    std::vector<std::string> entries(std::string_view prefix) const {
        std::vector<std::string> matching;
        for (const std::string& entry : log) {
            if (entry.starts_with(prefix)) {
                matching.push_back(entry);
            }
        }
        return matching;
    }

    mutable std::vector<std::string> log;
};

} // namespace ovel::test
