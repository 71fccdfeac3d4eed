/// @file
/// Tracking windows on the GPU: a thread for each point, which reads through the caches.

#pragma once

namespace vexa {

/// Whether windows read gradient images.
inline constexpr bool readsGradientImages = true;

/// The windows of a pair of images.
class TrackingWindow {
public:
    VEXA_DEVICE TrackingWindow(const TrackedImage& first, const TrackedImage& second, HalfSize half)
        : _first(first), _second(second), _half(half)
    {}

    /// The middle in the first image.
    VEXA_DEVICE void place(float x, float y)
    {
        _place = detail::windowPlace(x, y, _first.pixels.width, _first.pixels.height);
    }

    /// The sums with a middle in the second image.
    VEXA_DEVICE WindowSums sums(float x, float y) const
    {
        const detail::WindowPlace second = detail::windowPlace(x, y, _second.pixels.width, _second.pixels.height);
        WindowSums sums{};
        for (int dx = -_half.width; dx <= _half.width; ++dx) {
            WindowSums column{};
            for (int dy = -_half.height; dy <= _half.height; ++dy) {
                const Sample a = sample(_first, _place, dx, dy);
                const Sample b = sample(_second, second, dx, dy);
                column = detail::accumulated(column, {a.gradX + b.gradX, a.gradY + b.gradY, a.value - b.value});
            }
            sums = sums + column;
        }
        return sums;
    }

private:
    struct Sample {
        float value;
        float gradX;
        float gradY;
    };

    static VEXA_DEVICE Sample sample(const TrackedImage& image, const detail::WindowPlace& place, int dx, int dy)
    {
        const int width = image.pixels.width;
        const int height = image.pixels.height;
        const int left = clampedTo(place.x + dx, width);
        const int right = clampedTo(place.x + dx + 1, width);
        const int upper = clampedTo(place.y + dy, height);
        const int lower = clampedTo(place.y + dy + 1, height);
        const auto at = [&](const auto* pixels, int pitch) {
            const auto* const above = pixels + static_cast<std::ptrdiff_t>(upper) * pitch;
            const auto* const below = pixels + static_cast<std::ptrdiff_t>(lower) * pitch;
            return place.plus(0.0F, above[left], above[right], below[left], below[right]);
        };
        return {at(image.pixels.pixels, image.pixels.pitch), at(image.gradX, image.gradPitch),
                at(image.gradY, image.gradPitch)};
    }

    TrackedImage _first;
    TrackedImage _second;
    HalfSize _half;
    detail::WindowPlace _place{};
};

/// rule(i, window) for every point.
template <typename Rule>
VEXA_DEVICE void forEachTrackedPoint(int count, const TrackedImage& first, const TrackedImage& second, HalfSize half,
                                     const Rule& rule)
{
    forEachItem(count, [&](long long i) {
        TrackingWindow window(first, second, half);
        rule(i, window);
    });
}

}  // namespace vexa
