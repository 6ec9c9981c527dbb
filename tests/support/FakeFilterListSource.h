#pragma once

#include "web/FilterListSource.h"

#include <string>
#include <utility>

namespace ovel::test {

// Keeps each read and conversion pending until the test answers it.
class FakeFilterListSource : public FilterListSource {
public:
    void read(ReadHandler done) override { pendingRead = std::move(done); }
    void convert(std::shared_ptr<const FilterListFiles> lists, std::string leadingBlockRules,
                 ConvertHandler done) override {
        convertedHash = lists->contentHash;
        convertedLeadingRules = std::move(leadingBlockRules);
        pendingConversion = std::move(done);
        ++conversions;
    }

    // Lists of `hash` were read (or, without a hash, none are installed).
    void finishRead(std::string hash, std::optional<Date> date = Date{815000000}) {
        auto lists = std::make_shared<FilterListFiles>();
        lists->status =
            hash.empty() ? FilterListFiles::Status::Missing : FilterListFiles::Status::Read;
        lists->contentHash = std::move(hash);
        lists->date = date;
        std::exchange(pendingRead, nullptr)(std::move(lists));
    }
    void finishConversion(std::size_t ruleCount) {
        auto converted = std::make_shared<ConvertedFilterList>();
        converted->ruleCount = ruleCount;
        std::exchange(pendingConversion, nullptr)(std::move(converted));
    }

    ReadHandler pendingRead;
    ConvertHandler pendingConversion;
    std::string convertedHash;
    std::string convertedLeadingRules;
    int conversions = 0;
};

} // namespace ovel::test
