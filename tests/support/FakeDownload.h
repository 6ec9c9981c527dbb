#pragma once

#include "web/Download.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ovel::test {

// A transfer of the engine that the test ends, with the reports the engine would send.
class FakeDownload : public Download {
public:
    void setDelegate(std::weak_ptr<DownloadDelegate> delegate) override {
        delegate_ = std::move(delegate);
    }
    // Only counted: the engine reports the end of a cancelled transfer as a failure, later.
    void cancel() override { ++cancelCount; }

    // The response arrived: where to save it, as the delegate answers.
    std::optional<std::string> respond(std::string_view suggestedFilename) {
        const auto delegate = delegate_.lock();
        return delegate ? delegate->decideDestination(*this, suggestedFilename) : std::nullopt;
    }
    void finish() {
        if (const auto delegate = delegate_.lock()) {
            delegate->downloadDidFinish(*this);
        }
    }
    void fail(std::string_view message) {
        if (const auto delegate = delegate_.lock()) {
            delegate->downloadDidFail(*this, message);
        }
    }

    int cancelCount = 0;

private:
    std::weak_ptr<DownloadDelegate> delegate_;
};

} // namespace ovel::test
