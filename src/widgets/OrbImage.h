#pragma once

#include <cairo.h>

#include <memory>
#include <utility>

namespace ovel {

// A colour as a layer paints it: sRGB components and opacity from 0 to 1.
struct LayerColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    friend bool operator==(const LayerColor&, const LayerColor&) = default;
};

// One orb, a disc of `diameter` blurred by `blurRadius`, rendered once into an image surface
// so that each frame only copies it. The image has a margin for the blur on every side. The
// radius means what it means to GTK's blur node: the Gaussian's deviation is half of it.
class OrbImage {
public:
    static OrbImage render(double diameter, double blurRadius, const LayerColor& color, int scale);
    // The image for these, shared by everyone who asks while anyone still holds it.
    static std::shared_ptr<const OrbImage> shared(double diameter, double blurRadius,
                                                  const LayerColor& color, int scale);

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

    cairo_surface_t* surface() const { return surface_; }
    // The image's width and height in logical pixels, blur margins included.
    double side() const { return side_; }

    // The margin kept around the disc for a blur of `blurRadius`.
    static double margin(double blurRadius);

private:
    OrbImage() = default;

    cairo_surface_t* surface_ = nullptr;
    double side_ = 0;
};

} // namespace ovel
