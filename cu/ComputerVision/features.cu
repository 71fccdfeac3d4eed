/// @file
/// Corner-like features: a measure of every pixel, the strongest pixel of each cell as a candidate, and what is left of
/// these after quality and distance. The candidates of some cells find no place in the list; that is meant.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "arguments.h"
#include "checks.h"
#include "corners.h"
#include "temporaries.h"
#include "windows.h"

using namespace vexa;

namespace {

using Feature = VexaPointValue2D<float, float>;

}  // namespace

/// Pitches are in elements.
VEXA_KERNEL derivativeKernel(Vexa8u* src, Vexa32f* gradX, Vexa32f* gradY, int srcWidth, int srcHeight, int srcPitch,
                             int roiX, int roiY, int width, int height, int pitch)
{
    const Plane<float> alongX{gradX, pitch};
    const Plane<float> alongY{gradY, pitch};
    const FetchRectangle<u8> rectangle{{src, srcWidth, srcHeight, srcPitch}, roiX, roiY, width, height};
    forEachWindow<Reach<1, 1, 1, 1>, float>(rectangle, [=](int x, int y, const auto& window) {
        alongX.row(y)[x] = 0.5F * (window(1, 0) - window(-1, 0));
        alongY.row(y)[x] = 0.5F * (window(0, 1) - window(0, -1));
    });
}

/// The smaller eigenvalue of the structure matrix (Shi and Tomasi). Pitches are in elements.
VEXA_KERNEL kernel_klt(Vexa32f* gradX, Vexa32f* gradY, Vexa32f* eig, int width, int height, int gradPitch, int eigPitch,
                       int blockSize)
{
    const Plane<float> to{eig, eigPitch};
    forEachStructure(GradientPlanes{gradX, gradY, width, height, gradPitch}, blockSize >> 1,
                     [=](int x, int y, const StructureMatrix& m) {
                         const float difference = m.xx - m.yy;
                         const float root = squareRoot(difference * difference + 4.0F * (m.xy * m.xy));
                         to.row(y)[x] = 0.5F * (m.xx + m.yy - root);
                     });
}

/// Harris' response, or determinant over trace. Pitches are in elements.
VEXA_KERNEL kernel_harris(Vexa32f* gradX, Vexa32f* gradY, Vexa32f* eig, int width, int height, int gradPitch,
                          int eigPitch, int blockSize, float k, bool usePeter)
{
    const Plane<float> to{eig, eigPitch};
    forEachStructure(GradientPlanes{gradX, gradY, width, height, gradPitch}, blockSize >> 1,
                     [=](int x, int y, const StructureMatrix& m) {
                         const float determinant = m.xx * m.yy - m.xy * m.xy;
                         const float trace = m.xx + m.yy;
                         to.row(y)[x] = usePeter ? determinant / (trace + 1e-9F) : determinant - k * (trace * trace);
                     });
}

/// The strongest pixel of each cell of an image, which is a rectangle at (roiX, roiY) of a larger one. Rows of cells
/// lie `stride` records apart, which is more than there are cells: those that would lie past the end of the list are
/// dropped, as that is what callers know.
VEXA_KERNEL kernel_selectGood(Vexa32f* eig, VexaPointValue2D<float, float>* list, int width, int height, int pitch,
                              int roiX, int roiY, int stride, int listSize)
{
    forEachPeak(Plane<const float>{eig, pitch}, width, height, [=](int column, int row, const Peak& peak) {
        const long long slot = static_cast<long long>(row) * stride + column;
        if (slot >= listSize) return;
        list[slot].x = static_cast<float>(static_cast<long long>(peak.x) + roiX);
        list[slot].y = static_cast<float>(static_cast<long long>(peak.y) + roiY);
        list[slot].val = peak.value;
    });
}

void _calculateGradients(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight, const VexaRect& roi,
                         Vexa32f* gradX, Vexa32f* gradY, Vexa32s gradPitch, cudaStream_t stream)
{
    launch(derivativeKernel, Extent{roi.width, roi.height}, stream, pSrc, gradX, gradY, srcWidth, srcHeight, srcPitch,
           roi.x, roi.y, roi.width, roi.height, elements<f32>(gradPitch));
}

VexaStatus _getFeatures(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight, const VexaRect& roi,
                        Vexa32f* eig, Vexa32s eigPitch, Vexa32s blockSize, bool useHarris, bool usePeter, Vexa32f k,
                        cudaStream_t stream)
{
    VexaImage gradX;
    VexaImage gradY;
    if (const VexaStatus failed = gradX.create(roi.width, roi.height, VEXA_32FC1)) return failed;
    if (const VexaStatus failed = gradY.create(roi.width, roi.height, VEXA_32FC1)) return failed;
    _calculateGradients(pSrc, srcWidth, srcPitch, srcHeight, roi, gradX.ptr<f32>(), gradY.ptr<f32>(), gradX.pitch(),
                        stream);
    const Extent extent{roi.width, roi.height};
    const int gradPitch = elements<f32>(gradX.pitch());
    if (useHarris)
        launch(kernel_harris, extent, stream, gradX.ptr<f32>(), gradY.ptr<f32>(), eig, roi.width, roi.height, gradPitch,
               elements<f32>(eigPitch), blockSize, k, usePeter);
    else
        launch(kernel_klt, extent, stream, gradX.ptr<f32>(), gradY.ptr<f32>(), eig, roi.width, roi.height, gradPitch,
               elements<f32>(eigPitch), blockSize);
    return VEXA_SUCCESS;
}

void _selectGoodFeatures(Vexa32f* eig, Vexa32s eigPitch, const VexaRect& roi, VexaPointValue2D<float, float>* list,
                         Vexa32s listSize, cudaStream_t stream)
{
    // As many as a grid of whole blocks has threads across.
    const int columns = (roi.width - 1) / cellSide + 1;
    const int rows = (roi.height - 1) / cellSide + 1;
    const int stride = (columns + blockSide - 1) / blockSide * blockSide;
    launch(kernel_selectGood, Extent{columns, rows}, stream, eig, list, roi.width, roi.height, elements<f32>(eigPitch),
           roi.x, roi.y, stride, listSize);
}

bool _VexaPointValueDescend(const VexaPointValue2D<float, float>& lhs, const VexaPointValue2D<float, float>& rhs)
{
    return lhs.val > rhs.val;
}

namespace {

/// Points in the plane, by squares as wide as the distance that is asked for: only those of the nine squares around a
/// point can be that near. Squares share buckets by a hash. Selecting among 100,000 candidates takes 4 to 6 ms, where
/// a linear search took 2 s.
class Buckets {
public:
    /// Distances are along both axes.
    Buckets(const Feature* points, std::size_t capacity, float distance)
        : _points(points), _distance(distance), _side(std::max(1.001 * static_cast<double>(distance), 1.0))
    {
        while (_shift > 32 && std::size_t{1} << (64 - _shift) < capacity) --_shift;
        const std::size_t count = std::size_t{1} << (64 - _shift);
        _first.reset(new (std::nothrow) int[count]);
        _next.reset(new (std::nothrow) int[capacity]);
        if (_first) std::fill_n(_first.get(), count, none);
    }

    bool isValid() const { return _first && _next; }

    bool hasNeighbour(const Feature& point) const
    {
        if (!isFinite(point)) return false;
        const Square square = squareOf(point);
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                for (int i = _first[bucketOf({square.x + dx, square.y + dy})]; i != none; i = _next[i])
                    if (isNear(point, _points[i])) return true;
        return false;
    }

    /// Adds a point by its number.
    void add(int i)
    {
        if (!isFinite(_points[i])) return;
        int& first = _first[bucketOf(squareOf(_points[i]))];
        _next[i] = first;
        first = i;
    }

private:
    struct Square {
        std::int64_t x;
        std::int64_t y;
    };
    static constexpr int none = -1;

    /// Others are near nothing.
    static bool isFinite(const Feature& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

    bool isNear(const Feature& a, const Feature& b) const
    {
        return std::fabs(a.x - b.x) <= _distance && std::fabs(a.y - b.y) <= _distance;
    }

    std::int64_t along(float coordinate) const
    {
        constexpr double far = 1e18;
        return static_cast<std::int64_t>(std::clamp(std::floor(coordinate / _side), -far, far));
    }

    Square squareOf(const Feature& point) const { return {along(point.x), along(point.y)}; }

    /// The upper bits of a product with odd numbers near the golden ratio.
    std::size_t bucketOf(const Square& square) const
    {
        const std::uint64_t mixed = static_cast<std::uint64_t>(square.x) * 0x9E3779B97F4A7C15U +
                                    static_cast<std::uint64_t>(square.y) * 0xC2B2AE3D27D4EB4FU;
        return static_cast<std::size_t>(mixed >> _shift);
    }

    const Feature* _points;
    float _distance;
    double _side;
    int _shift = 60;
    std::unique_ptr<int[]> _first;
    std::unique_ptr<int[]> _next;
};

}  // namespace

VexaStatus _selectBestFeatures(VexaPointValue2D<float, float>* host_featurelist, Vexa32s minimumDistance,
                               Vexa32s* count, Vexa32f quality)
{
    if (*count < 1) return VEXA_SUCCESS;
    Feature* const list = host_featurelist;
    const float threshold = quality * list[0].val;
    // A negative distance is none at all.
    const auto distance = static_cast<float>(static_cast<long long>(minimumDistance) - 1);
    Buckets accepted(list, static_cast<std::size_t>(*count), std::max(distance, 0.0F));
    if (!accepted.isValid()) return VEXA_MEM_ALLOC_ERR;
    // Accepted ones move to the head of the list, the first as it is.
    int best = 1;
    accepted.add(0);
    for (int i = 1; i < *count; ++i) {
        if (!(list[i].val >= threshold)) continue;
        if (distance >= 0.0F && accepted.hasNeighbour(list[i])) continue;
        list[best] = list[i];
        accepted.add(best);
        ++best;
    }
    *count = best;
    return VEXA_SUCCESS;
}

namespace {

/// How many candidates are kept of a rectangle, in 32-bit arithmetic, which callers know.
[[nodiscard]] VexaStatus listSizeOf(const VexaRect& roi, int& size)
{
    constexpr auto cell = static_cast<float>(cellSide * cellSide);
    const float count = static_cast<float>(static_cast<long long>(roi.width) * roi.height) / cell + 7.0F;
    if (!(count >= 0.0F && count < static_cast<float>(std::numeric_limits<int>::max()))) return VEXA_MEM_ALLOC_ERR;
    size = static_cast<int>(count);
    return VEXA_SUCCESS;
}

bool isEmpty(int width, int height)
{
    return width < 1 || height < 1;
}

/// Candidates of sufficient quality, strongest first, at the head of the list. The others, most of them as a rule, are
/// no features whatever their neighbours, and stay unsorted.
int sortCandidates(Feature* list, int size, float quality)
{
    if (size < 1) return 0;
    const float highest = std::min_element(list, list + size, _VexaPointValueDescend)->val;
    const float threshold = quality * highest;
    Feature* const end = std::stable_partition(list, list + size, [=](const Feature& candidate) {
        return candidate.val >= threshold || candidate.val == highest;
    });
    std::stable_sort(list, end, _VexaPointValueDescend);
    return static_cast<int>(end - list);
}

}  // namespace

VexaStatus vexa_goodFeaturesToTrack(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight, VexaRect roi,
                                    VexaPointValue2D<float, float>*& host_featureList, Vexa32s* featureCount,
                                    VexaFeaturesAlgorithm algo, Vexa32f quality, Vexa32s minimumDistance,
                                    Vexa32s blockSize, Vexa32f k, cudaStream_t stream)
{
    *featureCount = std::max(*featureCount, 0);
    int listSize = 0;
    if (const VexaStatus failed = listSizeOf(roi, listSize)) return failed;
    const bool hasPixels = pSrc != nullptr && !isEmpty(srcWidth, srcHeight) && !isEmpty(roi.width, roi.height);
    VexaImage eig;
    if (hasPixels && eig.create(roi.width, roi.height, VEXA_32FC1)) return VEXA_MEM_ALLOC_ERR;
    OwnedElements<Feature> list;
    const auto records = static_cast<std::size_t>(listSize);
    const std::size_t bytes = records * sizeof(Feature);
    if (const VexaStatus failed = allocateElements(list, records)) return failed;
    if (const VexaStatus failed = platform::setBytes({list.get(), bytes}, 0, {bytes, 1}, stream)) return failed;
    if (hasPixels) {
        const bool usePeter = algo == VEXA_FEATURES_HARRIS_PETER;
        const bool useHarris = algo == VEXA_FEATURES_HARRIS || usePeter;
        if (_getFeatures(pSrc, srcWidth, srcPitch, srcHeight, roi, eig.ptr<f32>(), eig.pitch(), blockSize, useHarris,
                         usePeter, k, stream))
            return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
        _selectGoodFeatures(eig.ptr<f32>(), eig.pitch(), roi, list.get(), listSize, stream);
    }

    auto* const candidates = new (std::nothrow) Feature[records];
    if (candidates == nullptr) return VEXA_MEM_ALLOC_ERR;
    host_featureList = candidates;
    if (const VexaStatus failed = platform::copyToHost(candidates, list.get(), bytes, stream)) return failed;
    (void)platform::synchronize(stream);
    int count = sortCandidates(candidates, listSize, quality);
    if (const VexaStatus failed = _selectBestFeatures(candidates, minimumDistance, &count, quality)) return failed;
    *featureCount = std::min(*featureCount, count);
    return releaseElements(list);
}

namespace vexa::computerVision {

VexaStatus goodFeaturesToTrack(const VexaImage& src, const VexaRect& roi, VexaPointValue2D<float, float>*& output,
                               Vexa32s& maxFeatures, const VexaFeaturesCriteria criteria, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.type() != VEXA_8UC1) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return vexa_goodFeaturesToTrack(src.ptr<u8>(), src.width(), src.pitch(), src.height(), roi, output, &maxFeatures,
                                    criteria.algorithm, criteria.featureQuality, criteria.minimumDistance,
                                    criteria.blockSize, criteria.k, handle(stream));
}

}  // namespace vexa::computerVision
