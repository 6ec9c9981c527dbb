#pragma once

#include "web/UuidSource.h"

namespace ovel {

// Random (version 4) UUIDs from GLib.
class GlibUuidSource : public UuidSource {
public:
    Uuid makeUuid() override;
};

} // namespace ovel
