/// @file
/// Feature tracking by a pyramidal, symmetric Lucas-Kanade iteration. Every level is made from the full image. Its size
/// is computed once when it is made and again, by other steps, when it is tracked on, and may differ by a pixel; that
/// is meant.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <new>
#include <vector>

#include "arguments.h"
#include "checks.h"
#include "temporaries.h"
#include "tracker.h"

using namespace vexa;

namespace {

using Feature = VexaPointValue2D<float, float>;

/// What becomes of a feature.
inline constexpr float tracked = 0.0F;
inline constexpr float singular = -2.0F;
inline constexpr float unmoved = -3.0F;
inline constexpr float left = -4.0F;
inline constexpr float unlike = -5.0F;

/// What following a point on a level takes.
struct Following {
    int width;
    int height;
    int iterations;
    float windowArea;
    float scale;  ///< of the level
    float errorThreshold;
    float maxResidue;

    /// A position that is not a number lies inside.
    VEXA_DEVICE bool isOutside(float x, float y) const
    {
        return x < 0.0F || y < 0.0F || x >= static_cast<float>(width) || y >= static_cast<float>(height);
    }
};

/// Follows one feature. The first record never changes; the second starts as the guess, in pixels of the full image.
template <typename Window>
VEXA_DEVICE void follow(const Following& level, const Feature& from, Feature& to, Window& window)
{
    // Lost on a coarser level, or before the call.
    if (to.val == singular || to.val == left) return;
    to.val = unmoved;
    const float x1 = level.scale * from.x;
    const float y1 = level.scale * from.y;
    float x2 = level.scale * to.x;
    float y2 = level.scale * to.y;
    float residue = 0.0F;
    for (int step = 0; step < level.iterations; ++step) {
        if (level.isOutside(x1, y1) || level.isOutside(x2, y2)) {
            to.val = left;
            return;
        }
        if (step == 0) window.place(x1, y1);
        const WindowSums sums = window.sums(x2, y2);
        const float determinant = sums.xx * sums.yy - sums.xy * sums.xy;
        if (fabsf(determinant) <= 0.01F) {
            to.val = singular;
            return;
        }
        residue = sums.residue;
        to.val = tracked;
        const float inverse = reciprocal(determinant);
        const float dx = (sums.ex * sums.yy - sums.ey * sums.xy) * inverse;
        const float dy = (sums.ey * sums.xx - sums.ex * sums.xy) * inverse;
        x2 += dx;
        y2 += dy;
        if (fabsf(dx) < level.errorThreshold && fabsf(dy) < level.errorThreshold) break;
    }
    const float toFull = reciprocal(level.scale);
    to.x = x2 * toFull;
    to.y = y2 * toFull;
    // By the size that was asked for, not by the pixels of the window; that is meant.
    if (residue / level.windowArea > level.maxResidue) to.val = unlike;
}

}  // namespace

/// Pitches are in elements. A level is read as if it had a pixel at least.
VEXA_KERNEL _calculateTrackerGradientsKernel(Vexa8u* image1, Vexa8u* image2, Vexa32f* img1X, Vexa32f* img1Y,
                                             Vexa32f* img2X, Vexa32f* img2Y, int width, int height, int widthStep,
                                             int gradPitch)
{
    const FetchClamped<u8> first{image1, width, height, widthStep};
    const FetchClamped<u8> second{image2, width, height, widthStep};
    forEachPixel(width, height, [=](int x, int y) {
        writeTrackerGradients(first, {img1X, gradPitch}, {img1Y, gradPitch}, x, y);
        writeTrackerGradients(second, {img2X, gradPitch}, {img2Y, gradPitch}, x, y);
    });
}

/// The images, where it reads them with their gradients, come last.
VEXA_KERNEL _trackFeatures_Kernel(VexaPointValue2D<float, float>* features1, VexaPointValue2D<float, float>* features2,
                                  int featureCount, int width, int height, int iterations, int windowWidth,
                                  int windowHeight, int halfWidth, int halfHeight, float subSampling,
                                  float errorThreshold, float maxResidue, TrackedImage first, TrackedImage second)
{
    const float area = static_cast<float>(static_cast<long long>(windowWidth) * windowHeight);
    const Following level{width, height, iterations, area, subSampling, errorThreshold, maxResidue};
    forEachTrackedPoint(featureCount, first, second, HalfSize{halfWidth, halfHeight},
                        [=](long long i, auto& window) { follow(level, features1[i], features2[i], window); });
}

void _calculateTrackerGradients(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                                Vexa32f* img1X, Vexa32f* img1Y, Vexa32f* img2X, Vexa32f* img2Y, Vexa32s gradPitch,
                                cudaStream_t internal_stream)
{
    launch(_calculateTrackerGradientsKernel, Extent{width, height}, internal_stream, image1, image2, img1X, img1Y,
           img2X, img2Y, width, height, widthStep, elements<f32>(gradPitch));
}

void _trackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height, Vexa32f* img1X,
                    Vexa32f* img1Y, Vexa32f* img2X, Vexa32f* img2Y, Vexa32s gradPitch,
                    VexaPointValue2D<float, float>* features1, VexaPointValue2D<float, float>* features2,
                    Vexa32s featureCount, Vexa32s iterations, Vexa32f subSampling, VexaSize windowSize,
                    Vexa32f errorThreshold, Vexa32f maxResidue, cudaStream_t internal_stream)
{
    if (image1 == nullptr || image2 == nullptr) return;
    // A level that was made has a pixel at least, also where it is tracked on as if it had none.
    const int columns = std::max(width, 1);
    const int rows = std::max(height, 1);
    const int pitch = elements<f32>(gradPitch);
    // A window that lacks pixels along one axis has none, however long the other.
    const bool isEmpty = windowSize.width < 0 || windowSize.height < 0;
    const HalfSize half = isEmpty ? HalfSize{-1, -1} : HalfSize{windowSize.width >> 1, windowSize.height >> 1};
    const TrackedImage first{{image1, columns, rows, widthStep}, img1X, img1Y, pitch};
    const TrackedImage second{{image2, columns, rows, widthStep}, img2X, img2Y, pitch};
    launch(_trackFeatures_Kernel, itemExtent(featureCount), internal_stream, features1, features2, featureCount, width,
           height, iterations, windowSize.width, windowSize.height, half.width, half.height, subSampling,
           errorThreshold, maxResidue, first, second);
}

namespace {

/// The gradients of a level, for platforms that read them from memory.
struct LevelGradients {
    OwnedElements<f32> plane[4];
    int pitch = 0;

    [[nodiscard]] VexaStatus allocate(int width, int height)
    {
        if (width > std::numeric_limits<int>::max() / static_cast<int>(sizeof(f32))) return VEXA_MEM_ALLOC_ERR;
        pitch = width * static_cast<int>(sizeof(f32));
        for (OwnedElements<f32>& block : plane)
            if (const VexaStatus failed =
                    allocateElements(block, static_cast<std::size_t>(width) * static_cast<std::size_t>(height)))
                return failed;
        return VEXA_SUCCESS;
    }

    [[nodiscard]] VexaStatus release()
    {
        VexaStatus status = VEXA_SUCCESS;
        for (OwnedElements<f32>& block : plane)
            if (releaseElements(block)) status = VEXA_MEMFREE_ERR;
        return status;
    }
};

/// The memory of a window that is larger could run out, and its time.
constexpr long long largestWindow = 1 << 24;

bool isTooLarge(const VexaSize& window)
{
    return window.width >= 0 && window.height >= 0 && (window.width | 1LL) * (window.height | 1LL) > largestWindow;
}

}  // namespace

VexaStatus _vexaTrackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                              VexaPointValue2D<float, float>* features1, VexaPointValue2D<float, float>* features2,
                              Vexa32s featureCount, Vexa32s iterations, Vexa32f subSampling, VexaSize windowSize,
                              Vexa32f errorThreshold, Vexa32f maxResidue, cudaStream_t internal_stream)
{
    if (isTooLarge(windowSize)) return VEXA_MEM_ALLOC_ERR;
    LevelGradients gradients;
    auto& [img1X, img1Y, img2X, img2Y] = gradients.plane;
    if constexpr (readsGradientImages) {
        if (const VexaStatus failed = gradients.allocate(std::max(width, 1), std::max(height, 1))) return failed;
        _calculateTrackerGradients(image1, image2, std::max(width, 1), widthStep, std::max(height, 1), img1X.get(),
                                   img1Y.get(), img2X.get(), img2Y.get(), gradients.pitch, internal_stream);
    }
    _trackFeatures(image1, image2, width, widthStep, height, img1X.get(), img1Y.get(), img2X.get(), img2Y.get(),
                   gradients.pitch, features1, features2, featureCount, iterations, subSampling, windowSize,
                   errorThreshold, maxResidue, internal_stream);
    return gradients.release();
}

namespace {

/// The sides of an image at a scale, truncated. The scale is at most about 1.
struct LevelSize {
    int width;
    int height;
};

LevelSize levelSize(float scale, int width, int height)
{
    const auto side = [=](int full) {
        const float scaled = scale * static_cast<float>(full);
        return static_cast<int>(std::min(static_cast<double>(scaled), static_cast<double>(full)));
    };
    return {side(width), side(height)};
}

/// Both images at one scale. Their rows have room for one pixel more, and so have their columns: it is read where a
/// level is tracked on as if it had it.
class Level {
public:
    [[nodiscard]] VexaStatus allocate(LevelSize size)
    {
        _size = size;
        for (OwnedElements<u8>& image : _images) {
            void* block = nullptr;
            if (const VexaStatus failed = platform::allocateRows(
                    block, _pitch, static_cast<std::size_t>(size.width) + 1, static_cast<std::size_t>(size.height) + 1))
                return failed;
            image.reset(static_cast<u8*>(block));
        }
        return VEXA_SUCCESS;
    }

    /// Makes image i from a full image. The line on standard output is part of the contract, also for a success.
    [[nodiscard]] VexaStatus draw(int i, const platform::Pixels<u8>& full, platform::Stream stream)
    {
        const platform::Destination<u8> level{_images[i].get(), _size.width, _size.height, pitch()};
        const VexaStatus status = platform::resize<u8, 1>(full, level, platform::Interpolation::linear, stream);
        std::printf("NPP Error: %d \n", static_cast<int>(status));
        return status;
    }

    /// Gives the images a size that may be larger by a pixel, by repeating their edges.
    [[nodiscard]] VexaStatus extend(LevelSize size, platform::Stream stream)
    {
        const auto width = static_cast<std::size_t>(_size.width);
        const auto height = static_cast<std::size_t>(_size.height);
        for (const OwnedElements<u8>& image : _images) {
            u8* const end = image.get() + width;
            u8* const below = image.get() + height * _pitch;
            if (size.width > _size.width)
                if (const VexaStatus failed =
                        platform::copyOnDevice({end, _pitch}, {end - 1, _pitch}, {1, height}, stream))
                    return failed;
            if (size.height > _size.height)
                if (const VexaStatus failed =
                        platform::copyOnDevice({below, _pitch}, {below - _pitch, _pitch}, {width + 1, 1}, stream))
                    return failed;
        }
        _size = {std::min(size.width, _size.width + 1), std::min(size.height, _size.height + 1)};
        return VEXA_SUCCESS;
    }

    u8* image(int i) const { return _images[i].get(); }
    int pitch() const { return static_cast<int>(_pitch); }
    int width() const { return _size.width; }
    int height() const { return _size.height; }

    [[nodiscard]] VexaStatus release()
    {
        const VexaStatus first = releaseElements(_images[0]);
        const VexaStatus second = releaseElements(_images[1]);
        return first ? first : second;
    }

private:
    OwnedElements<u8> _images[2];
    std::size_t _pitch = 0;
    LevelSize _size{0, 0};
};

}  // namespace

VexaStatus vexa_trackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                              VexaPointValue2D<float, float>* features1, VexaPointValue2D<float, float>*& features2,
                              Vexa32s featureCount, Vexa32s pyramidLevels, VexaSize windowSize, Vexa32f maxResidue,
                              Vexa32s iterations, Vexa32f errorThreshold, Vexa32f subSampling,
                              cudaStream_t internal_stream)
{
    if (!(subSampling > 0.0F && subSampling < 1.0F)) return VEXA_INVALID_ARG_ERROR;
    std::vector<Level> pyramid;
    float scale = 1.0F;
    for (int l = 0; l <= pyramidLevels; ++l) {
        Level& level = pyramid.emplace_back();
        if (const VexaStatus failed = level.allocate(levelSize(scale, width, height))) return failed;
        if (level.draw(0, {image1, width, height, widthStep}, internal_stream)) return VEXA_INTERNAL_CALL_ERROR;
        if (level.draw(1, {image2, width, height, widthStep}, internal_stream)) return VEXA_INTERNAL_CALL_ERROR;
        scale *= subSampling;
    }

    const auto count = static_cast<std::size_t>(std::max(featureCount, 0));
    const std::size_t bytes = count * sizeof(Feature);
    OwnedElements<Feature> list1;
    OwnedElements<Feature> list2;
    if (const VexaStatus failed = allocateElements(list1, count)) return failed;
    if (const VexaStatus failed = allocateElements(list2, count)) return failed;
    if (const VexaStatus failed = platform::copyToDevice(list1.get(), features1, bytes, internal_stream)) return failed;
    if (const VexaStatus failed = platform::copyToDevice(list2.get(), features1, bytes, internal_stream)) return failed;

    scale = std::pow(subSampling, static_cast<float>(pyramidLevels));
    for (auto level = pyramid.rbegin(); level != pyramid.rend(); ++level) {
        if (const VexaStatus failed = level->extend(levelSize(scale, width, height), internal_stream)) return failed;
        if (_vexaTrackFeatures(level->image(0), level->image(1), level->width(), level->pitch(), level->height(),
                               list1.get(), list2.get(), featureCount, iterations, scale, windowSize, errorThreshold,
                               maxResidue, internal_stream))
            return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
        scale = scale / subSampling;
    }

    auto* const tracked = new (std::nothrow) Feature[count];
    if (tracked == nullptr) return VEXA_MEM_ALLOC_ERR;
    features2 = tracked;
    if (const VexaStatus failed = platform::copyToHost(tracked, list2.get(), bytes, internal_stream)) return failed;
    VexaStatus status = VEXA_SUCCESS;
    for (Level& level : pyramid)
        if (level.release()) status = VEXA_MEMFREE_ERR;
    if (releaseElements(list1)) status = VEXA_MEMFREE_ERR;
    if (releaseElements(list2)) status = VEXA_MEMFREE_ERR;
    return status;
}

namespace vexa::computerVision {

VexaStatus trackFeatures(const VexaImage& previous, const VexaImage& next,
                         VexaPointValue2D<float, float>* inputFeatures,
                         VexaPointValue2D<float, float>*& trackedFeatures, const Vexa32s featureCount,
                         const VexaTrackingCriteria criteria, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(previous, next)) return failed;
    if (previous.depth() != 8) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (previous.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = match(next, previous, {same::width, same::height, same::depth, same::channels}))
        return failed;
    // Both are addressed by the pitch of the first.
    if (rowsInside(next, previous) < previous.height()) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return vexa_trackFeatures(previous.ptr<u8>(), next.ptr<u8>(), previous.width(), previous.pitch(), previous.height(),
                              inputFeatures, trackedFeatures, featureCount, criteria.pyramidLevels, criteria.windowSize,
                              criteria.maxResidue, criteria.iterations, criteria.errorThreshold, criteria.subSampling,
                              handle(stream));
}

}  // namespace vexa::computerVision
