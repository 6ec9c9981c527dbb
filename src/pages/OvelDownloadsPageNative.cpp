#include "pages/OvelDownloadsPageNative.h"

#include "gutil/AccessibleLabel.h"
#include "pages/OvelInfoRow.h"
#include "pages/OvelInternalPageShell.h"
#include "presentation/DownloadActions.h"
#include "state/BrowserState.h"
#include "widgets/IconButton.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr guint slideMilliseconds = 250;

struct ActionLook {
    DownloadAction action;
    const char* symbol;
    const char* help;
};

// Every button a card can show, in the order they stand; the status picks which are visible.
constexpr ActionLook actionLooks[] = {
    {DownloadAction::Pause, "pause.fill", "Pause"},
    {DownloadAction::Resume, "play.fill", "Resume"},
    {DownloadAction::Cancel, "xmark", "Cancel"},
    {DownloadAction::Reveal, "folder", "Open In Finder"},
    {DownloadAction::Retry, "arrow.clockwise", "Retry"},
};

} // namespace

struct OvelDownloadsPageNative::Card {
    DownloadRecord record;
    GtkWidget* revealer = nullptr;
    GtkWidget* name = nullptr;
    GtkWidget* status = nullptr;
    GtkWidget* progress = nullptr;
    std::vector<std::pair<DownloadAction, std::unique_ptr<IconButton>>> buttons;
    bool leaving = false;
};

OvelDownloadsPageNative::OvelDownloadsPageNative(BrowserState& state)
    : state_(state), list_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      empty_(std::make_unique<OvelInfoRow>("No downloads yet.")) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_add_css_class(content, "ovel-downloads-page");
    gtk_box_append(GTK_BOX(content), empty_->widget());
    gtk_box_append(GTK_BOX(content), list_);
    shell_ = std::make_unique<OvelInternalPageShell>(
        state, "ovel://downloads", "Manage active and completed downloads", content);
    showDownloads(*state_.downloads);
    connections_.add(state_.downloads.changed().connect(
        [this](const std::vector<DownloadRecord>& downloads) { showDownloads(downloads); }));
}

OvelDownloadsPageNative::~OvelDownloadsPageNative() {
    for (auto& [id, card] : cards_) {
        g_signal_handlers_disconnect_by_data(card->revealer, this);
    }
}

GtkWidget* OvelDownloadsPageNative::widget() const {
    return shell_->widget();
}

GtkWidget* OvelDownloadsPageNative::cardFor(const Uuid& id) const {
    auto it = cards_.find(id);
    return it == cards_.end() || it->second->leaving ? nullptr : it->second->revealer;
}

void OvelDownloadsPageNative::showDownloads(const std::vector<DownloadRecord>& downloads) {
    gtk_widget_set_visible(empty_->widget(), downloads.empty());
    std::vector<Uuid> gone;
    for (const auto& [id, card] : cards_) {
        const bool stays =
            std::any_of(downloads.begin(), downloads.end(),
                        [&](const DownloadRecord& record) { return record.id == id; });
        if (!stays && !card->leaving) {
            gone.push_back(id);
        }
    }
    for (const Uuid& id : gone) {
        leave(id);
    }
    GtkWidget* previous = nullptr;
    for (const DownloadRecord& record : downloads) {
        auto it = cards_.find(record.id);
        if (it == cards_.end() || it->second->leaving) {
            if (it != cards_.end()) {
                // Back before it finished leaving: let the old one go at once.
                gtk_box_remove(GTK_BOX(list_), it->second->revealer);
                cards_.erase(it);
            }
            auto card = makeCard(record);
            gtk_box_insert_child_after(GTK_BOX(list_), card->revealer, previous);
            gtk_revealer_set_reveal_child(GTK_REVEALER(card->revealer), true);
            it = cards_.emplace(record.id, std::move(card)).first;
        } else if (gtk_widget_get_prev_sibling(it->second->revealer) != previous) {
            gtk_box_reorder_child_after(GTK_BOX(list_), it->second->revealer, previous);
        }
        update(*it->second, record);
        previous = it->second->revealer;
    }
}

std::unique_ptr<OvelDownloadsPageNative::Card>
OvelDownloadsPageNative::makeCard(const DownloadRecord& record) {
    auto card = std::make_unique<Card>();
    card->record = record;
    card->revealer = gtk_revealer_new();
    gtk_revealer_set_transition_type(GTK_REVEALER(card->revealer),
                                     GTK_REVEALER_TRANSITION_TYPE_SLIDE_UP);
    gtk_revealer_set_transition_duration(GTK_REVEALER(card->revealer), slideMilliseconds);

    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_widget_add_css_class(box, "ovel-download-card");
    GtkWidget* top = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    card->name = gtk_label_new(nullptr);
    gtk_label_set_single_line_mode(GTK_LABEL(card->name), true);
    gtk_label_set_ellipsize(GTK_LABEL(card->name), PANGO_ELLIPSIZE_MIDDLE);
    gtk_widget_set_hexpand(card->name, true);
    gtk_widget_set_halign(card->name, GTK_ALIGN_START);
    card->status = gtk_label_new(nullptr);
    gtk_widget_add_css_class(card->status, "caption");
    gtk_widget_add_css_class(card->status, "dim-label");
    gtk_box_append(GTK_BOX(top), card->name);
    gtk_box_append(GTK_BOX(top), card->status);
    gtk_box_append(GTK_BOX(box), top);
    card->progress = gtk_progress_bar_new();
    gtk_box_append(GTK_BOX(box), card->progress);

    GtkWidget* actions = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    const Uuid id = record.id;
    for (const ActionLook& look : actionLooks) {
        auto run = [this, id, action = look.action] {
            auto it = cards_.find(id);
            if (it == cards_.end()) {
                return;
            }
            const DownloadRecord record = it->second->record;
            switch (action) {
            case DownloadAction::Pause:
                state_.pauseDownload(record);
                break;
            case DownloadAction::Resume:
                state_.resumeDownload(record);
                break;
            case DownloadAction::Cancel:
                state_.cancelDownload(record);
                break;
            case DownloadAction::Reveal:
                state_.openDownload(record);
                break;
            case DownloadAction::Retry:
                state_.retryDownload(record);
                break;
            }
        };
        auto button = std::make_unique<IconButton>(look.symbol, IconButton::square(look.help), run);
        gtk_box_append(GTK_BOX(actions), button->widget());
        card->buttons.emplace_back(look.action, std::move(button));
    }
    gtk_box_append(GTK_BOX(box), actions);
    gtk_revealer_set_child(GTK_REVEALER(card->revealer), box);
    return card;
}

void OvelDownloadsPageNative::update(Card& card, const DownloadRecord& record) {
    card.record = record;
    // Plain text: a file name is never markup.
    gtk_label_set_text(GTK_LABEL(card.name), record.fileName.c_str());
    setAccessibleLabel(card.revealer, record.fileName);
    gtk_label_set_text(GTK_LABEL(card.status), std::string(record.statusLabel()).c_str());
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(card.progress),
                                  std::clamp(record.progress, 0.0, 1.0));
    const std::vector<DownloadAction> shown = downloadActions(record, DownloadPlace::DownloadsPage);
    for (auto& [action, button] : card.buttons) {
        gtk_widget_set_visible(button->widget(),
                               std::find(shown.begin(), shown.end(), action) != shown.end());
    }
}

void OvelDownloadsPageNative::leave(const Uuid& id) {
    Card& card = *cards_.at(id);
    card.leaving = true;
    if (!gtk_widget_get_mapped(card.revealer)) {
        gtk_box_remove(GTK_BOX(list_), card.revealer);
        cards_.erase(id);
        return;
    }
    g_signal_connect(card.revealer, "notify::child-revealed", G_CALLBACK(&onLeft), this);
    gtk_revealer_set_reveal_child(GTK_REVEALER(card.revealer), false);
}

void OvelDownloadsPageNative::onLeft(GtkRevealer* revealer, GParamSpec*, gpointer self) {
    auto* page = static_cast<OvelDownloadsPageNative*>(self);
    if (gtk_revealer_get_child_revealed(revealer)) {
        return;
    }
    for (auto it = page->cards_.begin(); it != page->cards_.end(); ++it) {
        if (it->second->revealer == GTK_WIDGET(revealer) && it->second->leaving) {
            g_signal_handlers_disconnect_by_data(revealer, page);
            gtk_box_remove(GTK_BOX(page->list_), GTK_WIDGET(revealer));
            page->cards_.erase(it);
            return;
        }
    }
}

} // namespace ovel
