#pragma once

#include "web/WebView.h"

#include <gio/gio.h>
#include <webkit/webkit.h>

#include <optional>
#include <string>

namespace ovel {

// What a view's page and its responses tell about themselves, read from WebKit's objects.

// Whether the response asks to be saved rather than shown (Content-Disposition: attachment).
bool isAttachment(WebKitURIResponse* response);

// What is wrong with a certificate, in words for the error page; the worst problem first.
std::string certificateProblem(GTlsCertificateFlags errors);

// The title of a page that is a file shown on its own (an image, a PDF): the name the server
// suggests, else the last part of its address; none for any other page.
std::optional<std::string> fileTitleOf(WebKitWebView* view,
                                       const std::optional<std::string>& committedUri);

// The page's icon as WebKit's favicon database has it, as straight (not premultiplied) RGBA.
std::optional<FaviconImage> faviconOf(WebKitWebView* view);

} // namespace ovel
