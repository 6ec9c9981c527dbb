#include "gutil/Spring.h"

#include <cmath>
#include <numbers>

namespace ovel {

AdwSpringParams* springParams(Spring spring) {
    const double stiffness = std::pow(2 * std::numbers::pi / spring.response, 2);
    return adw_spring_params_new(spring.dampingFraction, 1.0, stiffness);
}

} // namespace ovel
