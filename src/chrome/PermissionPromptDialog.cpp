#include "chrome/PermissionPromptDialog.h"

#include "web/AnswerOnce.h"

#include <adwaita.h>

#include <string>

namespace ovel {

GtkWindow* PermissionPromptDialog::present(GtkWindow* parent, std::string_view host,
                                           std::string_view request,
                                           std::function<void(bool allow)> answer) {
    const std::string asker = host.empty() ? std::string("This page") : std::string(host);
    const std::string heading = asker + " wants to " + std::string(request);
    GtkWidget* dialog = adw_message_dialog_new(parent, heading.c_str(), nullptr);
    adw_message_dialog_add_responses(ADW_MESSAGE_DIALOG(dialog), "deny", "Deny", "allow", "Allow",
                                     nullptr);
    adw_message_dialog_set_response_appearance(ADW_MESSAGE_DIALOG(dialog), "allow",
                                               ADW_RESPONSE_SUGGESTED);
    adw_message_dialog_set_default_response(ADW_MESSAGE_DIALOG(dialog), "deny");
    // Escape and the window's close button answer "deny".
    adw_message_dialog_set_close_response(ADW_MESSAGE_DIALOG(dialog), "deny");
    gtk_window_set_modal(GTK_WINDOW(dialog), TRUE);

    // Destroyed without a response (its window closing), the dialog denies, once.
    using Reply = AnswerOnce<bool>;
    auto* reply = new Reply(std::move(answer), false);
    g_signal_connect(dialog, "response",
                     G_CALLBACK(+[](AdwMessageDialog*, const char* response, Reply* waiting) {
                         (*waiting)(g_strcmp0(response, "allow") == 0);
                     }),
                     reply);
    g_object_set_data_full(
        G_OBJECT(dialog), "ovel-pending-answer", reply,
        +[](gpointer data) { delete static_cast<Reply*>(data); });
    gtk_window_present(GTK_WINDOW(dialog));
    return GTK_WINDOW(dialog);
}

} // namespace ovel
