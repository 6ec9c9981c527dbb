#pragma once

#include <adwaita.h>

namespace ovel {

// A spring as the design gives it: how long one swing takes, in seconds, and how quickly it
// settles (1: no bounce).
struct Spring {
    double response = 0.25;
    double dampingFraction = 0.84;
};

// libadwaita's spring for it: unit mass, stiffness (2π/response)².
AdwSpringParams* springParams(Spring spring);

} // namespace ovel
