#pragma once

#include "web/Clock.h"

namespace ovel::test {

// A clock that stands still until the test moves it.
class FakeClock : public Clock {
public:
    Date now() const override { return current; }
    void advance(double seconds) { current.secondsSince2001 += seconds; }

    Date current{800'000'000.0};
};

} // namespace ovel::test
