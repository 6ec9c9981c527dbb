#pragma once

#include "presentation/ThemeColors.h"

#include <cairo.h>

#include <utility>

namespace ovel {

// One orb, a disc of `diameter` blurred by `blurRadius`, rendered once into an image surface
// so that each frame only copies it. The image has a margin for the blur on every side.
class OrbImage {
public:
    OrbImage() = default;
    static OrbImage render(double diameter, double blurRadius, const Rgba& color, int scale);

    OrbImage(OrbImage&& other) noexcept
        : surface_(std::exchange(other.surface_, nullptr)), side_(other.side_) {}
    OrbImage& operator=(OrbImage&& other) noexcept {
        std::swap(surface_, other.surface_);
        std::swap(side_, other.side_);
        return *this;
    }
    OrbImage(const OrbImage&) = delete;
    OrbImage& operator=(const OrbImage&) = delete;
    ~OrbImage();

    explicit operator bool() const { return surface_ != nullptr; }
    cairo_surface_t* surface() const { return surface_; }
    // The image's width and height in logical pixels, blur margins included.
    double side() const { return side_; }

    // The margin kept around the disc for a blur of `blurRadius`.
    static double margin(double blurRadius);

private:
    cairo_surface_t* surface_ = nullptr;
    double side_ = 0;
};

} // namespace ovel
