/// @file
/// Dense Lucas-Kanade flow from coarse to fine, by two drivers: one halves sizes by shifts and passes guesses on before
/// a level, the other holds its levels in pyramids and passes them on after. Window sizes are radii here: that is
/// meant.

#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

#include "arguments.h"
#include "checks.h"
#include "flow.h"
#include "kernels.h"
#include "temporaries.h"
#include "vexaComputerVision.h"
#include "vexaPyramid.h"

using namespace vexa;

namespace {

/// The flow of every pixel of the bigger level from that of the smaller one, with positions in it clipped.
VEXA_DEVICE void passOn(Plane<float> bigX, Plane<float> bigY, FetchClamped<float> smallX, FetchClamped<float> smallY,
                        int width, int height, float ratio)
{
    const float inverse = reciprocal(ratio);
    forEachPixel(width, height, [=](int x, int y) {
        const int fromX = static_cast<int>(static_cast<float>(x) * inverse);
        const int fromY = static_cast<int>(static_cast<float>(y) * inverse);
        bigX.row(y)[x] = ratio * smallX(fromX, fromY);
        bigY.row(y)[x] = ratio * smallY(fromX, fromY);
    });
}

}  // namespace

VEXA_KERNEL passGuessKernel(float* bigX, float* bigY, const float* smallX, const float* smallY, int bigWidth,
                            int bigHeight, int smallWidth, int smallHeight, int bigPitch, int smallPitch)
{
    passOn({bigX, bigPitch}, {bigY, bigPitch}, {smallX, smallWidth, smallHeight, smallPitch},
           {smallY, smallWidth, smallHeight, smallPitch}, bigWidth, bigHeight, 2.0F);
}

/// One ratio serves both axes: that is meant.
VEXA_KERNEL kernel_pass_guess(float* bigX, float* bigY, const float* smallX, const float* smallY, int bigWidth,
                              int bigHeight, int smallWidth, int smallHeight, int bigPitch, int smallPitch, float ratio)
{
    passOn({bigX, bigPitch}, {bigY, bigPitch}, {smallX, smallWidth, smallHeight, smallPitch},
           {smallY, smallWidth, smallHeight, smallPitch}, bigWidth, bigHeight, ratio);
}

/// One level. Ix and Iy are the central differences of I, whole numbers; J is sampled as a texture, linearly or at the
/// nearest texel.
VEXA_KERNEL calcOFKernel(const Vexa8u* I, const Vexa8u* J, const float* Ix, const float* Iy, float* Gx, float* Gy,
                         int width, int height, int pitchI, int pitchJ, int gradientPitch, int flowPitch, int wx,
                         int wy, int iterations, float errorThreshold, bool linear)
{
    refineFlow({{Ix, gradientPitch},
                {Iy, gradientPitch},
                {I, width, height, pitchI},
                {J, width, height, pitchJ},
                {Gx, flowPitch},
                {Gy, flowPitch},
                wx,
                wy,
                iterations,
                errorThreshold,
                linear});
}

namespace {

/// How a level is searched.
struct Search {
    VexaSize radii;
    int iterations;
    float errorThreshold;
    bool linear;
};

/// The images of a level, 8UC1, and its flow. Pitches are in bytes.
struct Level {
    int width = 0;
    int height = 0;
    u8* from = nullptr;
    u8* to = nullptr;
    int fromPitch = 0;
    int toPitch = 0;
    f32* flowX = nullptr;
    f32* flowY = nullptr;
    int flowPitch = 0;
};

void launchSearch(const Level& level, const Search& search, const f32* gradientX, const f32* gradientY,
                  int gradientPitch, platform::Stream stream)
{
    // A window without pixels is one, however many it lacks.
    const int radiusX = std::max(search.radii.width, -1);
    const int radiusY = std::max(search.radii.height, -1);
    launch(calcOFKernel, Extent{level.width, level.height}, stream, level.from, level.to, gradientX, gradientY,
           level.flowX, level.flowY, level.width, level.height, level.fromPitch, level.toPitch,
           elements<f32>(gradientPitch), elements<f32>(level.flowPitch), radiusX, radiusY, search.iterations,
           search.errorThreshold, search.linear);
}

/// Bytes of a row whose pitch an int holds.
constexpr std::size_t longestRow = std::numeric_limits<int>::max() - 4095;

VexaStatus refine(const Level& level, const Search& search, platform::Stream stream)
{
    const platform::Extent2D extent{static_cast<std::size_t>(level.width) * sizeof(f32),
                                    static_cast<std::size_t>(level.height)};
    if (extent.rowBytes > longestRow) return VEXA_MEM_ALLOC_ERR;
    void* Ix = nullptr;
    void* Iy = nullptr;
    std::size_t pitch = 0;
    if (platform::allocateRows(Ix, pitch, extent.rowBytes, extent.rows)) return VEXA_MEM_ALLOC_ERR;
    if (platform::allocateRows(Iy, pitch, extent.rowBytes, extent.rows)) return VEXA_MEM_ALLOC_ERR;
    if (platform::setBytes({Ix, pitch}, 0, extent, stream)) return VEXA_MEMSET_ERR;
    if (platform::setBytes({Iy, pitch}, 0, extent, stream)) return VEXA_MEMSET_ERR;
    auto* const gradientX = static_cast<f32*>(Ix);
    auto* const gradientY = static_cast<f32*>(Iy);
    if (vexa_grad_8u32f(level.from, gradientX, gradientY, level.width, level.height, level.fromPitch,
                        static_cast<int>(pitch), 1, VEXA_GRADIENT_CENTRAL_DIFFERENCE, stream))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    // What cannot be read is refused as a texture that cannot be bound.
    if (level.from == nullptr || level.to == nullptr) return VEXA_TEXTURE_BIND_ERROR;
    launchSearch(level, search, gradientX, gradientY, static_cast<int>(pitch), stream);
    return releaseAll({Ix, Iy});
}

}  // namespace

/// The pitch of the flow is `imgWidthStepF`. Waits for the device.
/// @return VEXA_MEM_ALLOC_ERR, VEXA_MEMSET_ERR, VEXA_INTERNAL_FUNCTION_CALL_ERROR, VEXA_TEXTURE_BIND_ERROR for null
///         images, VEXA_MEMFREE_ERR
VEXA_API VexaStatus _calcOpticalFlowLK(Vexa8u* prevImg, Vexa8u* nextImg, Vexa32u imgWidth, Vexa32u imgWidthStep,
                                       Vexa32u imgWidthStepF, Vexa32u imgHeight, Vexa32f* Gx, Vexa32f* Gy,
                                       VexaSize windowSize, Vexa32u iterations, Vexa32f errorThreshold,
                                       cudaStream_t internal_stream)
{
    const auto whole = [](Vexa32u size) { return static_cast<int>(size); };
    return refine({whole(imgWidth), whole(imgHeight), prevImg, nextImg, whole(imgWidthStep), whole(imgWidthStep), Gx,
                   Gy, whole(imgWidthStepF)},
                  {windowSize, whole(iterations), errorThreshold, true}, internal_stream);
}

/// Takes the nearest texel, and looks at no status.
VEXA_API VexaStatus _calcOpticalFlowLK2(Vexa8u* prevImg, Vexa8u* nextImg, int width, int height, int pitch, Vexa32f* Gx,
                                        Vexa32f* Gy, int flow_pitch, VexaSize windowSize, int iterations,
                                        float errorThreshold, cudaStream_t stream)
{
    const VexaImage gradientX(width, height, VEXA_32FC1);
    const VexaImage gradientY(width, height, VEXA_32FC1);
    (void)vexa_grad_8u32f(prevImg, gradientX.ptr<f32>(), gradientY.ptr<f32>(), width, height, pitch, gradientX.pitch(),
                          1, VEXA_GRADIENT_CENTRAL_DIFFERENCE, stream);
    launchSearch({width, height, prevImg, nextImg, pitch, pitch, Gx, Gy, flow_pitch},
                 {windowSize, iterations, errorThreshold, false}, gradientX.ptr<f32>(), gradientY.ptr<f32>(),
                 gradientX.pitch(), stream);
    return VEXA_SUCCESS;
}

/// Twice the flow of the smaller level, at half the position. Pitches are in bytes.
VEXA_API VexaStatus _passGuess(float* bigX, float* bigY, float* smallX, float* smallY, const VexaSize& bigSize,
                               const VexaSize& smallSize, const int bigPitch, const int smallPitch, cudaStream_t stream)
{
    if (smallSize.width < 1 || smallSize.height < 1) return VEXA_SUCCESS;
    launch(passGuessKernel, Extent{bigSize.width, bigSize.height}, stream, bigX, bigY, smallX, smallY, bigSize.width,
           bigSize.height, smallSize.width, smallSize.height, elements<f32>(bigPitch), elements<f32>(smallPitch));
    return VEXA_SUCCESS;
}

/// As many times the flow of the smaller level as the bigger one is wider.
VEXA_API VexaStatus _passGuess2(float* bigX, float* bigY, float* smallX, float* smallY, const VexaSize& bigSize,
                                const VexaSize& smallSize, const int bigPitch, const int smallPitch,
                                cudaStream_t stream)
{
    if (smallSize.width < 1 || smallSize.height < 1) return VEXA_SUCCESS;
    const float ratio = static_cast<float>(bigSize.width) / static_cast<float>(smallSize.width);
    launch(kernel_pass_guess, Extent{bigSize.width, bigSize.height}, stream, bigX, bigY, smallX, smallY, bigSize.width,
           bigSize.height, smallSize.width, smallSize.height, elements<f32>(bigPitch), elements<f32>(smallPitch),
           ratio);
    return VEXA_SUCCESS;
}

namespace {

/// The coarsest level that is asked for and has pixels.
int coarsestLevel(int width, int height, int pyramidLevels)
{
    int level = 0;
    while (level < pyramidLevels && std::min(width, height) >> (level + 1) > 0) ++level;
    return level;
}

/// Host memory of the caller, pinned while this lives.
class Pinned {
public:
    Pinned(void* memory, std::size_t bytes) : _memory(memory), _status(platform::pin(memory, bytes)) {}
    Pinned(const Pinned&) = delete;
    Pinned& operator=(const Pinned&) = delete;
    ~Pinned()
    {
        if (!_status) platform::unpin(_memory);
    }

    VexaStatus status() const { return _status; }

private:
    void* _memory;
    VexaStatus _status;
};

VexaStatus copyFlow(const Level& level, f32* dx, f32* dy, platform::Stream stream)
{
    const std::size_t rowBytes = static_cast<std::size_t>(level.width) * sizeof(f32);
    const platform::Extent2D extent{rowBytes, static_cast<std::size_t>(level.height)};
    const auto pitch = static_cast<std::size_t>(level.flowPitch);
    if (const VexaStatus failed = platform::copyToHost({dx, rowBytes}, {level.flowX, pitch}, extent, stream))
        return failed;
    return platform::copyToHost({dy, rowBytes}, {level.flowY, pitch}, extent, stream);
}

/// The flow of the finest level to the caller, who may read it at once.
VexaStatus deliver(const Level& level, f32* dx, f32* dy, platform::Stream stream)
{
    const std::size_t bytes =
        static_cast<std::size_t>(level.width) * static_cast<std::size_t>(level.height) * sizeof(f32);
    const Pinned pinnedX(dx, bytes);
    if (pinnedX.status()) return pinnedX.status();
    const Pinned pinnedY(dy, bytes);
    if (pinnedY.status()) return pinnedY.status();
    const VexaStatus status = copyFlow(level, dx, dy, stream);
    (void)platform::synchronize(stream);
    return status;
}

// ---- the first driver ----

/// An 8UC1 image on the device.
platform::Pixels<u8> pixelsOf(const VexaImage& image)
{
    return {image.ptr<u8>(), image.width(), image.height(), image.pitch()};
}

platform::Extent2D bytesOfLevel(const Level& level, std::size_t elementSize)
{
    return {static_cast<std::size_t>(level.width) * elementSize, static_cast<std::size_t>(level.height)};
}

template <typename T>
void allocateLevel(T*& first, int& pitch, const Level& level)
{
    const platform::Extent2D extent = bytesOfLevel(level, sizeof(T));
    if (extent.rowBytes > longestRow) return;
    void* block = nullptr;
    std::size_t bytes = 0;
    (void)platform::allocateRows(block, bytes, extent.rowBytes, extent.rows);
    first = static_cast<T*>(block);
    if (block != nullptr) pitch = static_cast<int>(bytes);
}

void clear(void* first, int pitch, platform::Extent2D extent, platform::Stream stream)
{
    (void)platform::setBytes({first, static_cast<std::size_t>(pitch)}, 0, extent, stream);
}

/// Level 0 is the image, and each other the whole of it, resized. Black if that fails, rather than undefined.
void fill(u8* first, int pitch, const Level& level, const platform::Pixels<u8>& image, platform::Stream stream)
{
    const platform::Extent2D extent = bytesOfLevel(level, sizeof(u8));
    const bool isWhole = level.width == image.width && level.height == image.height;
    const VexaStatus failed =
        isWhole ? platform::copyOnDevice({first, static_cast<std::size_t>(pitch)},
                                         {image.first, static_cast<std::size_t>(image.pitch)}, extent, stream)
                : platform::resize<u8, 1>(image, {first, level.width, level.height, pitch},
                                          platform::Interpolation::linear, stream);
    if (failed) clear(first, pitch, extent, stream);
}

Level makeLevel(const platform::Pixels<u8>& previous, const platform::Pixels<u8>& next, int index,
                platform::Stream stream)
{
    Level level;
    level.width = previous.width >> index;
    level.height = previous.height >> index;
    allocateLevel(level.from, level.fromPitch, level);
    allocateLevel(level.to, level.toPitch, level);
    allocateLevel(level.flowX, level.flowPitch, level);
    allocateLevel(level.flowY, level.flowPitch, level);
    clear(level.flowX, level.flowPitch, bytesOfLevel(level, sizeof(f32)), stream);
    clear(level.flowY, level.flowPitch, bytesOfLevel(level, sizeof(f32)), stream);
    fill(level.from, level.fromPitch, level, previous, stream);
    fill(level.to, level.toPitch, level, next, stream);
    return level;
}

void passGuess(const Level& small, const Level& big, platform::Stream stream)
{
    (void)_passGuess(big.flowX, big.flowY, small.flowX, small.flowY, {big.width, big.height},
                     {small.width, small.height}, big.flowPitch, small.flowPitch, stream);
}

VexaStatus flowByShifts(const platform::Pixels<u8>& previous, const platform::Pixels<u8>& next, f32* dx, f32* dy,
                        int pyramidLevels, const Search& search, platform::Stream stream)
{
    if (pyramidLevels < 0) return VEXA_INVALID_ARG_ERROR;
    std::vector<Level> levels;
    for (int i = 0; i <= coarsestLevel(previous.width, previous.height, pyramidLevels); ++i)
        levels.push_back(makeLevel(previous, next, i, stream));
    for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
        if (level != levels.rbegin()) passGuess(*std::prev(level), *level, stream);
        if (refine(*level, search, stream)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    }
    if (const VexaStatus failed = deliver(levels.front(), dx, dy, stream)) return failed;
    for (const Level& level : levels) (void)releaseAll({level.from, level.to, level.flowX, level.flowY});
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_opticalFlowPyramidLK(Vexa8u* prevImg, Vexa8u* nextImg, Vexa32u imgWidth, Vexa32u imgWidthStep,
                                     Vexa32u imgHeight, Vexa32f* dx, Vexa32f* dy, VexaSize windowSize,
                                     Vexa32s pyramidLevels, Vexa32f /*subsampling*/, Vexa32s maxIterations,
                                     Vexa32f errorThreshold, cudaStream_t internal_stream)
{
    const auto whole = [](Vexa32u size) { return static_cast<int>(size); };
    return flowByShifts({prevImg, whole(imgWidth), whole(imgHeight), whole(imgWidthStep)},
                        {nextImg, whole(imgWidth), whole(imgHeight), whole(imgWidthStep)}, dx, dy, pyramidLevels,
                        {windowSize, maxIterations, errorThreshold, true}, internal_stream);
}

// ---- the second driver ----

VexaStatus vexa_opticalFlowPyramidLK2(const VexaImage& prev, const VexaImage& next, float* dx, float* dy,
                                      VexaSize windowSize, int pyramidLevels, float /*subsampling*/, int maxIterations,
                                      float errorThreshold, cudaStream_t stream)
{
    if (const VexaStatus failed = initialized(prev, next)) return failed;
    if (const VexaStatus failed = match(next, prev, {same::width, same::height, same::type})) return failed;
    if (prev.type() != VEXA_8UC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    if (pyramidLevels < 0) return VEXA_INVALID_ARG_ERROR;
    const int coarsest = coarsestLevel(prev.width(), prev.height(), pyramidLevels);
    constexpr float scale = 0.5F;
    const VexaSize filterSize(5, 5);
    constexpr float sigma = 0.5F;
    VexaPyramid from;
    VexaPyramid to;
    (void)from.createGaussian(prev, coarsest + 1, scale, filterSize, sigma, VEXA_INTER_LINEAR);
    (void)to.createGaussian(next, coarsest + 1, scale, filterSize, sigma, VEXA_INTER_LINEAR);
    VexaPyramid flowX(prev.size(), VEXA_32FC1, coarsest + 1, scale);
    VexaPyramid flowY(prev.size(), VEXA_32FC1, coarsest + 1, scale);
    for (int i = 0; i <= coarsest; ++i) {
        (void)flowX[i].set(0.0);
        (void)flowY[i].set(0.0);
    }
    // All this is on the default stream.
    (void)platform::synchronize(nullptr);
    for (int i = coarsest; i >= 0; --i) {
        const VexaImage& gx = flowX[i];
        const VexaImage& gy = flowY[i];
        (void)_calcOpticalFlowLK2(from[i].ptr<u8>(), to[i].ptr<u8>(), from[i].width(), from[i].height(),
                                  from[i].pitch(), gx.ptr<f32>(), gy.ptr<f32>(), gx.pitch(), windowSize, maxIterations,
                                  errorThreshold, stream);
        if (i > 0)
            (void)_passGuess2(flowX[i - 1].ptr<f32>(), flowY[i - 1].ptr<f32>(), gx.ptr<f32>(), gy.ptr<f32>(),
                              flowX[i - 1].size(), gx.size(), flowX[i - 1].pitch(), gx.pitch(), stream);
    }
    const VexaImage& x = flowX[0];
    return deliver({prev.width(), prev.height(), nullptr, nullptr, 0, 0, x.ptr<f32>(), flowY[0].ptr<f32>(), x.pitch()},
                   dx, dy, stream);
}

namespace vexa::computerVision {

VexaStatus opticalFlowPyrLKDense(const VexaImage& previous, const VexaImage& next, Vexa32f* flowX, Vexa32f* flowY,
                                 const VexaTrackingCriteria criteria, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(previous, next)) return failed;
    if (const VexaStatus failed = match(next, previous, {same::width, same::height, same::type})) return failed;
    if (previous.type() != VEXA_8UC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    // Not the worker on raw pointers: each image is read by its own pitch.
    return flowByShifts(pixelsOf(previous), pixelsOf(next), flowX, flowY, criteria.pyramidLevels,
                        {criteria.windowSize, criteria.iterations, criteria.errorThreshold, true}, handle(stream));
}

}  // namespace vexa::computerVision
