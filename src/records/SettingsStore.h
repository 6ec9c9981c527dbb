#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// The per-user key/value store: strings, booleans and byte blobs under string keys. A read sees
// every write made before it; a write may reach the disk after the call returns, but none is lost
// when the store is closed. Reads of a key holding another type answer as if absent.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    virtual std::optional<std::string> string(std::string_view key) const = 0;
    // Absent, or not a boolean, reads as false.
    virtual bool boolean(std::string_view key) const = 0;
    // Whether the stored value is a boolean at all (absent is not).
    virtual bool holdsBoolean(std::string_view key) const = 0;
    virtual std::optional<std::string> data(std::string_view key) const = 0;

    virtual void setString(std::string_view key, std::string_view value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setData(std::string_view key, std::string_view bytes) = 0;
    // Stores the bytes `encode` makes. A store that commits on a thread of its own runs it there
    // (or in a read of the key, whichever comes first; not at all when the key is written again
    // before), so the caller's thread does not spend the time encoding: `encode` must own what it
    // reads. Here it runs at once.
    virtual void setDataFrom(std::string_view key, std::function<std::string()> encode) {
        setData(key, encode());
    }
    virtual void remove(std::string_view key) = 0;
};

} // namespace ovel
