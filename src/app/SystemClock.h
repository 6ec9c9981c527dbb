#pragma once

#include "web/Clock.h"

namespace ovel {

// The wall clock.
class SystemClock : public Clock {
public:
    Date now() const override;
};

} // namespace ovel
