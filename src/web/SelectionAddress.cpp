#include "web/SelectionAddress.h"

#include "web/BrowserTab.h"

namespace ovel {

std::string addressTextOnSelection(const BrowserTab& tab) {
    if (const auto& internal = tab.displayAddress.get()) {
        return *internal;
    }
    return tab.webView().url().value_or("");
}

} // namespace ovel
