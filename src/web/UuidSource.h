#pragma once

#include "records/Records.h"

namespace ovel {

// Makes random UUIDs in canonical upper-case text form.
class UuidSource {
public:
    virtual ~UuidSource() = default;
    virtual Uuid makeUuid() = 0;
};

} // namespace ovel
