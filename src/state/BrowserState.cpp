// Start-up, the reactions to assignments, loading a profile, and making and binding tabs.

#include "state/BrowserState.h"

#include "records/RecordsJson.h"
#include "records/SettingsStore.h"
#include "web/AddressResolution.h"
#include "web/ContentPolicies.h"
#include "web/MainQueue.h"
#include "web/UuidSource.h"
#include "web/WebEngine.h"

#include <algorithm>
#include <utility>

namespace ovel {

namespace {

int clampedIndex(int index, std::size_t count) {
    const int last = std::max(static_cast<int>(count) - 1, 0);
    return std::clamp(index, 0, last);
}

bool fallsBackToPlainHttp(LoadFailureKind kind) {
    switch (kind) {
    case LoadFailureKind::ConnectionRefused:
    case LoadFailureKind::TimedOut:
    case LoadFailureKind::ConnectionLost:
    case LoadFailureKind::SecureConnectionFailed:
        return true;
    case LoadFailureKind::HostNotFound:
    case LoadFailureKind::PortBlocked:
    case LoadFailureKind::Other:
        return false;
    }
    return false;
}

// What the address field shows for a tab: its internal page, else its page's address.
std::string addressTextFor(const BrowserTab& tab) {
    if (const auto& address = tab.displayAddress.get()) {
        return *address;
    }
    return tab.url().value_or(std::string());
}

} // namespace

std::shared_ptr<BrowserState> BrowserState::create(const BrowserServices& services) {
    std::shared_ptr<BrowserState> state(new BrowserState(services));
    state->init();
    return state;
}

BrowserState::BrowserState(const BrowserServices& services) : services_(services) {
    tabs.onChange([this] { noteSelection(); });
    notices_->beforeAnnouncing([this] { followSelection(); });
    connectReactions();
}

BrowserState::~BrowserState() {
    notices_->beforeAnnouncing(nullptr);
    tabSubscriptions_.disconnectAll();
}

std::string BrowserState::profileKey(std::string_view base, std::string_view profileID) {
    std::string key(base);
    key.push_back('.');
    key.append(profileID);
    return key;
}

std::shared_ptr<BrowserTab> BrowserState::selectedTab() const {
    const TabList& list = tabs.get();
    const int index = selectedIndex.get();
    if (index < 0 || index >= static_cast<int>(list.size())) {
        return nullptr;
    }
    return list[static_cast<std::size_t>(index)];
}

int BrowserState::indexOfTab(const Uuid& id) const {
    const TabList& list = tabs.get();
    auto it =
        std::find_if(list.begin(), list.end(), [&](const auto& tab) { return tab->id() == id; });
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

void BrowserState::noteSelection() {
    notices_->enqueue(&announcedIndex_, [this] { announceSelection(); });
}

void BrowserState::announceSelection() {
    const auto tab = selectedTab();
    SelectionChange change{announcedIndex_, selectedIndex.get(), announcedTab_,
                           tab ? tab->id() : Uuid{}};
    if (change.oldIndex == change.newIndex && change.oldTab == change.newTab) {
        return;
    }
    announcedIndex_ = change.newIndex;
    announcedTab_ = change.newTab;
    selectionChanged.emit(change);
}

void BrowserState::followSelection() {
    const auto tab = selectedTab();
    if (isBootstrapping_ || !tab) {
        return;
    }
    if (selectedIndex.get() != announcedIndex_ || tab->id() != announcedTab_) {
        addressText.set(addressTextFor(*tab));
        // Full screen belongs to the page that asked for it, which is no longer shown.
        pageFullscreen.set(false);
    }
}

void BrowserState::resetAddressText() {
    auto group = operation();
    if (const auto tab = selectedTab()) {
        addressText.set(addressTextFor(*tab));
    }
}

void BrowserState::followTabAddress(const BrowserTab& tab) {
    const auto selected = selectedTab();
    if (selected && selected->id() == tab.id()) {
        addressText.set(addressTextFor(tab));
    }
}

void BrowserState::connectReactions() {
    SettingsStore& settings = services_.settings;
    theme.assigned().connect([this, &settings] {
        settings.setString(themeKey, rawValue(theme.get()));
        refreshStartPagesForTheme();
    });
    searchEngine.assigned().connect(
        [this, &settings] { settings.setString(searchEngineKey, rawValue(searchEngine.get())); });
    smoothAnimations.assigned().connect(
        [this, &settings] { settings.setBoolean(smoothAnimationsKey, smoothAnimations.get()); });
    adBlockEnabled.assigned().connect([this, &settings] {
        settings.setBoolean(adBlockEnabledKey, adBlockEnabled.get());
        applyAdBlockToAllTabs();
    });

    // Collections are saved for the active profile, except while start-up or a profile load
    // fills them.
    auto savesCollections = [this] { return !isBootstrapping_ && !isSwitchingProfileState_; };
    bookmarks.assigned().connect([this, savesCollections] {
        if (savesCollections()) {
            saveBookmarks(activeProfileID.get(), bookmarks.get());
        }
    });
    historyEntries.assigned().connect([this, savesCollections] {
        if (savesCollections()) {
            saveHistory(activeProfileID.get(), historyEntries.get());
        }
    });
    sitePermissionRules.assigned().connect([this, savesCollections] {
        // Pages read their notification permission from the engine, whichever profile set it.
        services_.engine.setNotificationPermissions(
            notificationPermissions(sitePermissionRules.get()));
        attachAdBlockToAllTabs();
        if (savesCollections()) {
            saveSitePermissions(activeProfileID.get(), sitePermissionRules.get());
        }
    });
    workspaceSnapshots.assigned().connect([this, savesCollections] {
        if (savesCollections()) {
            saveWorkspaceSnapshots(activeProfileID.get(), workspaceSnapshots.get());
        }
    });
    activeProfileID.assigned().connect([this] { onActiveProfileIDChanged(); });
}

void BrowserState::init() {
    auto group = operation();
    SettingsStore& settings = services_.settings;
    isBootstrapping_ = true;
    isSwitchingProfileState_ = false;

    theme.setInitial(browserThemeFromRaw(settings.string(themeKey).value_or(""))
                         .value_or(BrowserTheme::Midnight));
    searchEngine.setInitial(searchEngineFromRaw(settings.string(searchEngineKey).value_or(""))
                                .value_or(SearchEngine::Google));
    adBlockEnabled.setInitial(settings.boolean(adBlockEnabledKey));
    smoothAnimations.setInitial(
        settings.holdsBoolean(smoothAnimationsKey) ? settings.boolean(smoothAnimationsKey) : true);

    std::vector<BrowserProfile> storedProfiles;
    if (auto blob = settings.data(profilesKey)) {
        storedProfiles = decodeProfiles(*blob).value_or(std::vector<BrowserProfile>{});
    }
    if (storedProfiles.empty()) {
        BrowserProfile profile{services_.uuids.makeUuid(), "Default"};
        activeProfileID.setInitial(profile.id);
        profiles.setInitial({std::move(profile)});
        reactedProfileID_ = activeProfileID.get();
        // Written at once, so the next start finds the profile this run saves under.
        persistProfiles();
    } else {
        profiles.setInitial(std::move(storedProfiles));
        activeProfileID.setInitial(
            settings.string(activeProfileIDKey).value_or(profiles->front().id));
        reactedProfileID_ = activeProfileID.get();
        const bool known =
            std::any_of(profiles->begin(), profiles->end(), [this](const BrowserProfile& profile) {
                return profile.id == activeProfileID.get();
            });
        if (!known) {
            activeProfileID.set(profiles->front().id);
        }
    }

    adBlockLoader_ = AdBlockListLoader::start(
        services_.engine, services_.mainQueue, services_.filterLists,
        [weakState = weak_from_this()](std::shared_ptr<ContentRuleList> list,
                                       const AdBlockStatus& status) {
            if (auto state = weakState.lock()) {
                state->adBlockListChanged(std::move(list), status);
            }
        });

    switchProfile(activeProfileID.get());
    isBootstrapping_ = false;
}

void BrowserState::onActiveProfileIDChanged() {
    const std::string previous = reactedProfileID_;
    const std::string current = activeProfileID.get();
    if (current == previous) {
        return;
    }
    reactedProfileID_ = current;
    services_.settings.setString(activeProfileIDKey, current);
    if (isBootstrapping_) {
        return;
    }
    // Everything of the leaving profile is saved before anything of the new one is read.
    saveBookmarks(previous, bookmarks.get());
    saveHistory(previous, historyEntries.get());
    saveSitePermissions(previous, sitePermissionRules.get());
    saveWorkspaceSnapshots(previous, workspaceSnapshots.get());
    persistClosedTabs(previous);
    persistSession(previous);
    switchProfile(current);
}

void BrowserState::switchProfile(const std::string& id) {
    auto group = operation();
    SettingsStore& settings = services_.settings;
    isSwitchingProfileState_ = true;

    bookmarks.set(loadBookmarks(id));
    auto history = settings.data(profileKey(historyKeyBase, id));
    historyEntries.set(history ? decodeHistory(*history).value_or(std::vector<HistoryEntry>{})
                               : std::vector<HistoryEntry>{});
    auto rules = settings.data(profileKey(sitePermissionsKeyBase, id));
    sitePermissionRules.set(rules ? decodeSitePermissions(*rules).value_or(SitePermissionRules{})
                                  : SitePermissionRules{});
    auto snapshots = settings.data(profileKey(workspaceSnapshotsKeyBase, id));
    workspaceSnapshots.set(
        snapshots ? decodeWorkspaceSnapshots(*snapshots).value_or(std::vector<WorkspaceSnapshot>{})
                  : std::vector<WorkspaceSnapshot>{});
    closedTabs_.clear();
    if (auto closed = settings.data(profileKey(closedTabsKeyBase, activeProfileID.get()))) {
        closedTabs_ = decodeClosedTabs(*closed).value_or(std::vector<TabStore>{});
    }

    // A missing, unreadable or empty session opens one start-page tab.
    std::optional<SessionStore> session;
    if (auto blob = settings.data(profileKey(sessionKeyBase, activeProfileID.get()))) {
        session = decodeSession(*blob);
    }
    if (session && !session->tabs.empty()) {
        replaceTabs(session->tabs, session->selectedIndex, ReloadSelected::Yes);
    } else {
        replaceTabs({TabStore{}}, 0, ReloadSelected::No);
    }

    addressText.set(addressTextFor(*selectedTab()));
    isSwitchingProfileState_ = false;
}

void BrowserState::replaceTabs(const std::vector<TabStore>& records, int selected,
                               ReloadSelected reload) {
    // The old tabs' subscriptions end before the new set is bound; the old tabs are dropped, not
    // closed, so they do not enter the closed-tab list.
    tabSubscriptions_.disconnectAll();
    TabList fresh;
    fresh.reserve(records.size());
    for (const TabStore& record : records) {
        fresh.push_back(makeTab(record));
    }
    tabs.replace(std::move(fresh));
    selectedIndex.set(clampedIndex(selected, tabs->size()));
    if (reload == ReloadSelected::Yes) {
        // Each tab has its rules already; the selected one is loaded again under them.
        applyAdBlockToAllTabs();
    }
}

std::shared_ptr<BrowserTab> BrowserState::makeTab(const std::optional<TabStore>& record,
                                                  NewWebViewRequest* adopting) {
    auto tab = BrowserTab::create(services_, notices_, adopting);
    std::optional<Url> url;
    if (record) {
        tab->setPinned(record->isPinned);
        url = record->url ? Url::parse(*record->url) : std::nullopt;
    }
    if (url) {
        tab->load(*url, record->sessionState);
    } else if (adopting == nullptr) {
        tab->loadStartPage(theme.get());
    }
    applyAdBlock(*tab);
    applyPasskeyPolicy(*tab);
    bind(*tab);
    return tab;
}

void BrowserState::bind(BrowserTab& tab) {
    // The host shares the state's own lifetime: a tab that outlives the state asks nothing.
    tab.bindHost(std::shared_ptr<TabHost>(shared_from_this(), static_cast<TabHost*>(this)));

    // A tab that has left the strip (closed, or held by someone after a restore) says nothing
    // more to views.
    std::weak_ptr<BrowserState> weakState = weak_from_this();
    std::weak_ptr<BrowserTab> weakTab = tab.weak_from_this();
    tabSubscriptions_.add(tab.changed.connect([weakState, weakTab](TabFields fields) {
        auto state = weakState.lock();
        auto page = weakTab.lock();
        if (state && page && state->indexOfTab(page->id()) >= 0) {
            state->tabChanged.emit(*page, fields);
        }
    }));
}

void BrowserState::tabDidFinishPage(BrowserTab& tab) {
    auto group = operation();
    followTabAddress(tab);
    if (const std::optional<Url> url = tab.webViewUrl(); url && url->scheme().starts_with("http")) {
        recordHistory(*url, tab.title.get());
    }
    persistSession();
}

void BrowserState::tabDidFailLoad(BrowserTab& tab) {
    auto group = operation();
    const std::optional<LoadFailure>& failure = tab.loadFailure.get();
    std::optional<Url> fallback = std::exchange(tab.httpFallback_, std::nullopt);
    const std::optional<Url> failed = failure ? Url::fromEngine(failure->url) : std::nullopt;
    // A typed address without a scheme that no secure connection reached goes over plain http
    // once, and its host goes straight there for the rest of the run. A certificate refused is
    // not such a failure: it has its own page.
    if (fallback && failed && failed->scheme() == "https" && failed->host() == fallback->host() &&
        failed->port() == fallback->port() && fallsBackToPlainHttp(failure->kind)) {
        plainHttpHosts_.insert(hostAndPort(*fallback));
        tab.load(*fallback);
        return;
    }
    followTabAddress(tab);
    persistSession();
}

void BrowserState::tabDidNavigateInPage(BrowserTab& tab) {
    auto group = operation();
    followTabAddress(tab);
    persistSession();
}

void BrowserState::tabLoadBecameDownload(BrowserTab& tab) {
    auto group = operation();
    followTabAddress(tab);
}

void BrowserState::tabDidReportDownload(const DownloadEvent& event) {
    // Applied once more later, after the engine's callback has long returned.
    services_.mainQueue.post([weakState = weak_from_this(), event] {
        if (auto state = weakState.lock()) {
            state->recordDownload(event);
        }
    });
}

bool BrowserState::tabRequestsInternalPage(std::string_view address) {
    return openInternalPageIfNeeded(address);
}

void BrowserState::tabWillNavigate(BrowserTab& tab, const Url& url) {
    configureUserScripts(tab, url);
}

void BrowserState::tabWillLoadPage(BrowserTab& tab, const Url& url) {
    applyAdBlock(tab, url);
}

PermissionDecision BrowserState::tabRequestsMediaCapture(std::string_view host,
                                                         MediaCaptureType type) {
    return mediaCaptureDecision(sitePermissionRules.get(), host, type);
}

PermissionDecision BrowserState::tabRequestsSitePermission(std::string_view host,
                                                           SitePermissionKind kind) {
    return sitePermissionDecision(sitePermissionRules.get(), host, kind);
}

bool BrowserState::tabRequestsNewWebView(BrowserTab& opener, NewWebViewRequest& request) {
    if (indexOfTab(opener.id()) < 0) {
        return false;
    }
    auto group = operation();
    addTabFromOpener(opener, makeTab(std::nullopt, &request), true);
    return true;
}

void BrowserState::tabRequestsBackgroundTab(BrowserTab& opener, const Url& url) {
    if (indexOfTab(opener.id()) < 0) {
        return;
    }
    auto group = operation();
    addTabFromOpener(opener, makeTab(TabStore{url.absoluteString(), false}), false);
}

// Only the page on show may take the window; any page leaving full screen gives it back.
void BrowserState::tabDidChangeFullscreen(BrowserTab& tab, bool fullscreen) {
    auto group = operation();
    const auto selected = selectedTab();
    pageFullscreen.set(fullscreen && selected && selected->id() == tab.id());
}

} // namespace ovel
