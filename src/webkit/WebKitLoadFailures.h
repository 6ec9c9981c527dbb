#pragma once

#include "web/WebView.h"

#include <optional>
#include <string_view>

typedef struct _GError GError;

namespace ovel {

// What a load failure reported by WebKit means to the person; none for a failure that is not
// one to show (a stop, or a load that became a download).
std::optional<LoadFailure> loadFailureFor(const GError* error, std::string_view failingUri);

// Whether a web address names a port WebKit will not connect to (the ports other services keep,
// as browsers agree on them).
bool usesPortWebKitRefuses(std::string_view uri);

} // namespace ovel
