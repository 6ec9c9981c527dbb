#pragma once

#include "records/SettingsStore.h"

#include <map>
#include <string>
#include <variant>

namespace ovel {

// A settings store that lives only in memory: for tests and for previews.
class MemorySettingsStore : public SettingsStore {
public:
    struct Blob {
        std::string bytes;
        bool operator==(const Blob&) const = default;
    };
    using Value = std::variant<std::string, bool, Blob>;

    std::optional<std::string> string(std::string_view key) const override;
    bool boolean(std::string_view key) const override;
    bool holdsBoolean(std::string_view key) const override;
    std::optional<std::string> data(std::string_view key) const override;

    void setString(std::string_view key, std::string_view value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setData(std::string_view key, std::string_view bytes) override;
    void remove(std::string_view key) override;

    const std::map<std::string, Value, std::less<>>& values() const { return values_; }

private:
    std::map<std::string, Value, std::less<>> values_;
};

} // namespace ovel
