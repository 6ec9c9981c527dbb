// What the core may include: GLib's plain utilities. This one must compile, so the failures of
// the GIO and GObject probes come from their includes and nothing else.
#include "state/BrowserState.h"

#include <glib.h>
