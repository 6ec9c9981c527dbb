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
    pendingCompilations.push_back({std::string(identifier), std::move(completion)});
    return true;
}

void FakeWebEngine::finishCompilation(bool succeeded) {
    if (pendingCompilations.empty()) {
        return;
    }
    Compilation compilation = std::move(pendingCompilations.front());
    pendingCompilations.pop_front();
    if (succeeded) {
        storedLists.insert(compilation.identifier);
    }
    if (compilation.completion) {
        compilation.completion(
            succeeded ? std::make_shared<FakeContentRuleList>(compilation.identifier) : nullptr);
    }
}

bool FakeWebEngine::loadContentRuleList(std::string_view identifier, CompletionHandler completion) {
    if (!hasRuleListStore) {
        return false;
    }
    const bool stored = storedLists.contains(std::string(identifier));
    completion(stored ? std::make_shared<FakeContentRuleList>(std::string(identifier)) : nullptr);
    return true;
}

bool FakeWebEngine::fetchContentRuleListIdentifiers(IdentifiersHandler completion) {
    if (!hasRuleListStore) {
        return false;
    }
    completion(std::vector<std::string>(storedLists.begin(), storedLists.end()));
    return true;
}

void FakeWebEngine::removeContentRuleList(std::string_view identifier) {
    storedLists.erase(std::string(identifier));
}

int FakeWebEngine::liveViewCount() const {
    return static_cast<int>(std::count_if(views.begin(), views.end(),
                                          [](const FakeWebView* view) { return view != nullptr; }));
}

} // namespace ovel::test
