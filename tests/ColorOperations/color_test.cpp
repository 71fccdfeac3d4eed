/// @file
/// Conversions between colour spaces: what all have in common as one table, values against formulas in double.

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

using Call = VexaStatus (*)(const VexaImage& src, VexaImage& dst);

/// Which image tells the order of the colours.
enum class Side { src, dst, none };

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badType = VEXA_TYPE_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

/// One function: what it serves, and its statuses for a destination that differs from one that fits.
struct Function {
    const char* name;
    Call call;
    Side side;
    bool inPlace;
    bool ownPitches;
    std::vector<int> channels;
    int created;  ///< channels of an empty destination, which has no sign then; 0 for the type of the source
    std::vector<VexaType> served;
    VexaStatus otherwise;
    VexaStatus otherChannels;
    VexaStatus otherDepth;
    VexaStatus otherSign;
};

VexaStatus grayByWeights(const VexaImage& src, VexaImage& dst)
{
    return co::rgb2gray(src, dst, VexaScalar(1.5, -0.75, 0.5));
}

template <VexaStatus (*function)(const VexaImage&, VexaImage&, const VexaStream&)>
VexaStatus plain(const VexaImage& src, VexaImage& dst)
{
    return function(src, dst, VexaStream(false));
}

const std::vector<VexaType> color8And32 = {VEXA_8UC3, VEXA_32FC3};
const std::vector<VexaType> colors = {VEXA_8UC3, VEXA_16UC3, VEXA_32FC3};
const std::vector<VexaType> colorsAndAlpha = {VEXA_8UC3, VEXA_8UC4, VEXA_16UC3, VEXA_16UC4, VEXA_32FC3};
const std::vector<VexaType> depths8And16 = {VEXA_8UC3, VEXA_8SC3, VEXA_16UC3, VEXA_16SC3};
const std::vector<VexaType> grays = {VEXA_8UC1, VEXA_16UC1, VEXA_32FC1};

const Function functions[] = {
    // clang-format off
    {"rgb2gray", plain<co::rgb2gray>, Side::src, false, true, {3, 4}, 1, colorsAndAlpha, mode,
     badChannels, mode, success},
    {"by weights", grayByWeights, Side::src, false, true, {3}, 1, colors, mode, badChannels, mode, success},
    {"gray2rgb", plain<co::gray2rgb>, Side::none, false, true, {1}, 3, grays, badType, badType, mode, badType},
    {"rgb2yuv", plain<co::rgb2yuv>, Side::src, true, false, {3}, 0, depths8And16, badDepth, mode, mode, success},
    {"yuv2rgb", plain<co::yuv2rgb>, Side::dst, true, false, {3}, 3, depths8And16, badDepth, mode, mode, success},
    {"rgb2hsv", plain<co::rgb2hsv>, Side::src, true, false, {3}, 0, color8And32, badDepth, mode, badDepth, badDepth},
    {"hsv2rgb", plain<co::hsv2rgb>, Side::none, true, false, {3}, 0, color8And32, badDepth, mode, badDepth, badDepth},
    {"rgb2Lab", plain<co::rgb2Lab>, Side::src, false, false, {3}, 0, color8And32, badDepth, mode, mode, success},
    {"Lab2rgb", plain<co::Lab2rgb>, Side::dst, true, false, {3}, 0, color8And32, badDepth, mode, mode, success},
    {"rgb2ycbcr", plain<co::rgb2ycbcr>, Side::src, true, false, {3}, 0, colors, badType, mode, mode, success},
    {"ycbcr2rgb", plain<co::ycbcr2rgb>, Side::dst, true, false, {3}, 0, colors, badType, mode, mode, success},
    {"rgb2yuv422", plain<co::rgb2yuv422>, Side::none, true, true, {3}, 2, {VEXA_8UC3}, badType, success, mode, success},
    // clang-format on
};

template <typename Value>
bool contains(const std::vector<Value>& values, Value value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

VexaType createdType(const Function& function, const VexaImage& src)
{
    if (function.created == 2) return VEXA_8UC2;
    return function.created == 0 ? src.type() : getType(src.depth(), function.created, false);
}

/// Two functions mark their result as RGB, one of them even where it refuses a type.
VexaChannelSeq sequenceAfter(const Function& function, VexaStatus status, VexaChannelSeq before)
{
    const bool marks =
        function.call == plain<co::rgb2ycbcr> || (function.call == plain<co::rgb2Lab> && status == success);
    return marks ? VEXA_CHANNEL_SEQ_RGB : before;
}

VexaImage noiseOf(VexaSize size, VexaType type)
{
    VexaImage image(size, type);
    if (image.depth() == 8) upload(image, download<u8>(noise<u8>(size, image.channels(), 7)));
    if (image.depth() == 16) upload(image, download<u16>(noise<u16>(size, image.channels(), 7)));
    if (image.depth() == 32) upload(image, download<f32>(noise<f32>(size, image.channels(), 7)));
    return image;
}

std::vector<double> elementsOf(const VexaImage& image)
{
    const auto doubles = [](const auto& elements) { return std::vector<double>(elements.begin(), elements.end()); };
    if (image.depth() == 8) return doubles(download<u8>(image));
    return image.depth() == 16 ? doubles(download<u16>(image)) : doubles(download<f32>(image));
}

/// With the first and third element of every pixel in each other's place.
VexaImage reversed(const VexaImage& image)
{
    const int bytes = image.depth() / 8;
    const int rowBytes = image.width() * image.channels() * bytes;
    std::vector<u8> rows(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(image.height()));
    EXPECT_EQ(image.download(rows.data(), rowBytes), success);
    for (auto pixel = rows.begin(); pixel != rows.end(); pixel += bytes * image.channels())
        std::swap_ranges(pixel, pixel + bytes, pixel + 2 * bytes);
    VexaImage result(image.size(), image.type());
    EXPECT_EQ(result.upload(rows.data(), rowBytes), success);
    return result;
}

TEST(Color, CreatesAndServesExactlyItsTypes)
{
    for (const Function& function : functions)
        for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
            SCOPED_TRACE(testing::Message() << function.name << " of type " << t);
            const VexaImage src(5, 3, static_cast<VexaType>(t));
            VexaImage dst;
            const VexaStatus status = function.call(src, dst);
            if (!contains(function.channels, src.channels())) {
                EXPECT_EQ(status, badChannels);
                EXPECT_FALSE(dst.isInitialized());
                continue;
            }
            EXPECT_EQ(status, contains(function.served, src.type()) ? success : function.otherwise);
            const VexaImage model(5, 3, createdType(function, src));
            EXPECT_EQ(dst.type(), model.type());
            EXPECT_EQ(dst.width(), 5);
            EXPECT_EQ(dst.height(), 3);
            EXPECT_EQ(dst.channelSeq(), sequenceAfter(function, status, model.channelSeq()));
        }
}

TEST(Color, ChecksInOrder)
{
    for (const Function& function : functions) {
        SCOPED_TRACE(function.name);
        const VexaImage src(5, 3, function.served[0]);
        const VexaImage unserved(5, 3, 64, function.channels[0]);
        VexaImage twoChannels(5, 3, VEXA_8UC2);
        VexaImage empty;
        EXPECT_EQ(function.call(empty, empty), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_FALSE(empty.isInitialized());
        EXPECT_EQ(function.call(twoChannels, twoChannels),
                  function.inPlace ? badChannels : VEXA_INPLACE_OP_NOT_SUPPORTED);

        const int fitting = function.created == 0 ? 3 : function.created;
        const int other = fitting == 2 ? 3 : 2;
        const struct {
            VexaImage dst;
            VexaStatus status;
        } misfits[] = {
            {VexaImage(4, 3, 8, fitting), mode},
            {VexaImage(5, 4, 8, fitting), mode},
            {VexaImage(4, 3, 8, other), function.created == 1 ? badChannels : mode},
            {VexaImage(5, 3, 8, other), function.otherChannels},
            {VexaImage(5, 3, 16, fitting), function.otherDepth},
            {VexaImage(5, 3, -8, fitting), function.otherSign},
        };
        for (const auto& misfit : misfits) {
            VexaImage dst(misfit.dst);
            fillBuffer(dst, 0x5A);
            dst.setChannelSequence(VEXA_CHANNEL_SEQ_NONE);
            const std::vector<double> untouched = elementsOf(dst);
            EXPECT_EQ(function.call(empty, dst), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_EQ(function.call(twoChannels, dst), badChannels);
            if (dst.width() == 4) {
                EXPECT_EQ(function.call(unserved, dst), misfit.status) << "before the type is looked at";
            }
            EXPECT_EQ(function.call(src, dst), misfit.status) << "into " << dst.type();
            if (misfit.status == success) continue;
            EXPECT_EQ(dst.channelSeq(), VEXA_CHANNEL_SEQ_NONE);
            EXPECT_EQ(elementsOf(dst), untouched);
        }
    }
}

/// Other sequences leave the destination as it was, which is no failure. BGR gives what RGB gives for the reversed
/// image (gray by another order of rounding), and an image in place what two give.
TEST(Color, SequencesAndInPlace)
{
    for (const Function& function : functions)
        for (const VexaType type : function.served)
            for (const VexaSize& size : edgeSizes()) {
                const VexaImage colors = noiseOf(size, type);
                const bool hasAlpha = colors.channels() == 4;
                const VexaChannelSeq forward = hasAlpha ? VEXA_CHANNEL_SEQ_RGBA : VEXA_CHANNEL_SEQ_RGB;
                const VexaChannelSeq backward = hasAlpha ? VEXA_CHANNEL_SEQ_BGRA : VEXA_CHANNEL_SEQ_BGR;
                VexaImage rgb(colors);
                rgb.setChannelSequence(forward);
                VexaImage reference(size, createdType(function, colors));
                reference.setChannelSequence(forward);
                fillBuffer(reference, 0x5A);  // another byte than below, so that a pixel left out shows
                ASSERT_EQ(function.call(rgb, reference), success);

                for (int s = VEXA_CHANNEL_SEQ_RGB; s <= VEXA_CHANNEL_SEQ_NONE; ++s) {
                    SCOPED_TRACE(testing::Message() << function.name << " of type " << type << ", sequence " << s
                                                    << ", width " << size.width);
                    const bool isServed = function.side == Side::none || s == forward || s == backward;
                    VexaImage src = s == backward && function.side == Side::src ? reversed(colors) : VexaImage(colors);
                    VexaImage dst(size, reference.type());
                    fillBuffer(dst, 0xA5);
                    (function.side == Side::dst ? dst : src).setChannelSequence(static_cast<VexaChannelSeq>(s));
                    const VexaChannelSeq before = dst.channelSeq();
                    std::vector<double> expected = elementsOf(dst);
                    if (isServed)
                        expected =
                            elementsOf(s == backward && function.side == Side::dst ? reversed(reference) : reference);
                    ASSERT_EQ(function.call(src, dst), success);
                    const double rounding = dst.depth() == 32 ? 1e-4 : 1;
                    const std::vector<double> result = elementsOf(dst);
                    for (std::size_t i = 0; i < result.size(); ++i)
                        ASSERT_NEAR(result[i], expected[i], isServed && function.created == 1 ? rounding : 0);
                    expectGaps(dst, 0xA5);
                    EXPECT_EQ(dst.channelSeq(), sequenceAfter(function, success, before));

                    if (!function.inPlace || src.type() != dst.type()) continue;
                    src.setChannelSequence(static_cast<VexaChannelSeq>(s));
                    const std::vector<double> untouched = elementsOf(src);
                    ASSERT_EQ(function.call(src, src), success);
                    EXPECT_EQ(elementsOf(src), isServed ? result : untouched) << "in place";
                }
            }
}

/// Most functions address both images by the source's pitch; a destination of another pitch is the caller's affair,
/// but nothing outside its buffer is touched.
TEST(Color, OtherPitches)
{
    for (const Function& function : functions)
        for (const VexaType type : function.served) {
            SCOPED_TRACE(testing::Message() << function.name << " of type " << type);
            const VexaSize size(50, 20);
            VexaImage src = noiseOf(size, type);
            VexaImage expected(size, createdType(function, src));
            ASSERT_EQ(function.call(src, expected), success);
            const int rowBytes = 50 * expected.channels() * expected.depth() / 8;
            VexaImage wide(50, 20, std::max(src.pitch(), rowBytes) + 64, expected.depth(), expected.channels());
            ASSERT_EQ(function.call(src, wide), success);
            if (function.ownPitches) {
                EXPECT_EQ(elementsOf(wide), elementsOf(expected));
            }
            const VexaImage overlapping(50, 20, 8, src.isSigned() ? -src.depth() : src.depth(), src.channels());
            for (const int pitch : {rowBytes, 8}) {
                VexaImage tight(50, 20, pitch, expected.depth(), expected.channels());
                EXPECT_EQ(function.call(src, tight), success);
                EXPECT_EQ(function.call(overlapping, tight), success);
                EXPECT_EQ(function.call(overlapping, wide), success);
            }
        }
    VexaImage halfRows(50, 20, 50, 8, 1);
    EXPECT_EQ(co::rgb2yuv422(constant<u8>({50, 20}, 3, 9), halfRows), success);
}

/// What a value becomes as an element: integers are clamped and truncated.
double stored(double value, int depth)
{
    return depth == 32 ? value : std::floor(std::clamp(value, 0.0, depth == 8 ? 255.0 : 65535.0));
}

/// Pixels of noise, RGB, against a formula; `error` is that of a value before it is stored.
void expectFormula(Call call, VexaType from, VexaType to, double error,
                   const std::function<void(const double* in, double* out)>& formula)
{
    VexaImage src = noiseOf({67, 50}, from);
    VexaImage dst({67, 50}, to);
    src.setChannelSequence(src.channels() == 4 ? VEXA_CHANNEL_SEQ_RGBA : VEXA_CHANNEL_SEQ_RGB);
    dst.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    ASSERT_EQ(call(src, dst), success);
    const std::vector<double> in = elementsOf(src);
    const std::vector<double> result = elementsOf(dst);
    const auto channels = static_cast<std::size_t>(dst.channels());
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double* const pixel = &in[i / channels * static_cast<std::size_t>(src.channels())];
        double out[4];
        formula(pixel, out);
        const double exact = out[i % channels];
        ASSERT_TRUE(stored(exact - error, dst.depth()) <= result[i] && result[i] <= stored(exact + error, dst.depth()))
            << "element " << i << " of a pixel that starts with " << *pixel << " is " << result[i] << " and not "
            << exact;
    }
}

/// Three factors and a constant for each element of the result.
using LinearMap = std::array<std::array<double, 4>, 4>;

const LinearMap luma = {{{0.299, 0.587, 0.114, 0}}};
const LinearMap weights = {{{1.5, -0.75, 0.5, 0}}};
const LinearMap replicated = {{{1}, {1}, {1}, {0}}};
// Sums of 256ths, which truncation shifts.
const LinearMap yuvOf8 = {{{66 / 256.0, 129 / 256.0, 25 / 256.0, 16.5},
                           {-38 / 256.0, -74 / 256.0, 112 / 256.0, 128.5},
                           {112 / 256.0, -94 / 256.0, -18 / 256.0, 128.5}}};
const LinearMap colorOf8 = {{{298 / 256.0, 0, 409 / 256.0, (128 - 298 * 16 - 409 * 128) / 256.0},
                             {298 / 256.0, -100 / 256.0, -208 / 256.0, (128 - 298 * 16 + 308 * 128) / 256.0},
                             {298 / 256.0, 516 / 256.0, 0, (128 - 298 * 16 - 516 * 128) / 256.0}}};
const LinearMap yuvOf16 = {{{0.299, 0.587, 0.114}, {-0.168736, -0.331264, 0.5}, {0.5, -0.418688, -0.081312}}};
const LinearMap colorOf16 = {
    {{1, 0, 1.4075, -1.4075 * 128}, {1, -0.3455, -0.7169, 1.0624 * 128}, {1, 1.779, 0, -1.779 * 128}}};

/// ITU-R BT.601 for colours from 0 to `white`.
LinearMap yCbCrOf(double white)
{
    return {{{65.481 / 255, 128.553 / 255, 24.966 / 255, white * 16 / 255},
             {-37.797 / 255, -74.203 / 255, 112.0 / 255, white * 128 / 255},
             {112.0 / 255, -93.786 / 255, -18.214 / 255, white * 128 / 255}}};
}

/// Its inverse, as far as the coefficients of the library go: some 1e-6 off.
LinearMap colorOfYCbCr(double white)
{
    return {{{1.16438103, 0, 1.59601951, -0.874202371 * white},
             {1.16438103, -0.391756505, -0.812965512, 0.531668186 * white},
             {1.16438103, 2.01722836, 0, -1.08563256 * white}}};
}

TEST(Color, LinearMaps)
{
    const struct {
        const char* name;
        Call call;
        VexaType from;
        VexaType to;
        LinearMap map;
        double error;
    } cases[] = {
        // clang-format off
        {"rgb2gray", plain<co::rgb2gray>, VEXA_8UC3, VEXA_8UC1, luma, 1e-4},
        {"rgb2gray", plain<co::rgb2gray>, VEXA_8UC4, VEXA_8UC1, luma, 1e-4},
        {"rgb2gray", plain<co::rgb2gray>, VEXA_16UC3, VEXA_16UC1, luma, 0.02},
        {"rgb2gray", plain<co::rgb2gray>, VEXA_16UC4, VEXA_16UC1, luma, 0.02},
        {"rgb2gray", plain<co::rgb2gray>, VEXA_32FC3, VEXA_32FC1, luma, 1e-4},
        {"by weights", grayByWeights, VEXA_8UC3, VEXA_8UC1, weights, 0},
        {"by weights", grayByWeights, VEXA_16UC3, VEXA_16UC1, weights, 0},
        {"by weights", grayByWeights, VEXA_32FC3, VEXA_32FC1, weights, 1e-4},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_8UC1, VEXA_8UC3, replicated, 0},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_8UC1, VEXA_8UC4, replicated, 0},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_16UC1, VEXA_16UC3, replicated, 0},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_16UC1, VEXA_16UC4, replicated, 0},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_32FC1, VEXA_32FC3, replicated, 0},
        {"gray2rgb", plain<co::gray2rgb>, VEXA_32FC1, VEXA_32FC4, replicated, 0},
        {"rgb2yuv", plain<co::rgb2yuv>, VEXA_8UC3, VEXA_8UC3, yuvOf8, 0},
        {"yuv2rgb", plain<co::yuv2rgb>, VEXA_8UC3, VEXA_8UC3, colorOf8, 0},
        {"rgb2yuv", plain<co::rgb2yuv>, VEXA_16UC3, VEXA_16UC3, yuvOf16, 0.02},
        {"yuv2rgb", plain<co::yuv2rgb>, VEXA_16UC3, VEXA_16UC3, colorOf16, 0.03},
        {"rgb2ycbcr", plain<co::rgb2ycbcr>, VEXA_8UC3, VEXA_8UC3, yCbCrOf(255), 2e-4},
        {"rgb2ycbcr", plain<co::rgb2ycbcr>, VEXA_16UC3, VEXA_16UC3, yCbCrOf(65535), 0.04},
        {"rgb2ycbcr", plain<co::rgb2ycbcr>, VEXA_32FC3, VEXA_32FC3, yCbCrOf(1), 1e-4},
        {"ycbcr2rgb", plain<co::ycbcr2rgb>, VEXA_8UC3, VEXA_8UC3, colorOfYCbCr(255), 3e-4},
        {"ycbcr2rgb", plain<co::ycbcr2rgb>, VEXA_16UC3, VEXA_16UC3, colorOfYCbCr(65535), 0.06},
        {"ycbcr2rgb", plain<co::ycbcr2rgb>, VEXA_32FC3, VEXA_32FC3, colorOfYCbCr(1), 2e-4},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << " from type " << c.from << " to " << c.to);
        expectFormula(c.call, c.from, c.to, c.error, [&](const double* in, double* out) {
            const bool isGray = c.from % 4 == 0;
            for (std::size_t i = 0; i < 4; ++i) {
                out[i] = c.map[i][0] * in[0] + c.map[i][3];
                if (!isGray) out[i] += c.map[i][1] * in[1] + c.map[i][2] * in[2];
            }
        });
    }
}

TEST(Color, GrayInPlaceBecomesColor)
{
    const VexaImage gray = noise<u8>({67, 5}, 1, 3);
    VexaImage image(gray);
    ASSERT_EQ(co::gray2rgb(image), success);
    EXPECT_EQ(image.type(), VEXA_8UC3);
    const std::vector<u8> elements = download<u8>(gray);
    expectElements<u8>(image, [&](std::size_t i) { return elements[i / 3]; });

    EXPECT_EQ(co::gray2rgb(image), badChannels);
    EXPECT_FALSE(image.isInitialized());
    EXPECT_EQ(co::gray2rgb(image), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage withSign(4, 2, VEXA_8SC1);
    EXPECT_EQ(co::gray2rgb(withSign), badType);
    EXPECT_EQ(withSign.type(), VEXA_8UC3);
}

/// By 8-bit integers. The result is in the order blue, green, red, whatever the sequence.
void bgrOf(const double* in, double* out)
{
    const auto h = static_cast<int>(in[0]);
    const auto s = static_cast<int>(in[1]);
    const auto v = static_cast<int>(in[2]);
    const int rest = h % 43 * 6;
    const int p = v * (255 - s) / 256;
    const int q = v * (255 - s * rest / 256) / 256;
    const int t = v * (255 - s * (255 - rest) / 256) / 256;
    const int regions[6][3] = {{p, t, v}, {p, v, q}, {t, v, p}, {v, q, p}, {v, p, t}, {q, p, v}};
    for (int c = 0; c < 3; ++c) out[c] = s == 0 ? v : regions[h / 43][c];
}

TEST(Color, HsvToColor)
{
    expectFormula(plain<co::hsv2rgb>, VEXA_8UC3, VEXA_8UC3, 0, bgrOf);
    // Floats have no more than 8 bits either: negative ones count as 0, and of large ones the low bits.
    expectFormula(plain<co::hsv2rgb>, VEXA_32FC3, VEXA_32FC3, 1e-6, [](const double* in, double* out) {
        double bytes[3];
        for (int c = 0; c < 3; ++c) bytes[c] = static_cast<int>(std::max(in[c] * 255, 0.0)) & 255;
        bgrOf(bytes, out);
        for (int c = 0; c < 3; ++c) out[c] /= 255;
    });
}

/// One pixel in place, worked out by hand, sequence RGB.
TEST(Color, Examples)
{
    const struct {
        Call call;
        int depth;
        int in[3];
        std::array<double, 3> out;
    } examples[] = {
        {plain<co::rgb2yuv>, 8, {255, 255, 255}, {235, 128, 128}},
        {plain<co::yuv2rgb>, 8, {235, 128, 128}, {255, 255, 255}},
        {plain<co::rgb2yuv>, 16, {0, 0, 0}, {0, 0, 0}},
        {plain<co::yuv2rgb>, 16, {0, 0, 0}, {0, 135, 0}},
        {plain<co::rgb2hsv>, 8, {77, 77, 77}, {0, 0, 77}},
        {plain<co::rgb2hsv>, 8, {0, 0, 0}, {0, 0, 0}},
        {plain<co::rgb2hsv>, 8, {255, 0, 0}, {0, 255, 255}},
        {plain<co::rgb2hsv>, 32, {0, 0, 0}, {0, 0, 0}},
        {plain<co::hsv2rgb>, 8, {255, 255, 255}, {15, 0, 255}},
        {plain<co::hsv2rgb>, 8, {123, 0, 9}, {9, 9, 9}},
    };
    for (const auto& example : examples) {
        VexaImage image(1, 1, example.depth, 3);
        image.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        ASSERT_EQ(image.set(0, 0, VexaScalar(example.in[0], example.in[1], example.in[2])), success);
        ASSERT_EQ(example.call(image, image), success);
        const std::array<double, 3> out = {image.get(0, 0, 0), image.get(0, 0, 1), image.get(0, 0, 2)};
        EXPECT_EQ(out, example.out) << "example " << &example - examples;
    }
}

/// Read as blue, green, red whatever the sequence. Every Y, and by turns the U and V, of its own pixel.
TEST(Color, PackedYuv)
{
    for (const VexaSize& size : edgeSizes()) {
        VexaImage src = noise<u8>(size, 3, 5);
        src.setChannelSequence(VEXA_CHANNEL_SEQ_BGR);
        VexaImage yuv;
        VexaImage packed;
        ASSERT_EQ(co::rgb2yuv(src, yuv), success);
        src.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        ASSERT_EQ(co::rgb2yuv422(src, packed), success);
        const std::vector<u8> elements = download<u8>(yuv);
        expectElements<u8>(packed, [&](std::size_t i) {
            const bool isOddColumn = i / 2 % static_cast<std::size_t>(size.width) % 2 == 1;
            return elements[i / 2 * 3 + (i % 2 == 1 ? 0 : isOddColumn ? 2 : 1)];
        });
    }
}

/// On raw pointers, one worker of each kind: with two pitches and with one.
TEST(Color, Workers)
{
    VexaImage src = noiseOf({67, 5}, VEXA_16UC3);
    src.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    VexaImage gray(67, 5, VEXA_16UC1);
    VexaImage expected;
    ASSERT_EQ(grayByWeights(src, expected), success);
    ASSERT_EQ(vexa_colorToGray_16u_C3(src.ptr<u16>(), gray.ptr<u16>(), 67, 5, src.pitch(), gray.pitch(), 1.5F, -0.75F,
                                      0.5F, VEXA_CHANNEL_SEQ_RGB, nullptr),
              success);
    EXPECT_EQ(elementsOf(gray), elementsOf(expected));

    VexaImage yuv;
    ASSERT_EQ(co::rgb2yuv(src, yuv), success);
    for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_NONE})
        ASSERT_EQ(vexa_rgbToYuv_16u_C3(src.ptr<u16>(), src.ptr<u16>(), 67, 5, src.pitch(), sequence, nullptr), success);
    EXPECT_EQ(elementsOf(src), elementsOf(yuv));
}

}  // namespace
