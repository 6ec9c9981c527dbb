#pragma once

#include "records/Records.h"

namespace ovel {

class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

} // namespace ovel
