#include "chrome/PermissionPromptDialog.h"

#include <adwaita.h>

#include <string>

namespace ovel {

namespace {

struct PendingAnswer {
    std::function<void(bool)> answer;

    void give(bool allow) {
        if (answer) {
            auto once = std::move(answer);
            answer = nullptr;
            once(allow);
        }
    }
};

} // namespace

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

    auto* pending = new PendingAnswer{std::move(answer)};
    g_signal_connect(dialog, "response", G_CALLBACK(+[](AdwMessageDialog*, const char* response,
                                                        PendingAnswer* waiting) {
                         waiting->give(g_strcmp0(response, "allow") == 0);
                     }),
                     pending);
    // A dialog destroyed without a response (its window closing) still denies, once.
    g_object_set_data_full(G_OBJECT(dialog), "ovel-pending-answer", pending, +[](gpointer data) {
        auto* waiting = static_cast<PendingAnswer*>(data);
        waiting->give(false);
        delete waiting;
    });
    gtk_window_present(GTK_WINDOW(dialog));
    return GTK_WINDOW(dialog);
}

} // namespace ovel
