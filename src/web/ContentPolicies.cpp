#include "web/ContentPolicies.h"

namespace ovel {

const std::string_view adBlockRuleListJSON =
    R"JSON([{"trigger":{"url-filter":"(doubleclick\\.net|googlesyndication\\.com|google-analytics\\.com|adnxs\\.com|facebook\\.com/tr|taboola\\.com|ads\\.)"},"action":{"type":"block"}},)JSON"
    R"JSON({"trigger":{"url-filter":".*","resource-type":["image"],"if-domain":["doubleclick.net","googlesyndication.com","adnxs.com"]},"action":{"type":"block"}}])JSON";

const std::string_view locationBlockingScript =
    "navigator.geolocation.getCurrentPosition = function(){ throw new Error('Location blocked'); "
    "}; navigator.geolocation.watchPosition = function(){ throw new Error('Location blocked'); };";

const std::string_view notificationBlockingScript =
    "if (window.Notification) { Notification.requestPermission = async function(){ return "
    "'denied'; }; }";

const std::string_view hostlessSiteKey = "start.page";

std::optional<std::string> siteRuleKey(const Url& url) {
    const std::optional<std::string> host = url.host();
    return host ? std::optional<std::string>(toLowerAscii(*host)) : std::nullopt;
}

namespace {

PermissionDecision decisionFor(PermissionSetting setting) {
    switch (setting) {
    case PermissionSetting::Ask:
        return PermissionDecision::Prompt;
    case PermissionSetting::Allow:
        return PermissionDecision::Grant;
    case PermissionSetting::Block:
        return PermissionDecision::Deny;
    }
    return PermissionDecision::Prompt;
}

const SitePermissionRule* ruleFor(const SitePermissionRules& rules, std::string_view host) {
    auto it = rules.find(std::string(host));
    return it == rules.end() ? nullptr : &it->second;
}

} // namespace

std::optional<std::string> userScriptSource(const SitePermissionRule& rule) {
    std::string source;
    if (rule.location == PermissionSetting::Block) {
        source.append(locationBlockingScript);
    }
    if (rule.notifications == PermissionSetting::Block) {
        if (!source.empty()) {
            source.push_back('\n');
        }
        source.append(notificationBlockingScript);
    }
    if (source.empty()) {
        return std::nullopt;
    }
    return source;
}

PermissionDecision mediaCaptureDecision(const SitePermissionRules& rules, std::string_view host,
                                        MediaCaptureType type) {
    const SitePermissionRule* rule = ruleFor(rules, host);
    if (rule == nullptr) {
        return PermissionDecision::Prompt;
    }
    switch (type) {
    case MediaCaptureType::Camera:
        return decisionFor(rule->camera);
    case MediaCaptureType::Microphone:
        return decisionFor(rule->microphone);
    case MediaCaptureType::CameraAndMicrophone:
        if (rule->camera == PermissionSetting::Block ||
            rule->microphone == PermissionSetting::Block) {
            return PermissionDecision::Deny;
        }
        if (rule->camera == PermissionSetting::Allow &&
            rule->microphone == PermissionSetting::Allow) {
            return PermissionDecision::Grant;
        }
        return PermissionDecision::Prompt;
    case MediaCaptureType::Other:
        return PermissionDecision::Prompt;
    }
    return PermissionDecision::Prompt;
}

PermissionDecision sitePermissionDecision(const SitePermissionRules& rules, std::string_view host,
                                          SitePermissionKind kind) {
    const SitePermissionRule* rule = ruleFor(rules, host);
    if (rule == nullptr) {
        return PermissionDecision::Prompt;
    }
    switch (kind) {
    case SitePermissionKind::Location:
        return decisionFor(rule->location);
    case SitePermissionKind::Notifications:
        return decisionFor(rule->notifications);
    }
    return PermissionDecision::Prompt;
}

NotificationPermissions notificationPermissions(const SitePermissionRules& rules) {
    NotificationPermissions permissions;
    for (const auto& [host, rule] : rules) {
        if (rule.notifications == PermissionSetting::Allow) {
            permissions.allowedHosts.push_back(host);
        } else if (rule.notifications == PermissionSetting::Block) {
            permissions.deniedHosts.push_back(host);
        }
    }
    return permissions;
}

} // namespace ovel
