#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ovel {

// The longest file name, in bytes, that Linux file systems take.
inline constexpr std::size_t maxFileNameBytes = 255;

// A file name made safe from whatever a server suggested: its last path component, without
// control characters or surrounding blanks, never "." or "..", at most 255 bytes with its
// extension kept, and "download" when nothing usable is left.
std::string safeDownloadFileName(std::string_view suggestedFilename);

// The path in `folder` at which to save a download suggested as `suggestedFilename`: the safe
// name itself when free, else the base name with "-1", "-2", … before the extension.
std::string uniqueDownloadURL(std::string_view folder, std::string_view suggestedFilename,
                              const std::function<bool(std::string_view path)>& fileExists);

} // namespace ovel
