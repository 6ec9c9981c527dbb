#pragma once

#include "app/AppPaths.h"
#include "support/TestEnvironment.h"
#include "webkit/WebKitEngine.h"

#include <memory>

namespace ovel::test {

// An engine whose website data, cache and compiled content filters live in the test's own fresh
// XDG folders, so nothing cached by an earlier test hides a request.
inline std::unique_ptr<WebKitEngine> freshEngine(const TestEnvironment& environment) {
    const auto paths =
        AppPaths::under(environment.configHome(), environment.dataHome(), environment.cacheHome());
    return std::make_unique<WebKitEngine>(WebKitEngine::Folders{
        paths.websiteDataFolder, paths.websiteCacheFolder, paths.contentFiltersFolder});
}

} // namespace ovel::test
