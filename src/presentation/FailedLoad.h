#pragma once

#include "web/WebView.h"

#include <string>

namespace ovel {

// What the page area says of a load that failed: in plain words, naming the site.
struct FailedLoadMessage {
    std::string heading;
    std::string detail;
};

FailedLoadMessage failedLoadMessage(const LoadFailure& failure);

} // namespace ovel
