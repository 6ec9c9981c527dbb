#pragma once

#include "state/UuidSource.h"

namespace ovel {

// Random (version 4) UUIDs from GLib.
class GlibUuidSource : public UuidSource {
public:
    Uuid makeUuid() override;
};

} // namespace ovel
