#include "widgets/OrbLayer.h"
#include "support/ViewFixture.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace ovel::test {
namespace {

class OrbLayerTest : public ViewFixture {
protected:
    void TearDown() override {
        setAnimations(true);
        ViewFixture::TearDown();
    }
    // Shows `orbs` alone in a window and waits for their first frame.
    void showOrbs(OrbLayer& orbs) {
        show(orbs.widget(), 600, 400);
        ASSERT_TRUE(waitUntil([&] { return orbs.framesDrawn() > 0; }, 5s));
    }
    static void setAnimations(bool enabled) {
        g_object_set(gtk_settings_get_default(), "gtk-enable-animations", enabled, nullptr);
    }
};

TEST_F(OrbLayerTest, MovesOnlyWhileShownAndAnimationsAreAllowed) {
    OrbLayer orbs(windowOrbLayout);
    EXPECT_FALSE(orbs.isTicking()) << "no clock before the layer is shown";
    showOrbs(orbs);
    ASSERT_TRUE(waitUntil([&] { return orbs.spread() > 0.0; }, 5s));

    gtk_widget_set_visible(GTK_WIDGET(window_), FALSE);
    EXPECT_FALSE(orbs.isTicking()) << "the clock stops with the window hidden";
    const double hiddenAt = orbs.spread();
    gtk_widget_set_visible(GTK_WIDGET(window_), TRUE);
    ASSERT_TRUE(waitUntil([&] { return orbs.spread() != hiddenAt; }, 5s))
        << "and goes on when it is shown again";

    setAnimations(false);
    EXPECT_FALSE(orbs.isTicking());
    EXPECT_EQ(orbs.spread(), 0.0) << "the orbs rest when the desktop asks for no animations";
    const std::uint64_t frames = orbs.framesDrawn();
    runMainLoopFor(300ms);
    EXPECT_EQ(orbs.spread(), 0.0);
    EXPECT_LE(orbs.framesDrawn(), frames + 1) << "at most the frame that shows them at rest";

    setAnimations(true);
    EXPECT_TRUE(orbs.isTicking());
}

TEST_F(OrbLayerTest, DrawsAFrameOnlyWhenAnOrbHasMovedAWholePixel) {
    // Orbs 2 px apart from rest to spread, a second each way: at most two frames a way, where
    // the frame-rate cap alone would draw ten.
    constexpr Orb orb{100, 10, 1, 0, 0, 2, 0};
    OrbLayer orbs(OrbLayout{{orb, orb}, 1});
    showOrbs(orbs);
    const std::uint64_t start = orbs.framesDrawn();
    runMainLoopFor(2500ms);
    const std::uint64_t frames = orbs.framesDrawn() - start;
    EXPECT_GE(frames, 2u) << "the orbs move";
    EXPECT_LE(frames, 5u);
}

// A white disc of `radius` centred on 0 under a Gaussian blur of deviation `sigma`, at (x, 0): the
// blurred chord of the disc at each height, summed over the heights.
double blurredDisc(double x, double radius, double sigma) {
    auto normal = [sigma](double t) { return 0.5 * std::erfc(-t / (sigma * std::sqrt(2.0))); };
    constexpr int steps = 2000;
    double sum = 0;
    for (int i = 0; i < steps; ++i) {
        const double y = -radius + (i + 0.5) * 2 * radius / steps;
        const double half = std::sqrt(radius * radius - y * y);
        const double weight =
            std::exp(-y * y / (2 * sigma * sigma)) / (sigma * std::sqrt(2 * std::numbers::pi));
        sum += weight * (normal(half - x) - normal(-half - x)) * 2 * radius / steps;
    }
    return sum;
}

TEST(OrbImage, BlursAsGtksBlurNodeMeans) {
    // A blur node's radius is twice the Gaussian's deviation, as GSK draws it after GTK 4.8; the
    // cairo renderer of 4.8 blurs about twice as much, so the image is held to the exact
    // blurred disc.
    constexpr double diameter = 200;
    constexpr double radius = 24;
    const OrbImage image = OrbImage::render(diameter, radius, LayerColor{1, 1, 1, 1}, 1);
    const int side = cairo_image_surface_get_width(image.surface());
    const int stride = cairo_image_surface_get_stride(image.surface());
    const auto* row = reinterpret_cast<const std::uint32_t*>(
        cairo_image_surface_get_data(image.surface()) + side / 2 * stride);
    for (int x = 0; x < side; ++x) {
        const double expected = blurredDisc(x + 0.5 - side / 2.0, diameter / 2, radius / 2);
        EXPECT_NEAR(static_cast<int>(row[x] >> 24) / 255.0, expected, 0.02) << "at x = " << x;
    }
}

} // namespace
} // namespace ovel::test
