// Profiles: creating, renaming and deleting them. Switching is an assignment of
// activeProfileID, whose reaction saves the leaving profile and loads the new one.

#include "state/BrowserState.h"

#include "records/SettingsStore.h"
#include "web/Url.h"
#include "web/UuidSource.h"

#include <algorithm>

namespace ovel {

void BrowserState::createProfile() {
    auto group = operation();
    BrowserProfile profile{services_.uuids.makeUuid(),
                           "Profile " + std::to_string(profiles->size() + 1)};
    const std::string id = profile.id;
    profiles.modify([&](auto& list) { list.push_back(std::move(profile)); });
    persistProfiles();
    activeProfileID.set(id);
}

void BrowserState::renameActiveProfile(std::string_view name) {
    auto group = operation();
    auto it = std::find_if(profiles->begin(), profiles->end(), [this](const BrowserProfile& p) {
        return p.id == activeProfileID.get();
    });
    if (it == profiles->end()) {
        return;
    }
    std::string newName = trimmed(name);
    if (newName.empty()) {
        return;
    }
    const auto index = it - profiles->begin();
    profiles.modify([&](auto& list) { list[static_cast<std::size_t>(index)].name = newName; });
    persistProfiles();
}

void BrowserState::deleteActiveProfile() {
    auto group = operation();
    if (profiles->size() <= 1) {
        return;
    }
    const std::string deleted = activeProfileID.get();
    auto it = std::find_if(profiles->begin(), profiles->end(),
                           [&](const BrowserProfile& p) { return p.id == deleted; });
    if (it == profiles->end()) {
        return;
    }
    const auto index = static_cast<std::size_t>(it - profiles->begin());
    for (std::string_view base :
         {sessionKeyBase, closedTabsKeyBase, bookmarksKeyBase, historyKeyBase,
          sitePermissionsKeyBase, workspaceSnapshotsKeyBase}) {
        services_.settings.remove(profileKey(base, deleted));
    }
    profiles.modify([index](auto& list) { list.erase(list.begin() + static_cast<long>(index)); });
    persistProfiles();

    const std::string next = profiles.get()[index == 0 ? 0 : index - 1].id;
    // Only the active id is written: the deleted profile's state must not be saved back.
    isBootstrapping_ = true;
    activeProfileID.set(next);
    isBootstrapping_ = false;
    switchProfile(next);
}

void BrowserState::switchToProfile(const std::string& id) {
    auto group = operation();
    activeProfileID.set(id);
}

std::string BrowserState::activeProfileName() const {
    for (const BrowserProfile& profile : profiles.get()) {
        if (profile.id == activeProfileID.get()) {
            return profile.name;
        }
    }
    return "Profile";
}

} // namespace ovel
