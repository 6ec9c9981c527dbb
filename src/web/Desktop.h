#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// The desktop's file services: where downloads go, whether a path is taken, and showing a file
// in the file manager.
class Desktop {
public:
    virtual ~Desktop() = default;
    // The user's Downloads folder, created when missing; none when it cannot be had.
    virtual std::optional<std::string> downloadsFolder() = 0;
    virtual bool fileExists(std::string_view path) const = 0;
    virtual void revealFile(std::string_view path) = 0;
};

} // namespace ovel
