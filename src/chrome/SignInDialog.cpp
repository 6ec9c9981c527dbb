#include "chrome/SignInDialog.h"

#include "gutil/AccessibleLabel.h"
#include "web/AnswerOnce.h"

#include <adwaita.h>

namespace ovel {

namespace {

// Destroyed unanswered (the dialog closing without a response), the question is cancelled.
struct PendingSignIn {
    AnswerOnce<std::optional<std::pair<std::string, std::string>>> answer;
    GtkEditable* user = nullptr;
    GtkEditable* password = nullptr;
};

} // namespace

GtkWindow* SignInDialog::present(GtkWindow* parent, std::string_view host, std::string_view realm,
                                 Answer answer) {
    const std::string heading = "Sign in to " + std::string(host.empty() ? "this site" : host);
    GtkWidget* dialog = adw_message_dialog_new(parent, heading.c_str(), nullptr);
    // The realm is the site's own text: shown as it is, never as markup.
    if (!realm.empty()) {
        adw_message_dialog_set_body(ADW_MESSAGE_DIALOG(dialog),
                                    ("The site says: " + std::string(realm)).c_str());
    }
    GtkWidget* fields = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    GtkWidget* user = gtk_entry_new();
    gtk_entry_set_placeholder_text(GTK_ENTRY(user), "User name");
    setAccessibleLabel(user, "User name");
    GtkWidget* password = gtk_password_entry_new();
    gtk_password_entry_set_show_peek_icon(GTK_PASSWORD_ENTRY(password), TRUE);
    setAccessibleLabel(password, "Password");
    gtk_box_append(GTK_BOX(fields), user);
    gtk_box_append(GTK_BOX(fields), password);
    adw_message_dialog_set_extra_child(ADW_MESSAGE_DIALOG(dialog), fields);
    adw_message_dialog_add_responses(ADW_MESSAGE_DIALOG(dialog), "cancel", "Cancel", "sign-in",
                                     "Sign In", nullptr);
    adw_message_dialog_set_response_appearance(ADW_MESSAGE_DIALOG(dialog), "sign-in",
                                               ADW_RESPONSE_SUGGESTED);
    adw_message_dialog_set_default_response(ADW_MESSAGE_DIALOG(dialog), "sign-in");
    adw_message_dialog_set_close_response(ADW_MESSAGE_DIALOG(dialog), "cancel");
    gtk_window_set_modal(GTK_WINDOW(dialog), TRUE);

    auto* pending = new PendingSignIn{
        {std::move(answer), std::nullopt}, GTK_EDITABLE(user), GTK_EDITABLE(password)};
    g_signal_connect(
        dialog, "response",
        G_CALLBACK(+[](AdwMessageDialog*, const char* response, PendingSignIn* waiting) {
            if (g_strcmp0(response, "sign-in") == 0) {
                waiting->answer(
                    std::make_pair(std::string(gtk_editable_get_text(waiting->user)),
                                   std::string(gtk_editable_get_text(waiting->password))));
            } else {
                waiting->answer(std::nullopt);
            }
        }),
        pending);
    // Return in the password field signs in, as in any sign-in form.
    g_signal_connect_swapped(password, "activate", G_CALLBACK(+[](AdwMessageDialog* self) {
                                 adw_message_dialog_response(self, "sign-in");
                             }),
                             dialog);
    g_object_set_data_full(
        G_OBJECT(dialog), "ovel-pending-sign-in", pending,
        +[](gpointer data) { delete static_cast<PendingSignIn*>(data); });
    gtk_window_present(GTK_WINDOW(dialog));
    return GTK_WINDOW(dialog);
}

} // namespace ovel
