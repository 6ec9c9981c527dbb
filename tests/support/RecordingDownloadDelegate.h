#pragma once

#include "web/Download.h"

#include <optional>
#include <string>
#include <vector>

namespace ovel::test {

// Answers the destination with a path in `folder` (or abandons, when the folder is none) and
// logs what the download reports: "destination <name>", "finish", "fail <message>".
class RecordingDownloadDelegate : public DownloadDelegate {
public:
    std::optional<std::string> folder;
    std::vector<std::string> events;

    std::optional<std::string> decideDestination(Download&,
                                                 std::string_view suggestedFilename) override {
        events.push_back("destination " + std::string(suggestedFilename));
        if (!folder) {
            return std::nullopt;
        }
        return *folder + "/" + std::string(suggestedFilename);
    }
    void downloadDidFinish(Download&) override { events.push_back("finish"); }
    void downloadDidFail(Download&, std::string_view errorMessage) override {
        events.push_back("fail " + std::string(errorMessage));
    }
};

} // namespace ovel::test
