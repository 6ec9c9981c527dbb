#pragma once

#include "records/Records.h"
#include "web/Url.h"
#include "web/WebEngine.h"
#include "web/WebView.h"

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// The content-blocking rule list: one rule blocking requests to advertising and analytics
// hosts, one blocking images on pages of advertising networks.
extern const std::string_view adBlockRuleListJSON;

extern const std::string_view locationBlockingScript;
extern const std::string_view notificationBlockingScript;

// The rule key shared by pages without a host (start page, internal pages).
extern const std::string_view hostlessSiteKey;

// The key of a page's site rule: its host, lower-cased, an IPv6 literal in brackets as the
// address writes it (`[::1]`); none when the address has no host. The browser state and the
// engine's permission requests both look rules up by it.
std::optional<std::string> siteRuleKey(const Url& url);

// The script a host's rule injects at document start, or none when it blocks nothing.
std::optional<std::string> userScriptSource(const SitePermissionRule& rule);

// The answer to a camera or microphone request of `host` (lower-cased).
PermissionDecision mediaCaptureDecision(const SitePermissionRules& rules, std::string_view host,
                                        MediaCaptureType type);

// What pages read as their notification permission: hosts whose rule allows notifications and
// hosts whose rule blocks them, each in key order.
NotificationPermissions notificationPermissions(const SitePermissionRules& rules);

// The answer to a location or notification request of `host` (lower-cased).
PermissionDecision sitePermissionDecision(const SitePermissionRules& rules, std::string_view host,
                                          SitePermissionKind kind);

} // namespace ovel
