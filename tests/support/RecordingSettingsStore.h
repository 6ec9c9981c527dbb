#pragma once

#include "state/MemorySettingsStore.h"

#include <string>
#include <vector>

namespace ovel::test {

// A memory store that logs every write, in order, as "set KEY" or "remove KEY".
class RecordingSettingsStore : public MemorySettingsStore {
public:
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

    std::vector<std::string> log;
};

} // namespace ovel::test
