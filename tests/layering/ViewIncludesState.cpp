// What a view may include: the state and the GObject helpers. This one must compile, so the
// failures of its two neighbours come from their includes and nothing else.
#include "gutil/GObjectRef.h"
#include "state/BrowserState.h"
