#include "support/FakeWebEngine.h"

#include <algorithm>

namespace ovel::test {

namespace {

// Clears its slot in the engine's list when the owning tab lets the view go.
class TrackedFakeWebView : public FakeWebView {
public:
    TrackedFakeWebView(WebViewDelegate& delegate, FakeWebView*& slot)
        : FakeWebView(delegate), slot_(slot) {}
    ~TrackedFakeWebView() override { slot_ = nullptr; }

private:
    FakeWebView*& slot_;
};

} // namespace

std::unique_ptr<WebView> FakeWebEngine::createWebView(WebViewDelegate& delegate) {
    views.push_back(nullptr);
    auto view = std::make_unique<TrackedFakeWebView>(delegate, views.back());
    views.back() = view.get();
    return view;
}

bool FakeWebEngine::compileContentRuleList(std::string_view identifier, std::string_view json,
                                           CompletionHandler completion) {
    if (!hasRuleListStore) {
        return false;
    }
    compiledIdentifier = identifier;
    compiledJson = json;
    pendingCompletion = std::move(completion);
    return true;
}

void FakeWebEngine::finishCompilation(bool succeeded) {
    auto completion = std::move(pendingCompletion);
    pendingCompletion = nullptr;
    if (completion) {
        completion(succeeded ? std::make_shared<FakeContentRuleList>(compiledIdentifier) : nullptr);
    }
}

int FakeWebEngine::liveViewCount() const {
    return static_cast<int>(std::count_if(views.begin(), views.end(),
                                          [](const FakeWebView* view) { return view != nullptr; }));
}

} // namespace ovel::test
