#pragma once

#include "state/Records.h"

namespace ovel {

class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

} // namespace ovel
