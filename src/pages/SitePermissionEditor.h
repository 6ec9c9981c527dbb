#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "records/Records.h"

#include <gtk/gtk.h>

#include <functional>

namespace ovel {

// Four Ask / Allow / Block choices for one site and whether it may show ads, edited on a working
// copy that only "Apply" hands on; "Reset" asks for the stored rule to go and leaves the choices
// as they are.
class SitePermissionEditor {
public:
    SitePermissionEditor(const SitePermissionRule& rule,
                         std::function<void(const SitePermissionRule&)> onChange,
                         std::function<void()> onReset);

    GtkWidget* widget() const { return root_.get(); }
    const SitePermissionRule& rule() const { return rule_; }

private:
    GtkWidget* row(const char* title, PermissionSetting SitePermissionRule::*field);

    SitePermissionRule rule_;
    std::function<void(const SitePermissionRule&)> onChange_;
    std::function<void()> onReset_;
    GObjectRef<GtkWidget> root_;
    GSignalConnections signals_;
};

} // namespace ovel
