#pragma once

#include "web/FilterListSource.h"

#include <string>
#include <vector>

namespace ovel {

// Reads and converts the lists on GLib's worker threads; each answer comes back on the main
// context, whatever became of this object meanwhile.
class ThreadedFilterListSource final : public FilterListSource {
public:
    // Where Debian's uBlock Origin packages keep their copies of the lists.
    static std::vector<std::string> systemFolders();

    explicit ThreadedFilterListSource(std::vector<std::string> folders = systemFolders());

    void read(ReadHandler done) override;
    void convert(std::shared_ptr<const FilterListFiles> lists, std::string leadingBlockRules,
                 ConvertHandler done) override;

private:
    std::vector<std::string> folders_;
};

} // namespace ovel
