// The core may use GLib's plain utilities but not GObject: this file is expected not to compile.
#include <glib-object.h>
