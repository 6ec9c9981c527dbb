#pragma once

#include <webkit/webkit.h>

#include <string>
#include <vector>

namespace ovel::test {

// Logs what a web view's find controller reports: "found <count>" or "not found".
class FindRecorder {
public:
    explicit FindRecorder(WebKitWebView* view)
        : finder_(webkit_web_view_get_find_controller(view)) {
        g_signal_connect(finder_, "found-text",
                         G_CALLBACK(+[](WebKitFindController*, guint count, gpointer self) {
                             static_cast<FindRecorder*>(self)->results.push_back(
                                 "found " + std::to_string(count));
                         }),
                         this);
        g_signal_connect(finder_, "failed-to-find-text",
                         G_CALLBACK(+[](WebKitFindController*, gpointer self) {
                             static_cast<FindRecorder*>(self)->results.push_back("not found");
                         }),
                         this);
    }
    ~FindRecorder() { g_signal_handlers_disconnect_by_data(finder_, this); }

    FindRecorder(const FindRecorder&) = delete;
    FindRecorder& operator=(const FindRecorder&) = delete;

    std::vector<std::string> results;

private:
    WebKitFindController* finder_;
};

} // namespace ovel::test
