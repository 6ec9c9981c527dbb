#include "chrome/FindBar.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"
#include "state/BrowserState.h"

#include <string>

namespace ovel {

FindBar::FindBar(BrowserState& state)
    : state_(state),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8)))),
      field_(GTK_ENTRY(gtk_entry_new())) {
    gtk_widget_add_css_class(root_, "find-bar");

    GtkWidget* icon = gtk_image_new_from_icon_name(iconNameForGtk("magnifyingglass"));
    gtk_widget_add_css_class(icon, "dim-label");
    gtk_box_append(GTK_BOX(root_), icon);

    gtk_entry_set_placeholder_text(field_, "Find in page");
    gtk_widget_set_hexpand(GTK_WIDGET(field_), TRUE);
    gtk_widget_add_css_class(GTK_WIDGET(field_), "find-field");
    setAccessibleLabel(GTK_WIDGET(field_), "Find in page");
    gtk_box_append(GTK_BOX(root_), GTK_WIDGET(field_));

    GtkWidget* find = gtk_button_new_with_label("Find");
    gtk_widget_add_css_class(find, "find-button");
    gtk_box_append(GTK_BOX(root_), find);
    GtkWidget* done = gtk_button_new_with_label("Done");
    gtk_button_set_has_frame(GTK_BUTTON(done), FALSE);
    gtk_box_append(GTK_BOX(root_), done);

    signals_.connect(field_, "changed", G_CALLBACK(+[](GtkEditable* editable, FindBar* bar) {
                         const std::string text = gtk_editable_get_text(editable);
                         if (!bar->showingFindText_ && text != bar->state_.findText.get()) {
                             bar->state_.setFindText(text);
                         }
                     }),
                     this);
    auto runFind = G_CALLBACK(+[](GtkWidget*, FindBar* bar) { bar->state_.runFind(); });
    signals_.connect(field_, "activate", runFind, this);
    signals_.connect(find, "clicked", runFind, this);
    signals_.connect(done, "clicked",
                     G_CALLBACK(+[](GtkButton*, FindBar* bar) { bar->state_.hideFindBar(); }),
                     this);

    connections_.add(state_.findText.changed().connect([this](const auto&) { showFindText(); }));
    showFindText();
}

FindBar::~FindBar() {
    signals_.disconnectAll();
    g_object_unref(root_);
}

void FindBar::showFindText() {
    const std::string& text = state_.findText.get();
    if (text != gtk_editable_get_text(GTK_EDITABLE(field_))) {
        // Setting the text deletes the old one first: those edits are not the user's.
        showingFindText_ = true;
        gtk_editable_set_text(GTK_EDITABLE(field_), text.c_str());
        showingFindText_ = false;
    }
}

} // namespace ovel
