#pragma once

#include "state/Clock.h"

namespace ovel {

// The wall clock.
class SystemClock : public Clock {
public:
    Date now() const override;
};

} // namespace ovel
