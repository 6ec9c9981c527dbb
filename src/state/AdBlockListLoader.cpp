#include "state/AdBlockListLoader.h"

#include "web/ContentPolicies.h"
#include "web/FilterListSource.h"
#include "web/MainQueue.h"
#include "web/WebEngine.h"

#include <algorithm>
#include <charconv>

namespace ovel {

namespace {

constexpr std::size_t builtInRuleCount = 2;

std::string listsPrefix() {
    return std::string(AdBlockListLoader::builtInListID) + ".lists-";
}

// The rule count at the end of a lists identifier; none for any other identifier.
std::optional<std::size_t> listsRuleCount(std::string_view identifier) {
    if (!identifier.starts_with(listsPrefix())) {
        return std::nullopt;
    }
    const std::size_t dash = identifier.rfind('-');
    std::size_t count = 0;
    const char* end = identifier.data() + identifier.size();
    const auto [last, error] = std::from_chars(identifier.data() + dash + 1, end, count);
    if (error != std::errc() || last != end || dash + 1 == identifier.size()) {
        return std::nullopt;
    }
    return count;
}

} // namespace

std::shared_ptr<AdBlockListLoader> AdBlockListLoader::start(WebEngine& engine, MainQueue& mainQueue,
                                                            FilterListSource* source,
                                                            Update update) {
    std::shared_ptr<AdBlockListLoader> loader(
        new AdBlockListLoader(engine, mainQueue, source, std::move(update)));
    loader->begin();
    return loader;
}

AdBlockListLoader::AdBlockListLoader(WebEngine& engine, MainQueue& mainQueue,
                                     FilterListSource* source, Update update)
    : engine_(engine), mainQueue_(mainQueue), source_(source), update_(std::move(update)) {}

std::string AdBlockListLoader::listsID(std::string_view contentHash, std::size_t ruleCount) {
    return listsPrefix() + std::string(contentHash) + "-" + std::to_string(ruleCount);
}

template <typename Value>
std::function<void(Value)> AdBlockListLoader::onMain(void (AdBlockListLoader::*step)(Value)) {
    return [weak = weak_from_this(), &mainQueue = mainQueue_, step](Value value) {
        // The queue lives as long as the state that owns the loader, and no longer.
        if (weak.expired()) {
            return;
        }
        mainQueue.post([weak, step, value = std::move(value)]() mutable {
            if (auto loader = weak.lock()) {
                ((*loader).*step)(std::move(value));
            }
        });
    };
}

void AdBlockListLoader::begin() {
    const bool compiling = engine_.compileContentRuleList(
        builtInListID, adBlockRuleListJSON, onMain(&AdBlockListLoader::builtInCompiled));
    if (source_ == nullptr || !compiling) {
        status_.lists = compiling ? AdBlockStatus::Lists::Missing : AdBlockStatus::Lists::Failed;
        publish(nullptr);
        return;
    }
    publish(nullptr);
    source_->read([weak = weak_from_this()](std::shared_ptr<const FilterListFiles> lists) {
        if (auto loader = weak.lock()) {
            loader->listsRead(std::move(lists));
        }
    });
}

void AdBlockListLoader::builtInCompiled(std::shared_ptr<ContentRuleList> list) {
    // The lists may have come first, from the store.
    if (list && !status_.publishedRules) {
        status_.ruleCount = builtInRuleCount;
        publish(std::move(list));
    }
}

void AdBlockListLoader::listsRead(std::shared_ptr<const FilterListFiles> lists) {
    status_.listsDate = lists->date;
    switch (lists->status) {
    case FilterListFiles::Status::Missing:
    case FilterListFiles::Status::Unreadable:
        status_.lists = lists->status == FilterListFiles::Status::Missing
                            ? AdBlockStatus::Lists::Missing
                            : AdBlockStatus::Lists::Unreadable;
        publish(nullptr);
        dropStoredLists({});
        return;
    case FilterListFiles::Status::Read:
        break;
    }
    lists_ = std::move(lists);
    if (!engine_.fetchContentRuleListIdentifiers(onMain(&AdBlockListLoader::storeListed))) {
        storeListed({});
    }
}

void AdBlockListLoader::storeListed(std::vector<std::string> identifiers) {
    const std::string current = listsPrefix() + lists_->contentHash + "-";
    const auto stored =
        std::find_if(identifiers.begin(), identifiers.end(), [&](const std::string& id) {
            return id.starts_with(current) && listsRuleCount(id);
        });
    if (stored != identifiers.end()) {
        pendingID_ = *stored;
        pendingCount_ = *listsRuleCount(*stored);
        engine_.loadContentRuleList(pendingID_, onMain(&AdBlockListLoader::storedListLoaded));
        return;
    }
    // An earlier version blocks while this one compiles.
    const auto previous =
        std::find_if(identifiers.begin(), identifiers.end(),
                     [](const std::string& id) { return listsRuleCount(id).has_value(); });
    if (previous != identifiers.end()) {
        engine_.loadContentRuleList(*previous, onMain(&AdBlockListLoader::previousListLoaded));
    }
    compileLists();
}

void AdBlockListLoader::storedListLoaded(std::shared_ptr<ContentRuleList> list) {
    if (!list) {
        // Compiled by another version of the engine, or damaged: compiled again.
        compileLists();
        return;
    }
    status_.lists = AdBlockStatus::Lists::Ready;
    status_.ruleCount = pendingCount_;
    status_.publishedRules = true;
    lists_.reset();
    publish(std::move(list));
    dropStoredLists(pendingID_);
}

void AdBlockListLoader::previousListLoaded(std::shared_ptr<ContentRuleList> list) {
    const bool stillWanted = status_.lists == AdBlockStatus::Lists::Compiling ||
                             status_.lists == AdBlockStatus::Lists::Failed;
    if (list && stillWanted && !status_.publishedRules) {
        status_.ruleCount = listsRuleCount(list->identifier()).value_or(0);
        status_.publishedRules = true;
        publish(std::move(list));
    }
}

void AdBlockListLoader::compileLists() {
    status_.lists = AdBlockStatus::Lists::Compiling;
    publish(nullptr);
    source_->convert(lists_, std::string(adBlockRuleListJSON),
                     [weak = weak_from_this()](std::shared_ptr<const ConvertedFilterList> rules) {
                         if (auto loader = weak.lock()) {
                             loader->listsConverted(std::move(rules));
                         }
                     });
}

void AdBlockListLoader::listsConverted(std::shared_ptr<const ConvertedFilterList> converted) {
    pendingID_ = listsID(lists_->contentHash, converted->ruleCount);
    pendingCount_ = converted->ruleCount;
    lists_.reset();
    if (!engine_.compileContentRuleList(pendingID_, converted->json,
                                        onMain(&AdBlockListLoader::listsCompiled))) {
        listsCompiled(nullptr);
    }
}

void AdBlockListLoader::listsCompiled(std::shared_ptr<ContentRuleList> list) {
    if (!list) {
        status_.lists = AdBlockStatus::Lists::Failed;
        publish(nullptr);
        return;
    }
    status_.lists = AdBlockStatus::Lists::Ready;
    status_.ruleCount = pendingCount_;
    status_.publishedRules = true;
    publish(std::move(list));
    dropStoredLists(pendingID_);
}

void AdBlockListLoader::dropStoredLists(std::string keep) {
    engine_.fetchContentRuleListIdentifiers(
        [&engine = engine_, &mainQueue = mainQueue_, weak = weak_from_this(),
         keep = std::move(keep)](std::vector<std::string> identifiers) {
            if (weak.expired()) {
                return;
            }
            mainQueue.post([&engine, weak, keep, identifiers = std::move(identifiers)] {
                if (weak.expired()) {
                    return;
                }
                for (const std::string& id : identifiers) {
                    if (id != keep && listsRuleCount(id)) {
                        engine.removeContentRuleList(id);
                    }
                }
            });
        });
}

void AdBlockListLoader::publish(std::shared_ptr<ContentRuleList> list) {
    if (update_) {
        update_(std::move(list), status_);
    }
}

} // namespace ovel
