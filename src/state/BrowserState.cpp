#include "state/BrowserState.h"

#include "web/MainQueue.h"
#include "records/RecordsJson.h"
#include "records/SettingsStore.h"
#include "web/UuidSource.h"
#include "web/BrowserTab.h"
#include "web/ContentPolicies.h"
#include "web/WebEngine.h"

#include <algorithm>

namespace ovel {

namespace {

int clampedIndex(int index, std::size_t count) {
    const int last = std::max(static_cast<int>(count) - 1, 0);
    return std::clamp(index, 0, last);
}

} // namespace

std::shared_ptr<BrowserState> BrowserState::create(const BrowserServices& services) {
    std::shared_ptr<BrowserState> state(new BrowserState(services));
    state->init();
    return state;
}

BrowserState::BrowserState(const BrowserServices& services) : services_(services) {
    connectReactions();
}

BrowserState::~BrowserState() {
    cancelTabSubscriptions();
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

void BrowserState::connectReactions() {
    SettingsStore& settings = services_.settings;
    theme.changed().connect([this, &settings] {
        settings.setString(themeKey, rawValue(theme.get()));
        refreshStartPagesForTheme();
    });
    searchEngine.changed().connect(
        [this, &settings] { settings.setString(searchEngineKey, rawValue(searchEngine.get())); });
    smoothAnimations.changed().connect(
        [this, &settings] { settings.setBoolean(smoothAnimationsKey, smoothAnimations.get()); });
    adBlockEnabled.changed().connect([this, &settings] {
        settings.setBoolean(adBlockEnabledKey, adBlockEnabled.get());
        applyAdBlockToAllTabs();
    });

    // Collections are saved for the active profile, except while start-up or a profile load
    // fills them.
    auto savesCollections = [this] { return !isBootstrapping_ && !isSwitchingProfileState_; };
    bookmarks.changed().connect([this, savesCollections] {
        if (savesCollections()) {
            saveBookmarks(activeProfileID.get(), bookmarks.get());
        }
    });
    historyEntries.changed().connect([this, savesCollections] {
        if (savesCollections()) {
            saveHistory(activeProfileID.get(), historyEntries.get());
        }
    });
    sitePermissionRules.changed().connect([this, savesCollections] {
        if (savesCollections()) {
            saveSitePermissions(activeProfileID.get(), sitePermissionRules.get());
        }
    });
    workspaceSnapshots.changed().connect([this, savesCollections] {
        if (savesCollections()) {
            saveWorkspaceSnapshots(activeProfileID.get(), workspaceSnapshots.get());
        }
    });
    activeProfileID.changed().connect([this] { onActiveProfileIDChanged(); });
}

void BrowserState::init() {
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

    std::weak_ptr<BrowserState> weakState = weak_from_this();
    MainQueue& mainQueue = services_.mainQueue;
    services_.engine.compileContentRuleList(
        adBlockListID, adBlockRuleListJSON,
        [weakState, &mainQueue](std::shared_ptr<ContentRuleList> list) {
            mainQueue.post([weakState, list = std::move(list)] {
                if (auto state = weakState.lock()) {
                    state->adBlockList_ = list;
                    state->applyAdBlockToAllTabs();
                }
            });
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
    SettingsStore& settings = services_.settings;
    isSwitchingProfileState_ = true;

    cancelTabSubscriptions();
    tabs.set({});

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

    std::optional<TabList> restored = restoreSession();
    if (restored && !restored->empty()) {
        tabs.set(std::move(*restored));
        for (const auto& tab : tabs.get()) {
            bind(*tab);
        }
        selectedIndex.set(
            std::min(selectedIndex.get(), std::max(static_cast<int>(tabs->size()) - 1, 0)));
        applyAdBlockToAllTabs();
        applyPasskeyPolicyToAllTabs();
    } else {
        auto tab = BrowserTab::create(services_, false);
        tab->loadStartPage(theme.get());
        tabs.set({tab});
        selectedIndex.set(0);
        bind(*tab);
        applyAdBlock(*tab);
        applyPasskeyPolicy(*tab);
    }

    const auto selected = selectedTab();
    addressText.set(selected->displayAddress.get()
                        ? *selected->displayAddress.get()
                        : selected->webView().url().value_or(std::string()));
    isSwitchingProfileState_ = false;
}

void BrowserState::persistSession(const std::optional<std::string>& profileID) {
    SessionStore session;
    session.selectedIndex = clampedIndex(selectedIndex.get(), tabs->size());
    for (const auto& tab : tabs.get()) {
        session.tabs.push_back(TabStore{tab->webView().url(), tab->isPinned.get()});
    }
    saveBlob(sessionKeyBase, profileID.value_or(activeProfileID.get()), encodeSession(session));
}

std::optional<BrowserState::TabList> BrowserState::restoreSession() {
    auto blob = services_.settings.data(profileKey(sessionKeyBase, activeProfileID.get()));
    if (!blob) {
        return std::nullopt;
    }
    std::optional<SessionStore> session = decodeSession(*blob);
    if (!session) {
        return std::nullopt;
    }
    TabList restored = tabsFromRecords(session->tabs);
    selectedIndex.set(clampedIndex(session->selectedIndex, restored.size()));
    return restored;
}

BrowserState::TabList BrowserState::tabsFromRecords(const std::vector<TabStore>& records) {
    TabList restored;
    for (const TabStore& record : records) {
        auto tab = BrowserTab::create(services_, false);
        tab->isPinned.set(record.isPinned);
        std::optional<Url> url = record.url ? Url::parse(*record.url) : std::nullopt;
        if (url) {
            tab->webView().load(LoadRequest{url->absoluteString()});
        } else {
            tab->loadStartPage(theme.get());
        }
        restored.push_back(std::move(tab));
    }
    return restored;
}

void BrowserState::persistClosedTabs(const std::optional<std::string>& profileID) {
    saveBlob(closedTabsKeyBase, profileID.value_or(activeProfileID.get()),
             encodeClosedTabs(closedTabs_));
}

void BrowserState::persistProfiles() {
    services_.settings.setData(profilesKey, encodeProfiles(profiles.get()));
}

void BrowserState::saveBookmarks(const std::string& profileID, const std::vector<Bookmark>& list) {
    std::vector<BookmarkStore> stored;
    stored.reserve(list.size());
    for (const Bookmark& bookmark : list) {
        stored.push_back({bookmark.title, bookmark.url});
    }
    saveBlob(bookmarksKeyBase, profileID, encodeBookmarks(stored));
}

void BrowserState::saveHistory(const std::string& profileID,
                               const std::vector<HistoryEntry>& list) {
    saveBlob(historyKeyBase, profileID, encodeHistory(list));
}

void BrowserState::saveSitePermissions(const std::string& profileID,
                                       const SitePermissionRules& rules) {
    saveBlob(sitePermissionsKeyBase, profileID, encodeSitePermissions(rules));
}

void BrowserState::saveWorkspaceSnapshots(const std::string& profileID,
                                          const std::vector<WorkspaceSnapshot>& list) {
    saveBlob(workspaceSnapshotsKeyBase, profileID, encodeWorkspaceSnapshots(list));
}

void BrowserState::saveBlob(std::string_view base, const std::string& profileID,
                            const std::string& blob) {
    services_.settings.setData(profileKey(base, profileID), blob);
}

std::vector<Bookmark> BrowserState::loadBookmarks(const std::string& profileID) {
    std::vector<Bookmark> loaded;
    auto blob = services_.settings.data(profileKey(bookmarksKeyBase, profileID));
    if (!blob) {
        return loaded;
    }
    for (const BookmarkStore& stored :
         decodeBookmarks(*blob).value_or(std::vector<BookmarkStore>{})) {
        // Ids are not stored: every load gives fresh ones.
        if (auto url = Url::parse(stored.url)) {
            loaded.push_back({services_.uuids.makeUuid(), stored.title, url->absoluteString()});
        }
    }
    return loaded;
}

void BrowserState::bind(BrowserTab& tab) {
    std::weak_ptr<BrowserState> weakState = weak_from_this();
    std::weak_ptr<BrowserTab> weakTab = tab.weak_from_this();

    tab.onPageUpdate = [weakState, weakTab](WebView& webView) {
        auto state = weakState.lock();
        auto page = weakTab.lock();
        if (!state || !page) {
            return;
        }
        const auto selected = state->selectedTab();
        const std::optional<std::string> url = webView.url();
        if (selected && selected->id() == page->id()) {
            state->addressText.set(page->displayAddress.get() ? *page->displayAddress.get()
                                                              : url.value_or(std::string()));
        }
        if (std::optional<Url> parsed = url ? Url::fromEngine(*url) : std::nullopt;
            parsed && parsed->scheme().starts_with("http")) {
            state->recordHistory(*parsed, page->title.get());
        }
        state->persistSession();
    };
    tab.onInternalURLRequest = [weakState](const std::string& text) {
        auto state = weakState.lock();
        return state ? state->openInternalPageIfNeeded(text) : false;
    };
    tab.onNavigationRequest = [weakState, weakTab](const Url& url) {
        auto state = weakState.lock();
        auto page = weakTab.lock();
        if (state && page) {
            state->configureUserScripts(*page, url);
        }
    };
    MainQueue& mainQueue = services_.mainQueue;
    tab.onDownloadEvent = [weakState, &mainQueue](const DownloadEvent& event) {
        mainQueue.post([weakState, event] {
            if (auto state = weakState.lock()) {
                state->recordDownload(event);
            }
        });
    };
    tab.onMediaPermissionRequest = [weakState](std::string_view host, MediaCaptureType type) {
        auto state = weakState.lock();
        return state ? mediaCaptureDecision(state->sitePermissionRules.get(), host, type)
                     : PermissionDecision::Prompt;
    };
    tab.onSitePermissionRequest = [weakState](std::string_view host, SitePermissionKind kind) {
        auto state = weakState.lock();
        return state ? sitePermissionDecision(state->sitePermissionRules.get(), host, kind)
                     : PermissionDecision::Prompt;
    };

    // Subscriptions of tabs that are gone have ended by themselves; drop their handles.
    std::erase_if(cancellables_, [](const sigc::connection& c) { return !c.connected(); });
    cancellables_.push_back(tab.changed.connect([weakState] {
        if (auto state = weakState.lock()) {
            state->changed.emit();
        }
    }));
}

void BrowserState::cancelTabSubscriptions() {
    for (sigc::connection& connection : cancellables_) {
        connection.disconnect();
    }
    cancellables_.clear();
}

} // namespace ovel
