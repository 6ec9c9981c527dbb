// The core may use GLib's plain utilities but not GIO: this file is expected not to compile.
#include <gio/gio.h>
