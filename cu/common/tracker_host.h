/// @file
/// Tracking windows on the host. A task holds patches of both images, converted to float and with their gradients.

#pragma once

namespace vexa {

inline constexpr bool readsGradientImages = false;

namespace detail {

/// Elements that are worked on side by side: floats, and the short integers that gradients are made of. Loops over them
/// have a constant length and leave no rest: windows are about as wide.
inline constexpr int trackerLanes = 8;
inline constexpr int shortLanes = 16;

inline int wholeLanes(int count, int lanes)
{
    return (count + lanes - 1) / lanes * lanes;
}

/// An image and its gradients around a window, with a margin in which the window may move. Beyond the edges of the
/// image pixels and gradients repeat.
class TrackingPatch {
public:
    static constexpr int margin = 1;

    /// For windows whose columns are read as whole lanes.
    explicit TrackingPatch(HalfSize half)
        : _columns(2 * (half.width + 1 + margin)),
          _rows(2 * (half.height + 1 + margin)),
          _pitch(wholeLanes(wholeLanes(half.columns(), trackerLanes) + 1 + 2 * margin, shortLanes)),
          _bytes(taskMemory<u8>(1, _pitch + apron)),
          _terms(taskMemory<short>(2 * (_rows + apron), _pitch)),
          _planes(taskMemory<float>(3 * _rows, _pitch))
    {}

    bool isValid() const { return _bytes && _terms && _planes; }
    int pitch() const { return _pitch; }

    /// Makes the patch of an image whose window has its first pixel there, unless the window still lies in it.
    void cover(const FetchClamped<u8>& image, int left, int top)
    {
        const bool covered =
            _isFilled && left >= _left && left <= _left + 2 * margin && top >= _top && top <= _top + 2 * margin;
        if (!covered) fill(image, left - margin, top - margin);
    }

    /// The next window is that of another image or place.
    void forget() { _isFilled = false; }

    /// Where a window starts in plane 0, the pixels, or 1 and 2, the gradients.
    const float* at(int plane, int left, int top) const { return row(plane, top - _top) + (left - _left); }

private:
    /// Gradients need two pixels more before and one behind.
    static constexpr int before = 2;
    static constexpr int apron = 3;

    void fill(const FetchClamped<u8>& image, int left, int top)
    {
        _left = left;
        _top = top;
        _isFilled = true;
        for (int y = 0; y < _rows + apron; ++y) {
            const u8* const bytes = line(image, left - before, top - before + y) + before;
            fillTerms(bytes, y);
            if (y >= before && y < before + _rows) fillPixels(bytes, row(0, y - before));
        }
        for (int y = 0; y < _rows; ++y) differentiate(y);
        const Interior inside{std::max(-left, 0), std::min(_columns, image.width - left), std::max(-top, 0),
                              std::min(_rows, image.height - top)};
        if (inside.right - inside.left == _columns && inside.bottom - inside.top == _rows) return;
        for (int plane = 0; plane < 3; ++plane) repeatEdges(plane, inside);
    }

    /// A line's bytes from an image, whose edges repeat.
    const u8* line(const FetchClamped<u8>& image, int left, int y)
    {
        const u8* const row = image.row(y);
        const int count = _pitch + apron;
        const int first = std::clamp(-left, 0, count);
        const int end = std::clamp(image.width - left, first, count);
        if (first == 0 && end == count) return row + left;
        u8* const bytes = _bytes.get();
        std::fill(bytes, bytes + first, row[0]);
        std::copy(row + left + first, row + left + end, bytes + first);
        std::fill(bytes + end, bytes + count, row[image.width - 1]);
        return bytes;
    }

    void fillTerms(const u8* from, int y)
    {
        short* const ofX = terms(0, y);
        short* const ofY = terms(1, y);
        for (int x = 0; x < _pitch; x += shortLanes)
#pragma omp simd
            for (int i = x; i < x + shortLanes; ++i) {
                ofX[i] = static_cast<short>(termOfX(from[i - 2], from[i - 1], from[i], from[i + 1]));
                ofY[i] = static_cast<short>(termOfY(from[i - 1], from[i]));
            }
    }

    void fillPixels(const u8* from, float* to) const
    {
        for (int x = 0; x < _pitch; x += shortLanes)
#pragma omp simd
            for (int i = x; i < x + shortLanes; ++i) to[i] = static_cast<float>(from[i]);
    }

    void differentiate(int y)
    {
        const std::ptrdiff_t pitch = _pitch;
        const short* const ofX = terms(0, y + before);
        const short* const ofY = terms(1, y + before);
        float* const gradX = row(1, y);
        float* const gradY = row(2, y);
        for (int x = 0; x < _pitch; x += shortLanes)
#pragma omp simd
            for (int i = x; i < x + shortLanes; ++i) {
                gradX[i] = gradientOf(static_cast<short>(sumOfX(ofX[i - pitch], ofX[i])));
                gradY[i] =
                    gradientOf(static_cast<short>(sumOfY(ofY[i - 2 * pitch], ofY[i - pitch], ofY[i], ofY[i + pitch])));
            }
    }

    void repeatEdges(int plane, const Interior& inside)
    {
        for (int y = inside.top; y < inside.bottom; ++y) {
            float* const line = row(plane, y);
            std::fill(line, line + inside.left, line[inside.left]);
            std::fill(line + inside.right, line + _columns, line[inside.right - 1]);
        }
        for (int y = 0; y < inside.top; ++y) std::copy_n(row(plane, inside.top), _columns, row(plane, y));
        for (int y = inside.bottom; y < _rows; ++y) std::copy_n(row(plane, inside.bottom - 1), _columns, row(plane, y));
    }

    static std::ptrdiff_t offset(int row, int pitch)
    {
        return static_cast<std::ptrdiff_t>(row) * pitch;
    }
    short* terms(int i, int y)
    {
        return _terms.get() + offset(i * (_rows + apron) + y, _pitch);
    }
    float* row(int plane, int y)
    {
        return _planes.get() + offset(plane * _rows + y, _pitch);
    }
    const float* row(int plane, int y) const
    {
        return _planes.get() + offset(plane * _rows + y, _pitch);
    }

    int _columns;
    int _rows;
    int _pitch;
    std::unique_ptr<u8[]> _bytes;
    std::unique_ptr<short[]> _terms;
    std::unique_ptr<float[]> _planes;
    int _left = 0;
    int _top = 0;
    bool _isFilled = false;
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
          _pitch(detail::wholeLanes(_columns, lanes)),
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
                for (int x = 0; x < _pitch; x += lanes)
#pragma omp simd
                    for (int lane = x; lane < x + lanes; ++lane)
                        to[lane] =
                            place.plus(0.0F, from[lane], from[lane + 1], from[lane + pitch], from[lane + pitch + 1]);
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
    static constexpr int lanes = detail::trackerLanes;

    detail::WindowPlace cover(const FetchClamped<u8>& image, float x, float y)
    {
        const detail::WindowPlace place = detail::windowPlace(x, y, image.width, image.height);
        _patch.cover(image, place.x - _half.width, place.y - _half.height);
        return place;
    }

    /// Where the window starts in a plane of the patch.
    const float* plane(int i, const detail::WindowPlace& place) const
    {
        return _patch.at(i, place.x - _half.width, place.y - _half.height);
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
        float* const to = sumsOf(0) + column;
        // In arrays of a constant size, which stay in registers.
        float xx[lanes] = {};
        float xy[lanes] = {};
        float yy[lanes] = {};
        float ex[lanes] = {};
        float ey[lanes] = {};
        float residue[lanes] = {};
        for (int y = 0; y < rows; ++y) {
            for (int lane = 0; lane < lanes; ++lane) {
                const auto plus = [=](float value, const float* plane) {
                    const float* const at = plane + y * pitch + lane;
                    return own.plus(value, at[0], at[1], at[pitch], at[pitch + 1]);
                };
                const auto minus = [=](float value, const float* plane) {
                    const float* const at = plane + y * pitch + lane;
                    return own.minus(value, at[0], at[1], at[pitch], at[pitch + 1]);
                };
                const float* const sample = first + y * samplePitch + lane;
                const WindowSums sums = detail::accumulated(
                    {xx[lane], xy[lane], yy[lane], ex[lane], ey[lane], residue[lane]},
                    {plus(sample[samplePlane], gradX), plus(sample[2 * samplePlane], gradY), minus(sample[0], values)});
                xx[lane] = sums.xx;
                xy[lane] = sums.xy;
                yy[lane] = sums.yy;
                ex[lane] = sums.ex;
                ey[lane] = sums.ey;
                residue[lane] = sums.residue;
            }
        }
        for (int lane = 0; lane < lanes; ++lane) to[0 * samplePitch + lane] = xx[lane];
        for (int lane = 0; lane < lanes; ++lane) to[1 * samplePitch + lane] = xy[lane];
        for (int lane = 0; lane < lanes; ++lane) to[2 * samplePitch + lane] = yy[lane];
        for (int lane = 0; lane < lanes; ++lane) to[3 * samplePitch + lane] = ex[lane];
        for (int lane = 0; lane < lanes; ++lane) to[4 * samplePitch + lane] = ey[lane];
        for (int lane = 0; lane < lanes; ++lane) to[5 * samplePitch + lane] = residue[lane];
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
