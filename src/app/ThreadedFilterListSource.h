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
    // OVEL_FILTER_LISTS when it is set (folders separated by ':', none when empty), for whoever
    // starts the browser to try it on lists of their own; else the system's folders.
    static std::vector<std::string> configuredFolders();

    explicit ThreadedFilterListSource(std::vector<std::string> folders = systemFolders());

    void read(ReadHandler done) override;
    void convert(std::shared_ptr<const FilterListFiles> lists, std::string leadingBlockRules,
                 ConvertHandler done) override;

private:
    std::vector<std::string> folders_;
};

} // namespace ovel
