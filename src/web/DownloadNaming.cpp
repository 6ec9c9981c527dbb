#include "web/DownloadNaming.h"

#include "web/Url.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr std::string_view fallbackName = "download";
// Longer "extensions" are part of the name: no real one is this long.
constexpr std::size_t maxExtensionBytes = 32;

bool isContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Cuts `text` to at most `bytes` bytes without splitting a UTF-8 sequence. A sequence is at most
// four bytes long, so its first byte is at most three back; stray continuation bytes (invalid
// UTF-8) are cut where the limit falls rather than searched back through, which could leave
// nothing of the name.
std::string_view prefixOfBytes(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) {
        return text;
    }
    std::size_t end = bytes;
    for (int back = 0; back < 3 && end > 0 && isContinuationByte(text[end]); ++back) {
        --end;
    }
    if (isContinuationByte(text[end])) {
        end = bytes;
    }
    return text.substr(0, end);
}

// Names that would not name a new file in the folder.
bool isUnusableName(std::string_view name) {
    return std::all_of(name.begin(), name.end(), [](char c) { return c == '.' || c == ' '; });
}

struct SplitName {
    std::string base;
    std::string extension; // without the dot; may be empty
};

// "archive.tar.gz" -> ("archive.tar", "gz"); ".profile" and "README" have no extension.
SplitName splitExtension(const std::string& name) {
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size() ||
        name.size() - dot - 1 > maxExtensionBytes) {
        return {name, ""};
    }
    return {name.substr(0, dot), name.substr(dot + 1)};
}

// base + suffix + "." + extension, with the base shortened so the whole fits a file name.
std::string composeName(const SplitName& split, std::string_view suffix) {
    const std::size_t tail =
        suffix.size() + (split.extension.empty() ? 0 : split.extension.size() + 1);
    std::string name(prefixOfBytes(split.base, maxDownloadFileNameBytes - tail));
    name.append(suffix);
    if (!split.extension.empty()) {
        name.push_back('.');
        name.append(split.extension);
    }
    return name;
}

} // namespace

std::string safeDownloadFileName(std::string_view suggestedFilename) {
    std::string name(suggestedFilename);
    std::replace(name.begin(), name.end(), '\\', '/');
    if (const auto slash = name.rfind('/'); slash != std::string::npos) {
        name.erase(0, slash + 1);
    }
    name.erase(std::remove_if(name.begin(), name.end(),
                              [](unsigned char c) { return c < 0x20 || c == 0x7F; }),
               name.end());
    name = trimmed(name);
    if (isUnusableName(name)) {
        return std::string(fallbackName);
    }
    name = composeName(splitExtension(name), "");
    // Cutting a long name must not leave "", "." or "..", whatever bytes it was made of.
    return isUnusableName(name) ? std::string(fallbackName) : name;
}

std::string uniqueDownloadURL(std::string_view folder, std::string_view suggestedFilename,
                              const std::function<bool(std::string_view path)>& fileExists) {
    std::string directory(folder);
    if (directory.empty() || directory.back() != '/') {
        directory.push_back('/');
    }
    const std::string name = safeDownloadFileName(suggestedFilename);
    std::string candidate = directory + name;
    const SplitName split = splitExtension(name);
    for (unsigned long n = 1; fileExists(candidate); ++n) {
        candidate = directory + composeName(split, "-" + std::to_string(n));
    }
    return candidate;
}

} // namespace ovel
