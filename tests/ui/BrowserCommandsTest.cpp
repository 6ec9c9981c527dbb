#include "chrome/BrowserCommands.h"
#include "chrome/SignInDialog.h"
#include "support/BrowserFixture.h"
#include "support/TestEnvironment.h"
#include "support/ViewFixture.h"

#include <adwaita.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovel::test {
namespace {

// One registered application for the whole suite: GTK registers an application once per
// process.
GtkApplication* application() {
    static GtkApplication* shared = [] {
        GtkApplication* app = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
        g_application_register(G_APPLICATION(app), nullptr, nullptr);
        return app;
    }();
    return shared;
}

class BrowserCommandsTest : public test::BrowserFixture {
protected:
    void SetUp() override {
        launchFresh();
        application_ = application();
        ASSERT_TRUE(g_application_get_is_registered(G_APPLICATION(application_)));
        commands_ = std::make_unique<BrowserCommands>(application_, *state);
    }
    void TearDown() override {
        commands_.reset();
        state.reset();
    }

    void activate(const char* action) {
        g_action_group_activate_action(G_ACTION_GROUP(application_), action, nullptr);
    }

    GtkApplication* application_ = nullptr;
    std::unique_ptr<BrowserCommands> commands_;
};

TEST_F(BrowserCommandsTest, CommandsActOnTheStateAndTheSelectedTab) {
    activate("find-in-page");
    EXPECT_TRUE(state->showFindBar.get());
    activate("find-in-page");
    EXPECT_FALSE(state->showFindBar.get()) << "a second Ctrl+F hides the find bar again";

    activate("show-tab-overview");
    activate("show-tab-overview");
    EXPECT_TRUE(state->showTabOverview.get()) << "showing the overview twice leaves it shown";
    activate("command-palette");
    EXPECT_TRUE(state->showCommandPalette.get());

    state->newTab();
    state->newTab();
    activate("close-other-tabs");
    EXPECT_EQ(state->tabs->size(), 1u);

    activate("back");
    activate("forward");
    activate("forward");
    activate("reload");
    EXPECT_EQ(viewAt(0).goBackCount, 1);
    EXPECT_EQ(viewAt(0).goForwardCount, 2);
    EXPECT_EQ(viewAt(0).reloadCount, 1);

    activate("print");
    EXPECT_EQ(viewAt(0).printCount, 1);
    state->openURL("ovel://settings");
    EXPECT_FALSE(g_action_group_get_action_enabled(G_ACTION_GROUP(application_), "print"))
        << "an internal page has nothing to print";
    state->openHome();
    EXPECT_TRUE(g_action_group_get_action_enabled(G_ACTION_GROUP(application_), "print"));
}

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
