#pragma once

#include "records/Records.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovel {

class ContentRuleList;
class FilterListSource;
class MainQueue;
class WebEngine;
struct ConvertedFilterList;
struct FilterListFiles;

// What the ad blocker blocks with, as the settings page tells it.
struct AdBlockStatus {
    enum class Lists {
        // Being read from the system.
        Reading,
        // Being converted and compiled, which takes a while once per version of the lists.
        Compiling,
        Ready,
        Missing,
        Unreadable,
        // The engine refused them, or has no store to compile them into.
        Failed,
    };
    Lists lists = Lists::Reading;
    // Rules of the list attached to the tabs; none before the first compilation ends.
    std::size_t ruleCount = 0;
    // Whether those rules include the published lists' or are the two built-in ones alone.
    bool publishedRules = false;
    // The date of the lists read.
    std::optional<Date> listsDate;
    bool operator==(const AdBlockStatus&) const = default;
};

// Brings the ad blocker's rule list into the engine: the two built-in rules at once, then the
// published lists, from the engine's store when they were compiled at an earlier launch, else
// converted and compiled in the background while the last version compiled keeps blocking.
// Every step is told on the main queue.
class AdBlockListLoader : public std::enable_shared_from_this<AdBlockListLoader> {
public:
    // A list to attach in place of the one before (none: keep it), and the status.
    using Update = std::function<void(std::shared_ptr<ContentRuleList>, const AdBlockStatus&)>;

    // The identifier of the built-in rules; the lists' start with it too.
    static constexpr std::string_view builtInListID = "ovel.adblock.rules";

    // Without a source, the built-in rules alone, with the lists missing.
    static std::shared_ptr<AdBlockListLoader> start(WebEngine& engine, MainQueue& mainQueue,
                                                    FilterListSource* source, Update update);

    // "ovel.adblock.rules.lists-HASH-COUNT": the lists' hash and their number of rules, so a
    // later launch knows both before reading anything but the lists' digest.
    static std::string listsID(std::string_view contentHash, std::size_t ruleCount);

    const AdBlockStatus& status() const { return status_; }

private:
    AdBlockListLoader(WebEngine& engine, MainQueue& mainQueue, FilterListSource* source,
                      Update update);

    // A handler the engine may call on any thread, running `step` on the main queue while the
    // loader lives.
    template <typename Value>
    std::function<void(Value)> onMain(void (AdBlockListLoader::*step)(Value));

    void begin();
    void builtInCompiled(std::shared_ptr<ContentRuleList> list);
    void listsRead(std::shared_ptr<const FilterListFiles> lists);
    void storeListed(std::vector<std::string> identifiers);
    void storedListLoaded(std::shared_ptr<ContentRuleList> list);
    void previousListLoaded(std::shared_ptr<ContentRuleList> list);
    void compileLists();
    void listsConverted(std::shared_ptr<const ConvertedFilterList> converted);
    void listsCompiled(std::shared_ptr<ContentRuleList> list);
    // Deletes every compiled version of the lists but `keep` from the store.
    void dropStoredLists(std::string keep);
    void publish(std::shared_ptr<ContentRuleList> list);

    WebEngine& engine_;
    MainQueue& mainQueue_;
    FilterListSource* source_;
    Update update_;
    AdBlockStatus status_;
    std::shared_ptr<const FilterListFiles> lists_;
    // The identifier being loaded or compiled, and its rule count.
    std::string pendingID_;
    std::size_t pendingCount_ = 0;
};

} // namespace ovel
