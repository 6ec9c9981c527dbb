#include "records/MemorySettingsStore.h"

namespace ovel {

std::optional<std::string> MemorySettingsStore::string(std::string_view key) const {
    auto it = values_.find(key);
    if (it == values_.end() || !std::holds_alternative<std::string>(it->second)) {
        return std::nullopt;
    }
    return std::get<std::string>(it->second);
}

bool MemorySettingsStore::boolean(std::string_view key) const {
    auto it = values_.find(key);
    return it != values_.end() && std::holds_alternative<bool>(it->second) &&
           std::get<bool>(it->second);
}

bool MemorySettingsStore::holdsBoolean(std::string_view key) const {
    auto it = values_.find(key);
    return it != values_.end() && std::holds_alternative<bool>(it->second);
}

std::optional<std::string> MemorySettingsStore::data(std::string_view key) const {
    auto it = values_.find(key);
    if (it == values_.end() || !std::holds_alternative<Blob>(it->second)) {
        return std::nullopt;
    }
    return std::get<Blob>(it->second).bytes;
}

void MemorySettingsStore::setString(std::string_view key, std::string_view value) {
    values_.insert_or_assign(std::string(key), Value{std::string(value)});
}

void MemorySettingsStore::setBoolean(std::string_view key, bool value) {
    values_.insert_or_assign(std::string(key), Value{value});
}

void MemorySettingsStore::setData(std::string_view key, std::string_view bytes) {
    values_.insert_or_assign(std::string(key), Value{Blob{std::string(bytes)}});
}

void MemorySettingsStore::remove(std::string_view key) {
    auto it = values_.find(key);
    if (it != values_.end()) {
        values_.erase(it);
    }
}

} // namespace ovel
