#pragma once

#include "web/FilterListConverter.h"
#include "web/FilterListFiles.h"

#include <functional>
#include <memory>
#include <string>

namespace ovel {

// The published ad and tracker lists on this system, read and converted away from the UI
// thread: each answer is handed over on the UI thread.
class FilterListSource {
public:
    virtual ~FilterListSource() = default;

    using ReadHandler = std::function<void(std::shared_ptr<const FilterListFiles>)>;
    using ConvertHandler = std::function<void(std::shared_ptr<const ConvertedFilterList>)>;

    virtual void read(ReadHandler done) = 0;
    // The rules of `lists`, with `leadingBlockRules` among their blocking rules.
    virtual void convert(std::shared_ptr<const FilterListFiles> lists,
                         std::string leadingBlockRules, ConvertHandler done) = 0;
};

} // namespace ovel
