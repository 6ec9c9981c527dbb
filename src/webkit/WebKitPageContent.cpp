#include "webkit/WebKitPageContent.h"

#include "web/Url.h"

#include <libsoup/soup.h>

#include <cstring>

namespace ovel {

namespace {

std::optional<std::string> nonEmpty(const char* text) {
    if (text == nullptr || *text == '\0') {
        return std::nullopt;
    }
    return std::string(text);
}

} // namespace

bool isAttachment(WebKitURIResponse* response) {
    auto* headers = response != nullptr ? webkit_uri_response_get_http_headers(response) : nullptr;
    char* disposition = nullptr;
    if (headers == nullptr ||
        !soup_message_headers_get_content_disposition(headers, &disposition, nullptr)) {
        return false;
    }
    const bool attachment = g_ascii_strcasecmp(disposition, "attachment") == 0;
    g_free(disposition);
    return attachment;
}

// What is wrong with a certificate, in words for the error page; the worst problem first.
std::string certificateProblem(GTlsCertificateFlags errors) {
    if ((errors & G_TLS_CERTIFICATE_REVOKED) != 0) {
        return "The certificate has been revoked.";
    }
    if ((errors & G_TLS_CERTIFICATE_UNKNOWN_CA) != 0) {
        return "The certificate was not issued by an authority this computer trusts.";
    }
    if ((errors & G_TLS_CERTIFICATE_BAD_IDENTITY) != 0) {
        return "The certificate was issued for a different site.";
    }
    if ((errors & G_TLS_CERTIFICATE_EXPIRED) != 0) {
        return "The certificate has expired.";
    }
    if ((errors & G_TLS_CERTIFICATE_NOT_ACTIVATED) != 0) {
        return "The certificate is not valid yet.";
    }
    if ((errors & G_TLS_CERTIFICATE_INSECURE) != 0) {
        return "The certificate uses an insecure algorithm.";
    }
    return "The certificate could not be checked.";
}

std::optional<std::string> fileTitleOf(WebKitWebView* view,
                                       const std::optional<std::string>& committedUri) {
    WebKitWebResource* page = webkit_web_view_get_main_resource(view);
    WebKitURIResponse* response =
        page != nullptr ? webkit_web_resource_get_response(page) : nullptr;
    const char* type = response != nullptr ? webkit_uri_response_get_mime_type(response) : nullptr;
    if (type == nullptr ||
        !(g_str_has_prefix(type, "image/") || g_strcmp0(type, "application/pdf") == 0)) {
        return std::nullopt;
    }
    if (auto suggested = nonEmpty(webkit_uri_response_get_suggested_filename(response))) {
        return suggested;
    }
    const std::optional<Url> url = committedUri ? Url::fromEngine(*committedUri) : std::nullopt;
    if (!url) {
        return std::nullopt;
    }
    GUri* parsed = g_uri_parse(url->absoluteString().c_str(), G_URI_FLAGS_NONE, nullptr);
    if (parsed == nullptr) {
        return std::nullopt;
    }
    char* name = g_path_get_basename(g_uri_get_path(parsed));
    char* decoded = g_uri_unescape_string(name, nullptr);
    std::optional<std::string> fileName =
        decoded != nullptr && g_utf8_validate(decoded, -1, nullptr) ? nonEmpty(decoded)
                                                                    : nonEmpty(name);
    if (fileName == "/" || fileName == ".") {
        fileName.reset();
    }
    g_free(decoded);
    g_free(name);
    g_uri_unref(parsed);
    return fileName;
}

std::optional<FaviconImage> faviconOf(WebKitWebView* view) {
    GdkTexture* texture = webkit_web_view_get_favicon(view);
    if (texture == nullptr) {
        return std::nullopt;
    }
    FaviconImage image{gdk_texture_get_width(texture), gdk_texture_get_height(texture), {}};
    const auto stride = static_cast<std::size_t>(image.width) * 4;
    std::vector<guchar> premultiplied(stride * static_cast<std::size_t>(image.height));
    gdk_texture_download(texture, premultiplied.data(), stride);
    // Cairo's ARGB32: one native-endian word per pixel, colours premultiplied by alpha.
    image.rgba.reserve(premultiplied.size());
    for (std::size_t at = 0; at < premultiplied.size(); at += 4) {
        guint32 pixel = 0;
        std::memcpy(&pixel, &premultiplied[at], sizeof pixel);
        const guint32 alpha = pixel >> 24;
        auto straight = [alpha](guint32 channel) {
            return static_cast<std::uint8_t>(alpha == 0 ? 0 : (channel * 255 + alpha / 2) / alpha);
        };
        image.rgba.push_back(straight((pixel >> 16) & 0xFF));
        image.rgba.push_back(straight((pixel >> 8) & 0xFF));
        image.rgba.push_back(straight(pixel & 0xFF));
        image.rgba.push_back(static_cast<std::uint8_t>(alpha));
    }
    return image;
}

} // namespace ovel
