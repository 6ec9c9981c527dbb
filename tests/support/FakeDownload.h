#pragma once

#include "web/Download.h"

namespace ovel::test {

// A transfer that reports nothing by itself: the test calls the delegate for it.
class FakeDownload : public Download {
public:
    void setDelegate(std::weak_ptr<DownloadDelegate> to) override { delegate = std::move(to); }
    void cancel() override { ++cancels; }

    std::weak_ptr<DownloadDelegate> delegate;
    int cancels = 0;
};

} // namespace ovel::test
