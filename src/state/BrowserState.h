#pragma once

#include "web/Published.h"
#include "records/Records.h"
#include "web/BrowserServices.h"
#include "web/WebView.h"

#include <sigc++/connection.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class BrowserTab;
class ContentRuleList;
class Url;

// The one source of truth of the browser: the open tabs and the selection, the active
// profile's collections, the profile list, the user's settings and the flags the views read.
// Every published field announces each assignment after storing it; views observe those
// signals and act only through the operations below.
class BrowserState : public std::enable_shared_from_this<BrowserState> {
public:
    using TabList = std::vector<std::shared_ptr<BrowserTab>>;

    static constexpr std::string_view profilesKey = "ovel.profiles.v1";
    static constexpr std::string_view activeProfileIDKey = "ovel.activeProfileID.v1";
    static constexpr std::string_view themeKey = "ovel.theme";
    static constexpr std::string_view searchEngineKey = "ovel.searchEngine";
    static constexpr std::string_view smoothAnimationsKey = "ovel.smoothAnimations";
    static constexpr std::string_view adBlockEnabledKey = "ovel.adBlockEnabled";
    static constexpr std::string_view sessionKeyBase = "ovel.session.v3";
    static constexpr std::string_view closedTabsKeyBase = "ovel.closedTabs.v2";
    static constexpr std::string_view bookmarksKeyBase = "ovel.bookmarks.v1";
    static constexpr std::string_view historyKeyBase = "ovel.history.v1";
    static constexpr std::string_view sitePermissionsKeyBase = "ovel.sitePermissions.v1";
    static constexpr std::string_view workspaceSnapshotsKeyBase = "ovel.workspaceSnapshots.v1";
    static constexpr std::string_view adBlockListID = "ovel.adblock.rules";

    static constexpr std::size_t maxClosedTabs = 20;
    static constexpr std::size_t maxHistoryEntries = 500;
    static constexpr std::size_t maxWorkspaceSnapshots = 30;
    static constexpr std::size_t maxDownloads = 25;

    // Reads the settings, loads the active profile and starts compiling the rule list.
    static std::shared_ptr<BrowserState> create(const BrowserServices& services);
    ~BrowserState();

    BrowserState(const BrowserState&) = delete;
    BrowserState& operator=(const BrowserState&) = delete;

    // Fires after any published field below, or any published field of a tab, changes.
    sigc::signal<void()> changed;

    Published<TabList> tabs{changed};
    Published<int> selectedIndex{changed, 0};
    Published<std::string> addressText{changed};
    Published<std::vector<Bookmark>> bookmarks{changed};
    Published<std::vector<HistoryEntry>> historyEntries{changed};
    Published<std::vector<DownloadRecord>> downloads{changed};
    Published<SitePermissionRules> sitePermissionRules{changed};
    Published<std::vector<BrowserProfile>> profiles{changed};
    Published<std::string> activeProfileID{changed};
    Published<bool> showSidebar{changed, false};
    Published<bool> showTabOverview{changed, false};
    Published<bool> showCommandPalette{changed, false};
    Published<bool> showFindBar{changed, false};
    Published<std::string> findText{changed};
    Published<bool> smoothAnimations{changed, true};
    Published<BrowserTheme> theme{changed, BrowserTheme::Midnight};
    Published<SearchEngine> searchEngine{changed, SearchEngine::Google};
    Published<bool> adBlockEnabled{changed, false};
    Published<std::vector<WorkspaceSnapshot>> workspaceSnapshots{changed};
    Published<std::optional<Uuid>> dropTargetTabID{changed};
    Published<bool> dropInsertAfter{changed, false};

    std::optional<Uuid> draggedTabID;

    // The selected tab; null only if the tab list is empty, which it never is after start-up.
    std::shared_ptr<BrowserTab> selectedTab() const;
    const std::vector<TabStore>& closedTabs() const { return closedTabs_; }
    bool isBootstrapping() const { return isBootstrapping_; }
    bool isSwitchingProfileState() const { return isSwitchingProfileState_; }
    bool hasAdBlockList() const { return adBlockList_ != nullptr; }

    // The per-profile key: base name, one full stop, profile id.
    static std::string profileKey(std::string_view base, std::string_view profileID);

    // Persistence.
    void persistSession(const std::optional<std::string>& profileID = std::nullopt);
    std::optional<TabList> restoreSession();
    void persistClosedTabs(const std::optional<std::string>& profileID = std::nullopt);
    void persistProfiles();
    void saveBookmarks(const std::string& profileID, const std::vector<Bookmark>& list);
    void saveHistory(const std::string& profileID, const std::vector<HistoryEntry>& list);
    void saveSitePermissions(const std::string& profileID, const SitePermissionRules& rules);
    void saveWorkspaceSnapshots(const std::string& profileID,
                                const std::vector<WorkspaceSnapshot>& list);
    std::vector<Bookmark> loadBookmarks(const std::string& profileID);

    // Tab operations.
    void newTab();
    void reopenLastClosedTab();
    void closeTab(int index);
    void duplicateSelectedTab();
    void closeOtherTabs(int keeping);
    void closeDuplicateTabs();
    void togglePinTab(int index);
    void moveTabLeft(int index);
    void moveTabRight(int index);
    bool canMoveTabLeft(int index) const;
    bool canMoveTabRight(int index) const;
    int pinnedCount() const;
    void reorderTab(const Uuid& draggedID, const Uuid& targetID, bool insertAfter);

    // Profiles.
    void createProfile();
    void renameActiveProfile(std::string_view name);
    void deleteActiveProfile();
    std::string activeProfileName() const;

    // Workspace snapshots.
    void createWorkspaceSnapshot(const std::optional<std::string>& named);
    void restoreWorkspaceSnapshot(const WorkspaceSnapshot& snapshot);
    void deleteWorkspaceSnapshot(const std::string& id);

    // Bookmarks and history.
    void addBookmark();
    void clearHistory();

    // Addresses.
    void openURL(std::string_view text);
    void openHome();

    // Content policies.
    void applyAdBlock(BrowserTab& tab);
    void applyAdBlockToAllTabs();
    void applyPasskeyPolicy(BrowserTab& tab);
    void applyPasskeyPolicyToAllTabs();
    std::string currentHost() const;
    SitePermissionRule currentSiteRule() const;
    void clearCurrentSiteRule();

    // Start pages.
    void refreshStartPagesForTheme();

    // Downloads.
    void openDownload(const DownloadRecord& record);
    void retryDownload(const DownloadRecord& record);
    void pauseDownload(const DownloadRecord& record);
    void resumeDownload(const DownloadRecord& record);
    void cancelDownload(const DownloadRecord& record);

    // Zoom and find.
    void adjustZoom(double change);
    void resetZoom();
    void runFind();

private:
    explicit BrowserState(const BrowserServices& services);

    void init();
    void connectReactions();
    void switchProfile(const std::string& id);
    void onActiveProfileIDChanged();

    // Unbound tabs for stored records: each loads its address, or the start page.
    TabList tabsFromRecords(const std::vector<TabStore>& records);
    // Every new tab goes through here: content first, then policies, then callbacks.
    std::shared_ptr<BrowserTab> makeTab(const std::optional<TabStore>& record);
    void bind(BrowserTab& tab);
    void cancelTabSubscriptions();
    void addTabAndSelect(std::shared_ptr<BrowserTab> tab);
    TabStore closedTabRecord(const BrowserTab& tab) const;
    void pushClosedTab(TabStore record);
    int indexOfTab(const Uuid& id) const;
    void movePinnedTabToSection(int index);
    void moveTab(int from, int to);
    void setSelectionToTab(const Uuid& id);

    bool openInternalPageIfNeeded(std::string_view text);
    void recordHistory(const Url& url, const std::string& title);
    void recordDownload(const DownloadEvent& event);
    void configureUserScripts(BrowserTab& tab, const std::optional<Url>& url);

    void saveBlob(std::string_view base, const std::string& profileID, const std::string& blob);

    BrowserServices services_;
    std::vector<TabStore> closedTabs_;
    std::shared_ptr<ContentRuleList> adBlockList_;
    bool isBootstrapping_ = true;
    bool isSwitchingProfileState_ = false;
    // The id the active-profile reaction last acted on, to know which profile is leaving.
    std::string reactedProfileID_;
    // One subscription per bound tab, re-announcing its changes as ours.
    std::vector<sigc::connection> cancellables_;
};

} // namespace ovel
