#pragma once

#include "support/TestEnvironment.h"

#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovel::test {

// The lines joined with " | ", as tests log events.
inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines) {
        text += (text.empty() ? "" : " | ") + line;
    }
    return text;
}

// A page with a title and the given body.
inline std::string titled(const std::string& title, const std::string& body = "") {
    return "<html><head><title>" + title + "</title></head><body>" + body + "</body></html>";
}

// A script that asks for camera or microphone capture with `constraints`: "stream" when granted,
// else "error " and the error's name.
inline std::string mediaScript(const std::string& constraints) {
    return "try { const s = await navigator.mediaDevices.getUserMedia(" + constraints +
           "); s.getTracks().forEach(t => t.stop()); return 'stream'; }"
           " catch (e) { return 'error ' + e.name; }";
}

struct ScriptResult {
    bool done = false;
    // None when the script threw.
    std::optional<std::string> value;
};

// Starts `body` as an async JavaScript function in the page (as if from a user gesture); the
// result fills in when it has run.
inline std::shared_ptr<ScriptResult> startScript(WebKitWebView* view, const std::string& body) {
    auto result = std::make_shared<ScriptResult>();
    webkit_web_view_call_async_javascript_function(
        view, body.c_str(), -1, nullptr, nullptr, nullptr, nullptr,
        [](GObject* source, GAsyncResult* asyncResult, gpointer data) {
            std::unique_ptr<std::shared_ptr<ScriptResult>> held(
                static_cast<std::shared_ptr<ScriptResult>*>(data));
            GError* error = nullptr;
            JSCValue* value = webkit_web_view_call_async_javascript_function_finish(
                WEBKIT_WEB_VIEW(source), asyncResult, &error);
            if (value != nullptr) {
                char* text = jsc_value_to_string(value);
                (*held)->value = text;
                g_free(text);
                g_object_unref(value);
            }
            g_clear_error(&error);
            (*held)->done = true;
        },
        new std::shared_ptr<ScriptResult>(result));
    return result;
}

// Runs a script as startScript() does and returns its result; none when it threw or did not
// answer in time.
inline std::optional<std::string> runScript(WebKitWebView* view, const std::string& body) {
    auto result = startScript(view, body);
    waitUntil([&] { return result->done; });
    return result->value;
}

} // namespace ovel::test
