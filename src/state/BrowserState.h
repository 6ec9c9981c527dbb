#pragma once

#include "records/Records.h"
#include "state/AdBlockListLoader.h"
#include "state/TabList.h"
#include "web/BrowserServices.h"
#include "web/BrowserTab.h"
#include "web/Connections.h"
#include "web/Notices.h"
#include "web/Published.h"
#include "web/TabHost.h"
#include "web/WebView.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class ContentRuleList;
class Url;

// Which tab is selected, before and after an operation that changed it.
struct SelectionChange {
    int oldIndex = 0;
    int newIndex = 0;
    Uuid oldTab;
    Uuid newTab;
    bool operator==(const SelectionChange&) const = default;
};

// The one source of truth of the browser: the open tabs and the selection, the active
// profile's collections, the profile list, the user's settings and the flags the views read.
// Everyone reads its fields; only its operations write them. Views are told what changed once
// per operation, after every invariant holds again.
class BrowserState : public std::enable_shared_from_this<BrowserState>, private TabHost {
    // First, so the fields below can announce through it.
    std::shared_ptr<NoticeQueue> notices_ = std::make_shared<NoticeQueue>();

public:
    using TabList = std::vector<std::shared_ptr<BrowserTab>>;
    template <typename T> using Field = Published<T, BrowserState>;

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
    static constexpr std::string_view adBlockListID = AdBlockListLoader::builtInListID;

    static constexpr std::size_t maxClosedTabs = 20;
    static constexpr std::size_t maxHistoryEntries = 500;
    static constexpr std::size_t maxWorkspaceSnapshots = 30;
    static constexpr std::size_t maxDownloads = 25;

    // Reads the settings, loads the active profile and starts compiling the rule list.
    static std::shared_ptr<BrowserState> create(const BrowserServices& services);
    ~BrowserState() override;

    BrowserState(const BrowserState&) = delete;
    BrowserState& operator=(const BrowserState&) = delete;

    TabListField<BrowserState> tabs{*notices_};
    // Views hear selectionChanged, not this field's own signal.
    Field<int> selectedIndex{*notices_, [this] { noteSelection(); }, 0};
    Field<std::string> addressText{*notices_};
    Field<std::vector<Bookmark>> bookmarks{*notices_};
    Field<std::vector<HistoryEntry>> historyEntries{*notices_};
    Field<std::vector<DownloadRecord>> downloads{*notices_};
    Field<SitePermissionRules> sitePermissionRules{*notices_};
    Field<std::vector<BrowserProfile>> profiles{*notices_};
    Field<std::string> activeProfileID{*notices_};
    Field<bool> showSidebar{*notices_, false};
    Field<bool> showTabOverview{*notices_, false};
    Field<bool> showCommandPalette{*notices_, false};
    Field<bool> showFindBar{*notices_, false};
    Field<std::string> findText{*notices_};
    Field<bool> smoothAnimations{*notices_, true};
    Field<BrowserTheme> theme{*notices_, BrowserTheme::Midnight};
    Field<SearchEngine> searchEngine{*notices_, SearchEngine::Google};
    Field<bool> adBlockEnabled{*notices_, false};
    // What the blocker blocks with, whether or not it is on.
    Field<AdBlockStatus> adBlockStatus{*notices_};
    Field<std::vector<WorkspaceSnapshot>> workspaceSnapshots{*notices_};
    Field<std::optional<Uuid>> dropTargetTabID{*notices_};
    Field<bool> dropInsertAfter{*notices_, false};
    // The selected tab's page shows one of its elements in full screen: the window gives the
    // page all of itself.
    Field<bool> pageFullscreen{*notices_, false};

    // The selected tab, or the tab (and the index) before it: once per operation.
    sigc::signal<void(const SelectionChange&)> selectionChanged;
    // A tab in the strip changed some of its fields: once per tab and operation.
    sigc::signal<void(const BrowserTab&, TabFields)> tabChanged;

    // The selected tab; null only if the tab list is empty, which it never is after start-up.
    std::shared_ptr<BrowserTab> selectedTab() const;
    const std::optional<Uuid>& draggedTabID() const { return draggedTabID_; }
    const std::vector<TabStore>& closedTabs() const { return closedTabs_; }
    bool hasAdBlockList() const { return adBlockList_ != nullptr; }
    int indexOfTab(const Uuid& id) const;

    // The per-profile key: base name, one full stop, profile id.
    static std::string profileKey(std::string_view base, std::string_view profileID);

    // Tab operations.
    void selectTab(int index);
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
    // Dragging a tab onto another. `x` is the pointer's distance from the target item's leading
    // edge: past `dropAfterThreshold` the drop lands after the target, else before it.
    static constexpr double dropAfterThreshold = 72;
    void beginTabDrag(const Uuid& id);
    // Shows where the drop would land, unless the drag could not land there (no drag, the tab
    // over itself, a pinned tab over an unpinned one or the reverse).
    void dropEntered(const Uuid& target, double x);
    // Follows the pointer over `target` without the checks of dropEntered.
    void dropUpdated(const Uuid& target, double x);
    // Hides the indicator if it is `target`'s; which side it was on is kept.
    void dropExited(const Uuid& target);
    // Moves the dragged tab next to `target` and ends the drag; true when a drag was on.
    bool performDrop(const Uuid& target);
    // Selects the tab to the right of the selected one, or to its left; both wrap around.
    void selectNextTab();
    void selectPreviousTab();

    // The selected tab's page.
    void goBack();
    void goForward();
    void reload();

    // Profiles.
    void createProfile();
    void renameActiveProfile(std::string_view name);
    void deleteActiveProfile();
    void switchToProfile(const std::string& id);
    std::string activeProfileName() const;

    // Workspace snapshots.
    void createWorkspaceSnapshot(const std::optional<std::string>& named);
    void restoreWorkspaceSnapshot(const WorkspaceSnapshot& snapshot);
    void deleteWorkspaceSnapshot(const std::string& id);

    // Bookmarks and history.
    void addBookmark();
    void openBookmark(const Bookmark& bookmark);
    void clearHistory();

    // Addresses.
    // Opens `address` (an absolute URL) in a new tab at the end of the strip and selects it: a
    // link handed to the browser from outside.
    void openInNewTab(std::string_view address);
    void setAddressText(std::string_view text);
    // Puts the selected tab's own address back into the field, discarding what was typed.
    void resetAddressText();
    // The address field follows `tab` if it is the selected one.
    void followTabAddress(const BrowserTab& tab);
    void openURL(std::string_view text);
    void openHome();

    // Settings and panels.
    void setTheme(BrowserTheme value);
    void setSearchEngine(SearchEngine value);
    void setSmoothAnimations(bool value);
    void setAdBlockEnabled(bool value);
    void setShowSidebar(bool value);
    void toggleSidebar();
    void setShowFindBar(bool value);
    void toggleFindBar();
    // The find bar's "Done": hides the bar and forgets the text.
    void hideFindBar();
    void setFindText(std::string_view text);
    void setShowTabOverview(bool value);
    void setShowCommandPalette(bool value);

    // The selected tab's site and its permission rule.
    std::string currentHost() const;
    SitePermissionRule currentSiteRule() const;
    // Stores `rule` for the current host, replacing any earlier one.
    void setCurrentSiteRule(const SitePermissionRule& rule);
    void clearCurrentSiteRule();

    // Downloads.
    void openDownload(const DownloadRecord& record);
    void retryDownload(const DownloadRecord& record);
    void pauseDownload(const DownloadRecord& record);
    void resumeDownload(const DownloadRecord& record);
    void cancelDownload(const DownloadRecord& record);
    void clearDownloads();

    // Prints the selected tab's page; an internal page has nothing to print.
    void printPage();
    bool canPrintPage() const;

    // Zoom and find.
    void adjustZoom(double change);
    void resetZoom();
    void runFind();

private:
    explicit BrowserState(const BrowserServices& services);

    // Every operation runs inside one: its notices go out when the outermost one ends.
    NoticeQueue::Group operation() { return NoticeQueue::Group(*notices_); }

    void init();
    void connectReactions();
    void switchProfile(const std::string& id);
    void onActiveProfileIDChanged();
    // Brings the address text in line with a selection that moved.
    void followSelection();
    void noteSelection();
    void announceSelection();

    // The one way to make a tab: content first (the stored address, else the start page, else
    // the new page a site asked for, which the engine loads), then policies, then the binding.
    std::shared_ptr<BrowserTab> makeTab(const std::optional<TabStore>& record,
                                        NewWebViewRequest* adopting = nullptr);
    // Puts a tab opened from `opener`'s page next to it: after the tabs already opened from
    // the same page, so links opened one after another keep their order.
    void addTabFromOpener(const BrowserTab& opener, std::shared_ptr<BrowserTab> tab, bool select);
    // The one way to replace every tab at once (profile switch, workspace restore).
    enum class ReloadSelected { No, Yes };
    void replaceTabs(const std::vector<TabStore>& records, int selected, ReloadSelected reload);
    // Makes this state the tab's host and re-announces the tab's changes as its own.
    void bind(BrowserTab& tab);
    void addTabAndSelect(std::shared_ptr<BrowserTab> tab);
    void pushClosedTab(TabStore record);
    // The closed-tab record of the tab at `index`: what it showed, and where it stood.
    TabStore closedRecordOf(int index) const;
    void setSelectionToTab(const Uuid& id);
    void movePinnedTabToSection(int index);
    void moveTab(int from, int to);

    void setDropTarget(std::optional<Uuid> id, bool insertAfter);

    // Saving, each under the given profile's key (the active profile's when none is given), and
    // loading the bookmarks, which are stored without their ids.
    void persistSession(const std::optional<std::string>& profileID = std::nullopt);
    void persistClosedTabs(const std::optional<std::string>& profileID = std::nullopt);
    void persistProfiles();
    void saveBookmarks(const std::string& profileID, const std::vector<Bookmark>& list);
    void saveHistory(const std::string& profileID, const std::vector<HistoryEntry>& list);
    void saveSitePermissions(const std::string& profileID, const SitePermissionRules& rules);
    void saveWorkspaceSnapshots(const std::string& profileID,
                                const std::vector<WorkspaceSnapshot>& list);
    std::vector<Bookmark> loadBookmarks(const std::string& profileID);

    // Content blocking on one tab for its page (or the page it is about to load), or on all
    // with the selected one loaded again under it. A site whose rule allows ads has none.
    void applyAdBlock(BrowserTab& tab, const std::optional<Url>& page);
    void applyAdBlock(BrowserTab& tab);
    void applyAdBlockToAllTabs();
    void attachAdBlockToAllTabs();
    bool adsAllowedOn(const std::optional<Url>& page) const;
    void adBlockListChanged(std::shared_ptr<ContentRuleList> list, const AdBlockStatus& status);
    // The scripts the rule of the tab's site gives its page.
    void applyPasskeyPolicy(BrowserTab& tab);
    // Start pages on show take the new theme.
    void refreshStartPagesForTheme();

    bool openInternalPageIfNeeded(std::string_view text);
    void recordHistory(const Url& url, const std::string& title);
    void recordDownload(const DownloadEvent& event);
    void configureUserScripts(BrowserTab& tab, const std::optional<Url>& url);

    void saveBlob(std::string_view base, const std::string& profileID,
                  std::function<std::string()> encode);

    // TabHost
    void tabDidFinishPage(BrowserTab& tab) override;
    void tabDidFailLoad(BrowserTab& tab) override;
    void tabDidNavigateInPage(BrowserTab& tab) override;
    void tabLoadBecameDownload(BrowserTab& tab) override;
    void tabDidReportDownload(const DownloadEvent& event) override;
    bool tabRequestsInternalPage(std::string_view address) override;
    void tabWillNavigate(BrowserTab& tab, const Url& url) override;
    void tabWillLoadPage(BrowserTab& tab, const Url& url) override;
    PermissionDecision tabRequestsMediaCapture(std::string_view host,
                                               MediaCaptureType type) override;
    PermissionDecision tabRequestsSitePermission(std::string_view host,
                                                 SitePermissionKind kind) override;
    bool tabRequestsNewWebView(BrowserTab& opener, NewWebViewRequest& request) override;
    void tabRequestsBackgroundTab(BrowserTab& opener, const Url& url) override;
    void tabDidChangeFullscreen(BrowserTab& tab, bool fullscreen) override;

    BrowserServices services_;
    std::vector<TabStore> closedTabs_;
    std::optional<Uuid> draggedTabID_;
    std::shared_ptr<ContentRuleList> adBlockList_;
    std::shared_ptr<AdBlockListLoader> adBlockLoader_;
    // Which list each tab's view has (the list's generation, 0 for none), so a navigation that
    // keeps it does not attach it anew: the engine rebuilds a list's style sheet each time.
    std::map<Uuid, unsigned> attachedAdBlock_;
    unsigned adBlockListGeneration_ = 0;
    bool isBootstrapping_ = true;
    bool isSwitchingProfileState_ = false;
    // The id the active-profile reaction last acted on, to know which profile is leaving.
    std::string reactedProfileID_;
    // The selection as views last heard it.
    int announcedIndex_ = 0;
    Uuid announcedTab_;
    // One subscription per bound tab, re-announcing its changes as ours.
    Connections tabSubscriptions_;
    // Hosts (with any port) that a typed address reached only over plain http, for this run.
    std::set<std::string> plainHttpHosts_;
};

} // namespace ovel
