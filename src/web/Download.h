#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ovel {

class Download;

// Receives the events of the downloads it is given, on the UI thread; each names its transfer,
// as one delegate may follow several at once.
class DownloadDelegate {
public:
    virtual ~DownloadDelegate() = default;
    // The full path to save to, answered at once; none abandons the download.
    virtual std::optional<std::string> decideDestination(Download& download,
                                                         std::string_view suggestedFilename) = 0;
    virtual void downloadDidFinish(Download& download) = 0;
    // Also the end of a cancelled transfer.
    virtual void downloadDidFail(Download& download, std::string_view errorMessage) = 0;
};

// One transfer of the engine. The engine keeps it alive while it runs.
class Download {
public:
    virtual ~Download() = default;
    // Held weakly: a delegate that is gone hears nothing more.
    virtual void setDelegate(std::weak_ptr<DownloadDelegate> delegate) = 0;
    // Stops the transfer and removes what it had written; it ends with a failure report.
    virtual void cancel() = 0;
};

} // namespace ovel
