#include "webkit/WebKitContentRuleList.h"

#include <webkit/webkit.h>

#include <utility>

namespace ovel {

WebKitContentRuleList::WebKitContentRuleList(std::string identifier,
                                             WebKitUserContentFilter* filter)
    : identifier_(std::move(identifier)), filter_(filter) {}

// A boxed type with its own reference count, not a GObject.
WebKitContentRuleList::~WebKitContentRuleList() {
    webkit_user_content_filter_unref(filter_);
}

} // namespace ovel
