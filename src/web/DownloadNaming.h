#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ovel {

// The longest name, in bytes, given to a download. Linux file systems take 255, but while the
// transfer runs the engine writes to the name plus a suffix of its own (WebKit's ".wkdownload",
// 11 bytes), and that name must fit as well.
inline constexpr std::size_t maxDownloadFileNameBytes = 255 - 11;

// A file name made safe from whatever a server suggested: its last path component, without
// control characters or surrounding blanks, never "." or "..", at most
// maxDownloadFileNameBytes with its extension kept, and "download" when nothing usable is left.
std::string safeDownloadFileName(std::string_view suggestedFilename);

// The path in `folder` at which to save a download suggested as `suggestedFilename`: the safe
// name itself when free, else the base name with "-1", "-2", … before the extension.
std::string uniqueDownloadURL(std::string_view folder, std::string_view suggestedFilename,
                              const std::function<bool(std::string_view path)>& fileExists);

} // namespace ovel
