/// @file
/// Tracking windows on the host. A task holds patches of both images, converted to float and with their gradients.

#pragma once

#include <cstring>

namespace vexa {

inline constexpr bool readsGradientImages = false;

namespace detail {

/// An image and its gradients around a window, with a margin in which the window may move. Beyond the edges of the
/// image pixels and gradients repeat.
class TrackingPatch {
public:
    static constexpr int margin = 2;
    /// Columns are summed by whole registers, which may read so far past the window.
    static constexpr int lanes = 8;

    explicit TrackingPatch(HalfSize half)
        : _columns(2 * (half.width + 1 + margin)),
          _rows(2 * (half.height + 1 + margin)),
          _pitch(_columns + lanes),
          _pixels(taskMemory<float>(_rows + apron, _pitch)),
          _planes(taskMemory<float>(3 * _rows, _pitch))
    {}

    bool isValid() const { return _pixels && _planes; }
    int pitch() const { return _pitch; }

    /// Makes the patch of an image whose window has its first pixel there, unless it is there.
    void cover(const FetchClamped<u8>& image, int left, int top)
    {
        const bool covered =
            _filled && left >= _left && left <= _left + 2 * margin && top >= _top && top <= _top + 2 * margin;
        if (!covered) fill(image, left - margin, top - margin);
    }

    /// A window that is to be made anew.
    void forget() { _filled = false; }

    /// Of plane 0 pixels, 1 and 2 gradients, where the window starts.
    const float* plane(int i, int left, int top) const { return row(i, top - _top) + (left - _left); }

private:
    /// Gradients need two pixels more before and one behind.
    static constexpr int before = 2;
    static constexpr int apron = 3;

    void fill(const FetchClamped<u8>& image, int left, int top)
    {
        _left = left;
        _top = top;
        _filled = true;
        // The part of the patch that lies in the image.
        const int first = std::max(-left, 0);
        const int last = std::min(_columns, image.width - left);
        const int upper = std::max(-top, 0);
        const int lower = std::min(_rows, image.height - top);
        for (int y = upper; y < lower + apron; ++y)
            fetchLine(_pixels.get() + static_cast<std::ptrdiff_t>(y) * _pitch, image, left + first - before,
                      left + last + apron - before, top + y - before);
        for (int y = upper; y < lower; ++y) {
            fillRow(y, last - first, first);
            for (int i = 0; i < 3; ++i) {
                float* const line = row(i, y);
                std::fill(line, line + first, line[first]);
                std::fill(line + last, line + _columns, line[last - 1]);
            }
        }
        for (int i = 0; i < 3; ++i) {
            for (int y = 0; y < upper; ++y) copyRow(i, y, upper);
            for (int y = lower; y < _rows; ++y) copyRow(i, y, lower - 1);
        }
    }

    void fillRow(int y, int count, int column)
    {
        const float* const from = _pixels.get() + static_cast<std::ptrdiff_t>(y + before) * _pitch + before;
        float* const values = row(0, y) + column;
        float* const gradX = row(1, y) + column;
        float* const gradY = row(2, y) + column;
        const std::ptrdiff_t pitch = _pitch;
#pragma omp simd
        for (int x = 0; x < count; ++x) {
            const auto at = [=](int dx, int dy) { return from[dy * pitch + x + dx]; };
            values[x] = from[x];
            gradX[x] = trackerGradientX(at);
            gradY[x] = trackerGradientY(at);
        }
    }

    float* row(int i, int y)
    {
        return _planes.get() + (static_cast<std::ptrdiff_t>(i) * _rows + y) * _pitch;
    }
    const float* row(int i, int y) const
    {
        return _planes.get() + (static_cast<std::ptrdiff_t>(i) * _rows + y) * _pitch;
    }

    void copyRow(int i, int to, int from)
    {
        std::memcpy(row(i, to), row(i, from), static_cast<std::size_t>(_columns) * sizeof(float));
    }

    int _columns;
    int _rows;
    int _pitch;
    std::unique_ptr<float[]> _pixels;
    std::unique_ptr<float[]> _planes;
    int _left = 0;
    int _top = 0;
    bool _filled = false;
};

}  // namespace detail

/// The windows of a pair of images.
class TrackingWindow {
public:
    TrackingWindow(const TrackedImage& first, const TrackedImage& second, HalfSize half)
        : _first(first.pixels),
          _second(second.pixels),
          _half(half.isEmpty() ? HalfSize{0, 0} : half),
          _columns(half.columns()),
          _rows(half.rows()),
          _pitch((_columns + lanes - 1) / lanes * lanes),
          _patch(_half),
          _samples(detail::taskMemory<float>(3 * _rows, _pitch)),
          _sums(detail::taskMemory<float>(6, _pitch))
    {}

    bool isValid() const { return _patch.isValid() && _samples && _sums; }

    /// The middle in the first image.
    void place(float x, float y)
    {
        _patch.forget();
        const detail::WindowPlace place = cover(_first, x, y);
        const std::ptrdiff_t pitch = _patch.pitch();
        for (int i = 0; i < 3; ++i) {
            const float* from = plane(i, place);
            float* to = _samples.get() + static_cast<std::ptrdiff_t>(i) * _rows * _pitch;
            for (int row = 0; row < _rows; ++row, from += pitch, to += _pitch)
#pragma omp simd
                for (int x = 0; x < _pitch; ++x)
                    to[x] = place(from[x], from[x + 1], from[x + pitch], from[x + pitch + 1]);
        }
        _patch.forget();
    }

    /// The sums with a middle in the second image.
    WindowSums sums(float x, float y)
    {
        const detail::WindowPlace place = cover(_second, x, y);
        for (int column = 0; column < _columns; column += lanes) sumColumns(place, column);
        WindowSums sums{};
        for (int i = 0; i < _columns; ++i)
            sums =
                sums + WindowSums{sumsOf(0)[i], sumsOf(1)[i], sumsOf(2)[i], sumsOf(3)[i], sumsOf(4)[i], sumsOf(5)[i]};
        return sums;
    }

private:
    static constexpr int lanes = detail::TrackingPatch::lanes;

    detail::WindowPlace cover(const FetchClamped<u8>& image, float x, float y)
    {
        const detail::WindowPlace place = detail::windowPlace(x, y, image.width, image.height);
        _patch.cover(image, place.x - _half.width, place.y - _half.height);
        return place;
    }

    /// Where the window starts in a plane of the patch.
    const float* plane(int i, const detail::WindowPlace& place) const
    {
        return _patch.plane(i, place.x - _half.width, place.y - _half.height);
    }

    float* sumsOf(int i)
    {
        return _sums.get() + static_cast<std::ptrdiff_t>(i) * _pitch;
    }

    /// Sums of columns side by side, those past the window too.
    void sumColumns(const detail::WindowPlace& place, int column)
    {
        const std::ptrdiff_t pitch = _patch.pitch();
        const std::ptrdiff_t samplePitch = _pitch;
        const std::ptrdiff_t samplePlane = samplePitch * _rows;
        const int rows = _rows;
        const detail::WindowPlace own = place;
        const float* const first = _samples.get() + column;
        const float* const values = plane(0, place) + column;
        const float* const gradX = plane(1, place) + column;
        const float* const gradY = plane(2, place) + column;
        // In arrays of a constant size, which stay in registers.
        float xx[lanes] = {};
        float xy[lanes] = {};
        float yy[lanes] = {};
        float ex[lanes] = {};
        float ey[lanes] = {};
        float residue[lanes] = {};
        for (int y = 0; y < rows; ++y) {
            for (int lane = 0; lane < lanes; ++lane) {
                const auto second = [=](const float* plane) {
                    const float* const at = plane + y * pitch + lane;
                    return own(at[0], at[1], at[pitch], at[pitch + 1]);
                };
                const float* const sample = first + y * samplePitch + lane;
                const WindowSums sums =
                    detail::accumulated({xx[lane], xy[lane], yy[lane], ex[lane], ey[lane], residue[lane]},
                                        {sample[samplePlane] + second(gradX), sample[2 * samplePlane] + second(gradY),
                                         sample[0] - second(values)});
                xx[lane] = sums.xx;
                xy[lane] = sums.xy;
                yy[lane] = sums.yy;
                ex[lane] = sums.ex;
                ey[lane] = sums.ey;
                residue[lane] = sums.residue;
            }
        }
        std::copy_n(xx, lanes, sumsOf(0) + column);
        std::copy_n(xy, lanes, sumsOf(1) + column);
        std::copy_n(yy, lanes, sumsOf(2) + column);
        std::copy_n(ex, lanes, sumsOf(3) + column);
        std::copy_n(ey, lanes, sumsOf(4) + column);
        std::copy_n(residue, lanes, sumsOf(5) + column);
    }

    FetchClamped<u8> _first;
    FetchClamped<u8> _second;
    HalfSize _half;
    int _columns;
    int _rows;
    int _pitch;
    detail::TrackingPatch _patch;
    std::unique_ptr<float[]> _samples;
    std::unique_ptr<float[]> _sums;
};

/// rule(i, window) for every point.
template <typename Rule>
inline void forEachTrackedPoint(int count, const TrackedImage& first, const TrackedImage& second, HalfSize half,
                                const Rule& rule)
{
    if (count < 1) return;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        TrackingWindow window(first, second, half);
        if (!window.isValid()) return;
        for (std::size_t i = begin; i < end; ++i) own(static_cast<int>(i), window);
    };
    // A step takes about as long as moving 32 bytes a pixel.
    const std::size_t pixels = static_cast<std::size_t>(half.columns()) * static_cast<std::size_t>(half.rows());
    platform::parallelRanges(static_cast<std::size_t>(count), 32 * pixels, body);
}

}  // namespace vexa
