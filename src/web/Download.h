#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// Receives one download's events, on the UI thread.
class DownloadDelegate {
public:
    virtual ~DownloadDelegate() = default;
    // The full path to save to, answered at once; none abandons the download.
    virtual std::optional<std::string> decideDestination(std::string_view suggestedFilename) = 0;
    virtual void downloadDidFinish() = 0;
    virtual void downloadDidFail(std::string_view errorMessage) = 0;
};

// One transfer of the engine. The engine keeps it alive while it runs.
class Download {
public:
    virtual ~Download() = default;
    // Held weakly: a delegate that is gone hears nothing more.
    virtual void setDelegate(std::weak_ptr<DownloadDelegate> delegate) = 0;
};

} // namespace ovel
