#pragma once

#include "web/UuidSource.h"

#include <cstdio>

namespace ovel::test {

// Predictable UUIDs: 00000000-0000-4000-8000-000000000001, …02, …
class SequentialUuidSource : public UuidSource {
public:
    Uuid makeUuid() override {
        char text[37];
        std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012llX",
                      static_cast<unsigned long long>(++count));
        return text;
    }

    unsigned long long count = 0;
};

} // namespace ovel::test
