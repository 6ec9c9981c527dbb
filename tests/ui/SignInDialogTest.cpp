#include "chrome/SignInDialog.h"
#include "support/ViewFixture.h"

#include <adwaita.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovel::test {
namespace {

using SignInDialogTest = ViewFixture;
using Given = std::optional<std::pair<std::string, std::string>>;

TEST_F(SignInDialogTest, AnswersOnceWithTheFieldsOrWithNothing) {
    struct Case {
        const char* response;
        Given expected;
    };
    const std::vector<Case> cases = {
        {"sign-in", std::make_pair(std::string("ann"), std::string("sesame"))},
        {"cancel", std::nullopt},
        {nullptr, std::nullopt}, // closed without an answer
    };
    GtkWindow* parent = show(gtk_label_new("page"), 600, 400);
    for (const Case& c : cases) {
        std::vector<Given> answers;
        GtkWindow* dialog = SignInDialog::present(parent, "vault.test", "The Vault",
                                                  [&](Given given) { answers.push_back(given); });
        ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(dialog)); }, 5s));
        GtkWidget* root = GTK_WIDGET(dialog);
        EXPECT_NE(findByName(root, "Sign in to vault.test"), nullptr);
        EXPECT_NE(findByName(root, "The site says: The Vault"), nullptr);
        gtk_editable_set_text(GTK_EDITABLE(findByName(root, "User name")), "ann");
        gtk_editable_set_text(GTK_EDITABLE(findByName(root, "Password")), "sesame");
        if (c.response != nullptr) {
            adw_message_dialog_response(ADW_MESSAGE_DIALOG(dialog), c.response);
        }
        gtk_window_destroy(dialog);
        runMainLoopFor(50ms);
        ASSERT_EQ(answers.size(), 1u) << (c.response ? c.response : "closed");
        EXPECT_EQ(answers[0], c.expected);
    }
}

} // namespace
} // namespace ovel::test
