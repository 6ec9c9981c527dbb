#include "app/SystemClock.h"

#include <glib.h>

namespace ovel {

Date SystemClock::now() const {
    return Date::fromUnixSeconds(static_cast<double>(g_get_real_time()) / G_USEC_PER_SEC);
}

} // namespace ovel
