#include "chrome/TabLabelParts.h"

#include "gutil/IconNames.h"
#include "web/BrowserTab.h"

#include <string>

namespace ovel {

TabLabelParts::TabLabelParts(GtkBox* box)
    : pin_(gtk_image_new_from_icon_name(iconNameForGtk("pin.fill"))), favicon_(gtk_image_new()),
      title_(gtk_label_new(nullptr)) {
    gtk_image_set_pixel_size(GTK_IMAGE(pin_), 10);
    gtk_widget_add_css_class(pin_, "tab-pin");
    gtk_image_set_pixel_size(GTK_IMAGE(favicon_), 14);
    gtk_widget_add_css_class(favicon_, "tab-favicon");
    gtk_label_set_single_line_mode(GTK_LABEL(title_), TRUE);
    gtk_label_set_ellipsize(GTK_LABEL(title_), PANGO_ELLIPSIZE_END);
    gtk_label_set_max_width_chars(GTK_LABEL(title_), 24);
    gtk_label_set_xalign(GTK_LABEL(title_), 0);
    gtk_widget_add_css_class(title_, "tab-title");
    gtk_widget_add_css_class(title_, "ovel-design-font");
    gtk_box_append(box, pin_);
    gtk_box_append(box, favicon_);
    gtk_box_append(box, title_);
}

void TabLabelParts::showPinned(bool pinned) {
    gtk_widget_set_visible(pin_, pinned);
}

void TabLabelParts::showFavicon(const BrowserTab& tab) {
    const auto& icon = tab.favicon.get();
    if (!icon || icon->width <= 0 || icon->height <= 0 ||
        icon->rgba.size() < static_cast<std::size_t>(icon->width) * icon->height * 4) {
        gtk_image_clear(GTK_IMAGE(favicon_));
        gtk_widget_set_visible(favicon_, FALSE);
        return;
    }
    GBytes* bytes = g_bytes_new(icon->rgba.data(), icon->rgba.size());
    // The decoder hands straight (not premultiplied) RGBA.
    GdkTexture* texture = gdk_memory_texture_new(icon->width, icon->height, GDK_MEMORY_R8G8B8A8,
                                                 bytes, static_cast<gsize>(icon->width) * 4);
    g_bytes_unref(bytes);
    gtk_image_set_from_paintable(GTK_IMAGE(favicon_), GDK_PAINTABLE(texture));
    g_object_unref(texture);
    gtk_widget_set_visible(favicon_, TRUE);
}

void TabLabelParts::showTitle(const char* title) {
    gtk_label_set_text(GTK_LABEL(title_), title);
}

void TabLabelParts::showAll(const BrowserTab& tab) {
    showPinned(tab.isPinned.get());
    showFavicon(tab);
    showTitle(tab.title->c_str());
}

} // namespace ovel
