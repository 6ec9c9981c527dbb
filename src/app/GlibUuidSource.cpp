#include "app/GlibUuidSource.h"

#include <glib.h>

namespace ovel {

Uuid GlibUuidSource::makeUuid() {
    g_autofree char* lower = g_uuid_string_random();
    g_autofree char* upper = g_ascii_strup(lower, -1);
    return Uuid(upper);
}

} // namespace ovel
