#pragma once

#include "web/WebEngine.h"

#include <string>

typedef struct _WebKitUserContentFilter WebKitUserContentFilter;

namespace ovel {

// A rule list compiled by WebKit's content filter store.
class WebKitContentRuleList final : public ContentRuleList {
public:
    // Takes over the caller's reference to `filter`.
    WebKitContentRuleList(std::string identifier, WebKitUserContentFilter* filter);
    ~WebKitContentRuleList() override;

    WebKitContentRuleList(const WebKitContentRuleList&) = delete;
    WebKitContentRuleList& operator=(const WebKitContentRuleList&) = delete;

    const std::string& identifier() const override { return identifier_; }
    WebKitUserContentFilter* filter() const { return filter_; }

private:
    std::string identifier_;
    WebKitUserContentFilter* filter_;
};

} // namespace ovel
