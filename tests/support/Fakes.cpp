#include "support/Fakes.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <utility>

namespace ovel::test {

Uuid SequentialUuidSource::makeUuid() {
    char text[37];
    std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012llX", ++count);
    return text;
}

int ManualMainQueue::drain() {
    int count = 0;
    while (!tasks_.empty()) {
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        task();
        ++count;
    }
    return count;
}

bool FakeDesktop::fileExists(std::string_view path) const {
    // As the real desktop answers: anything at the path, even a dangling link, is there.
    struct stat info;
    return ::lstat(std::string(path).c_str(), &info) == 0;
}

std::optional<std::string> RecordingSettingsStore::data(std::string_view key) const {
    log.push_back("read " + std::string(key));
    return MemorySettingsStore::data(key);
}

void RecordingSettingsStore::setString(std::string_view key, std::string_view value) {
    log.push_back("set " + std::string(key));
    MemorySettingsStore::setString(key, value);
}

void RecordingSettingsStore::setBoolean(std::string_view key, bool value) {
    log.push_back("set " + std::string(key));
    MemorySettingsStore::setBoolean(key, value);
}

void RecordingSettingsStore::setData(std::string_view key, std::string_view bytes) {
    log.push_back("set " + std::string(key));
    MemorySettingsStore::setData(key, bytes);
}

void RecordingSettingsStore::remove(std::string_view key) {
    log.push_back("remove " + std::string(key));
    MemorySettingsStore::remove(key);
}

std::vector<std::string> RecordingSettingsStore::entries(std::string_view prefix) const {
    std::vector<std::string> matching;
    std::copy_if(log.begin(), log.end(), std::back_inserter(matching),
                 [&](const std::string& entry) { return entry.starts_with(prefix); });
    return matching;
}

std::optional<std::string> FakeDownload::respond(std::string_view suggestedFilename) {
    const auto delegate = delegate_.lock();
    return delegate ? delegate->decideDestination(*this, suggestedFilename) : std::nullopt;
}

void FakeDownload::finish() {
    if (const auto delegate = delegate_.lock()) {
        delegate->downloadDidFinish(*this);
    }
}

void FakeDownload::fail(std::string_view message) {
    if (const auto delegate = delegate_.lock()) {
        delegate->downloadDidFail(*this, message);
    }
}

void FakeWebView::load(const LoadRequest& request) {
    loadRequests.push_back(request);
    // As the engine's view does: until a page commits it reports the address asked for.
    if (!committed) {
        currentUrl = request.url;
    }
}

void FakeWebView::loadHTMLString(std::string_view html) {
    htmlLoads.emplace_back(html);
    committed = true;
    // Generated HTML has no URL; the engine reports it as finished like any page.
    if (currentUrl) {
        currentUrl.reset();
        delegate_.urlDidChange();
    }
}

void FakeWebView::simulateNavigation(const std::string& url, std::optional<std::string> pageTitle) {
    delegate_.decidePolicy(NavigationAction{url, false});
    delegate_.pageWillLoad(url);
    delegate_.didStartProvisionalNavigation();
    committed = true;
    currentUrl = url;
    delegate_.urlDidChange();
    currentTitle = std::move(pageTitle);
    delegate_.didFinishNavigation();
}

bool FakeWebView::restoreSessionState(std::string_view state, const LoadRequest& request) {
    if (state == "unreadable") {
        return false;
    }
    restoredStates.emplace_back(state);
    engineState = std::string(state);
    load(request);
    return true;
}

void FakeWebView::simulateFailure(std::optional<LoadFailure> failure) {
    delegate_.didStartProvisionalNavigation();
    delegate_.didFailNavigation(failure);
}

void FakeWebView::simulateInPageNavigation(const std::string& url) {
    currentUrl = url;
    delegate_.urlDidChange();
}

void FakeWebView::simulateFavicon(std::optional<FaviconImage> image) {
    icon = std::move(image);
    delegate_.faviconDidChange();
}

void FakeWebView::simulateProgress(double value) {
    progress = value;
    delegate_.estimatedProgressDidChange();
}

std::shared_ptr<FakeDownload> FakeWebView::simulateDownload(std::string_view suggestedFilename) {
    auto download = std::make_shared<FakeDownload>();
    delegate_.navigationDidBecomeDownload(download);
    download->respond(suggestedFilename);
    return download;
}

namespace {

class FakeContentRuleList : public ContentRuleList {
public:
    explicit FakeContentRuleList(std::string identifier) : identifier_(std::move(identifier)) {}
    const std::string& identifier() const override { return identifier_; }

private:
    std::string identifier_;
};

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

bool FakeWebEngine::compileContentRuleList(std::string_view identifier, std::string_view,
                                           CompletionHandler completion) {
    compiledIdentifier = identifier;
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
    const bool stored = storedLists.contains(std::string(identifier));
    completion(stored ? std::make_shared<FakeContentRuleList>(std::string(identifier)) : nullptr);
    return true;
}

bool FakeWebEngine::fetchContentRuleListIdentifiers(IdentifiersHandler completion) {
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
