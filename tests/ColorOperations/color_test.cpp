/// @file
/// Conversions between colour spaces: the checks of each as one table, values against formulas in double.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

using Call = VexaStatus (*)(const VexaImage& src, VexaImage& dst);

/// Which image tells the order of the colours.
enum class Side { src, dst, none };

/// The checks of one function. Statuses are those for an initialised destination that differs from a fitting one.
struct Function {
    const char* name;
    Call call;
    bool inPlace;
    std::vector<int> channels;
    VexaType (*created)(VexaType src);
    std::vector<VexaType> served;
    VexaStatus otherwise;
    Side sequence;
    VexaStatus otherChannels;
    VexaStatus otherDepth;
    VexaStatus otherSign;
    bool ownPitches;
};

VexaType unsignedType(VexaType src, int channels)
{
    int depth = 0;
    int unused = 0;
    getParameters(src, depth, unused);
    return getType(std::abs(depth), channels, false);
}

int channelsOf(VexaType type)
{
    int depth = 0;
    int channels = 0;
    getParameters(type, depth, channels);
    return channels;
}

VexaType sameType(VexaType src)
{
    return src;
}

VexaType sameDepth(VexaType src)
{
    return unsignedType(src, channelsOf(src));
}

VexaType gray(VexaType src)
{
    return unsignedType(src, 1);
}

VexaType color(VexaType src)
{
    return unsignedType(src, 3);
}

VexaType packed(VexaType /*src*/)
{
    return VEXA_8UC2;
}

constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badType = VEXA_TYPE_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
constexpr VexaStatus success = VEXA_SUCCESS;

VexaStatus grayByWeights(const VexaImage& src, VexaImage& dst)
{
    return co::rgb2gray(src, dst, VexaScalar(1.5, -0.75, 0.5));
}

/// Puts the forms with the default stream behind one pointer type.
template <VexaStatus (*function)(const VexaImage&, VexaImage&, const VexaStream&)>
VexaStatus plain(const VexaImage& src, VexaImage& dst)
{
    return function(src, dst, VexaStream(false));
}

const std::vector<VexaType> colors8And32 = {VEXA_8UC3, VEXA_32FC3};
const std::vector<VexaType> colors = {VEXA_8UC3, VEXA_16UC3, VEXA_32FC3};
const std::vector<VexaType> colorsByDepth = {VEXA_8UC3, VEXA_8SC3, VEXA_16UC3, VEXA_16SC3};

const Function functions[] = {
    // clang-format off
    {"rgb2gray", plain<co::rgb2gray>, false, {3, 4}, gray,
     {VEXA_8UC3, VEXA_8UC4, VEXA_16UC3, VEXA_16UC4, VEXA_32FC3}, mode, Side::src, badChannels, mode, success, true},
    {"rgb2gray, weights", grayByWeights, false, {3}, gray, colors, mode, Side::src, badChannels, mode, success, true},
    {"gray2rgb", plain<co::gray2rgb>, false, {1}, color, {VEXA_8UC1, VEXA_16UC1, VEXA_32FC1}, badType, Side::none,
     badType, mode, badType, true},
    {"rgb2yuv", plain<co::rgb2yuv>, true, {3}, sameType, colorsByDepth, badDepth, Side::src, mode, mode, success,
     false},
    {"yuv2rgb", plain<co::yuv2rgb>, true, {3}, sameDepth, colorsByDepth, badDepth, Side::dst, mode, mode, success,
     false},
    {"rgb2hsv", plain<co::rgb2hsv>, true, {3}, sameType, colors8And32, badDepth, Side::src, mode, badDepth, badDepth,
     false},
    {"hsv2rgb", plain<co::hsv2rgb>, true, {3}, sameType, colors8And32, badDepth, Side::none, mode, badDepth, badDepth,
     false},
    {"rgb2Lab", plain<co::rgb2Lab>, false, {3}, sameType, colors8And32, badDepth, Side::src, mode, mode, success,
     false},
    {"Lab2rgb", plain<co::Lab2rgb>, true, {3}, sameType, colors8And32, badDepth, Side::dst, mode, mode, success,
     false},
    {"rgb2ycbcr", plain<co::rgb2ycbcr>, true, {3}, sameType, colors, badType, Side::src, mode, mode, success, false},
    {"ycbcr2rgb", plain<co::ycbcr2rgb>, true, {3}, sameType, colors, badType, Side::dst, mode, mode, success, false},
    {"rgb2yuv422", plain<co::rgb2yuv422>, true, {3}, packed, {VEXA_8UC3}, badType, Side::none, success, mode, success,
     true},
    // clang-format on
};

template <typename Values, typename Value>
bool contains(const Values& values, const Value& value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// What the sequence of a destination is afterwards.
VexaChannelSeq sequenceAfter(const Function& function, VexaStatus status, VexaChannelSeq before)
{
    const bool marks = function.call == plain<co::rgb2ycbcr> || (function.call == plain<co::rgb2Lab> && !status);
    return marks ? VEXA_CHANNEL_SEQ_RGB : before;
}

TEST(Color, CreatesAndServesExactlyItsTypes)
{
    for (const Function& function : functions)
        for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
            const auto type = static_cast<VexaType>(t);
            SCOPED_TRACE(testing::Message() << function.name << " of type " << t);
            const VexaImage src(5, 3, type);
            VexaImage dst;
            const VexaStatus status = function.call(src, dst);
            if (!contains(function.channels, channelsOf(type))) {
                EXPECT_EQ(status, badChannels);
                EXPECT_FALSE(dst.isInitialized());
                continue;
            }
            EXPECT_EQ(status, contains(function.served, type) ? success : function.otherwise);
            const VexaImage model(5, 3, function.created(type));
            EXPECT_EQ(dst.type(), model.type());
            EXPECT_EQ(dst.width(), 5);
            EXPECT_EQ(dst.height(), 3);
            EXPECT_EQ(dst.channelSeq(), sequenceAfter(function, status, model.channelSeq()));
        }
}

TEST(Color, ChecksInOrder)
{
    for (const Function& function : functions)
        for (const VexaType type : {function.served[0], unsignedType(VEXA_64FC1, function.channels[0])}) {
            SCOPED_TRACE(testing::Message() << function.name << " of type " << type);
            const bool isServed = type == function.served[0];
            const VexaImage src(5, 3, type);
            const VexaImage twoChannels(5, 3, VEXA_8UC2);
            const VexaType fitting =
                function.call == plain<co::rgb2yuv422> ? unsignedType(type, 2) : function.created(type);
            VexaImage empty;
            VexaImage narrow(4, 3, fitting);
            EXPECT_EQ(function.call(empty, empty), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_EQ(function.call(empty, narrow), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_FALSE(empty.isInitialized());
            VexaImage self(twoChannels);
            EXPECT_EQ(function.call(self, self), function.inPlace ? badChannels : VEXA_INPLACE_OP_NOT_SUPPORTED);
            EXPECT_EQ(function.call(twoChannels, narrow), badChannels);

            const int otherChannels = channelsOf(fitting) == 2 ? 3 : 2;
            const int otherDepth = src.depth() == 16 ? 8 : 16;
            const struct {
                VexaImage dst;
                VexaStatus status;
            } misfits[] = {
                {VexaImage(4, 3, fitting), mode},
                {VexaImage(5, 4, fitting), mode},
                {VexaImage(5, 3, src.depth(), otherChannels), function.otherChannels},
                {VexaImage(5, 3, otherDepth, channelsOf(fitting)), function.otherDepth},
                {VexaImage(5, 3, -src.depth(), channelsOf(fitting)), isServed ? function.otherSign : mode},
            };
            for (const auto& misfit : misfits) {
                if (!misfit.dst.isInitialized() || (!isServed && misfit.dst.isSigned())) continue;
                VexaImage dst(misfit.dst);
                fillBuffer(dst, 0x5A);
                dst.setChannelSequence(VEXA_CHANNEL_SEQ_LUMINANCE);
                const VexaStatus expected = misfit.status || isServed ? misfit.status : function.otherwise;
                EXPECT_EQ(function.call(src, dst), expected) << "into " << dst.type();
                if (expected == success) continue;
                EXPECT_EQ(dst.channelSeq(), VEXA_CHANNEL_SEQ_LUMINANCE);
                expectGaps(dst, 0x5A);
                const std::vector<u8> untouched(static_cast<std::size_t>(dst.pitch()) * 3, 0x5A);
                std::vector<u8> bytes(untouched.size() + static_cast<std::size_t>(dst.pitch()));
                ASSERT_EQ(dst.download(bytes.data()), success);
                EXPECT_TRUE(std::equal(untouched.begin(), untouched.end(), bytes.begin()));
            }
        }
}

/// Sequences that a function does not serve leave the destination as it was, which is no failure.
TEST(Color, ServesItsSequences)
{
    for (const Function& function : functions)
        for (const VexaType type : function.served)
            for (int s = VEXA_CHANNEL_SEQ_RGB; s <= VEXA_CHANNEL_SEQ_NONE; ++s)
                for (const VexaChannelSeq other : {VEXA_CHANNEL_SEQ_BGR, VEXA_CHANNEL_SEQ_NONE}) {
                    SCOPED_TRACE(testing::Message() << function.name << " of type " << type << ", sequence " << s);
                    const auto sequence = static_cast<VexaChannelSeq>(s);
                    VexaImage src(7, 5, type);
                    fillBuffer(src, 0x3C);
                    VexaImage dst(7, 5, function.created(type));
                    fillBuffer(dst, 0xA5);
                    src.setChannelSequence(function.sequence == Side::dst ? other : sequence);
                    dst.setChannelSequence(function.sequence == Side::dst ? sequence : other);
                    ASSERT_EQ(function.call(src, dst), success);
                    const bool hasAlpha = sequence == VEXA_CHANNEL_SEQ_BGRA || sequence == VEXA_CHANNEL_SEQ_RGBA;
                    const bool hasColors = sequence == VEXA_CHANNEL_SEQ_BGR || sequence == VEXA_CHANNEL_SEQ_RGB;
                    const bool served = function.sequence == Side::none || (src.channels() == 4 ? hasAlpha : hasColors);
                    std::vector<u8> bytes(static_cast<std::size_t>(dst.pitch()) * 5);
                    ASSERT_EQ(dst.download(bytes.data()), success);
                    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0xA5) != std::ptrdiff_t(bytes.size()), served);
                    EXPECT_EQ(src.channelSeq(), function.sequence == Side::dst ? other : sequence);
                    EXPECT_EQ(dst.channelSeq(),
                              sequenceAfter(function, success, function.sequence == Side::dst ? sequence : other));
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
            VexaImage src(size, type);
            fillBuffer(src, 0x3C);
            VexaImage expected(size, function.created(type));
            const int rowBytes = 50 * expected.channels() * expected.depth() / 8;
            fillBuffer(expected, 0);
            ASSERT_EQ(function.call(src, expected), success);
            std::vector<u8> right(static_cast<std::size_t>(rowBytes) * 20);
            ASSERT_EQ(expected.download(right.data(), rowBytes), success);

            VexaImage wide(50, 20, src.pitch() + 64, expected.depth(), expected.channels());
            ASSERT_EQ(function.call(src, wide), success);
            std::vector<u8> buffer(static_cast<std::size_t>(wide.pitch()) * 20);
            ASSERT_EQ(wide.download(buffer.data()), success);
            const int stride = function.ownPitches ? wide.pitch() : src.pitch();
            for (int y = 0; y < 20; ++y)
                EXPECT_TRUE(std::equal(&right[static_cast<std::size_t>(y * rowBytes)],
                                       &right[static_cast<std::size_t>(y * rowBytes)] + rowBytes,
                                       &buffer[static_cast<std::size_t>(y * stride)]))
                    << "row " << y;

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

/// A conversion of pixels in double, colours in the order red, green, blue.
struct Formula {
    const char* name;
    Call call;
    Side color;
    int from;
    int to;
    void (*apply)(const double* in, double* out);
    double error;    ///< of the value that is stored or truncated
    double low = 0;  ///< range of floats
    double high = 1;
    double circle = 0;  ///< the period of the first element
};

/// What a value becomes as an element of type T.
template <typename T>
double stored(double value)
{
    if (std::is_floating_point_v<T>) return value;
    return std::floor(std::clamp(value, 0.0, static_cast<double>(std::numeric_limits<T>::max())));
}

template <typename T>
VexaImage samples(const Formula& formula, VexaSize size)
{
    if constexpr (sizeof(T) < 4) return noise<T>(size, formula.from, 7);
    std::vector<f32> elements;
    for (const u16 element : download<u16>(noise<u16>(size, formula.from, 7)))
        elements.push_back(static_cast<f32>(formula.low + (formula.high - formula.low) * element / 65535.0));
    return imageOf<f32>(size, formula.from, elements);
}

/// The slot of colour c: red, green, blue, alpha.
std::size_t slot(VexaChannelSeq sequence, std::size_t c)
{
    const bool isReversed = sequence == VEXA_CHANNEL_SEQ_BGR || sequence == VEXA_CHANNEL_SEQ_BGRA;
    return isReversed && c < 3 ? 2 - c : c;
}

template <typename T>
void expectPixels(const Formula& formula, VexaChannelSeq sequence, const VexaImage& src, const VexaImage& dst)
{
    const std::vector<T> in = download<T>(src);
    const std::vector<T> result = download<T>(dst);
    const auto from = static_cast<std::size_t>(formula.from);
    const auto to = static_cast<std::size_t>(formula.to);
    for (std::size_t i = 0; i < in.size() / from; ++i) {
        std::array<double, 4> pixel{};
        std::array<double, 4> exact{};
        for (std::size_t c = 0; c < from; ++c)
            pixel[c] = static_cast<double>(in[i * from + (formula.color == Side::src ? slot(sequence, c) : c)]);
        formula.apply(pixel.data(), exact.data());
        for (std::size_t c = 0; c < to; ++c) {
            const auto element =
                static_cast<double>(result[i * to + (formula.color == Side::dst ? slot(sequence, c) : c)]);
            const bool wraps = c == 0 && formula.circle > 0 && std::abs(element - exact[c]) > formula.circle / 2;
            const double near = wraps ? exact[c] + std::copysign(formula.circle, element - exact[c]) : exact[c];
            const double error = std::is_floating_point_v<T> ? formula.error * (1 + std::abs(near)) : formula.error;
            ASSERT_TRUE(stored<T>(near - error) <= element && element <= stored<T>(near + error))
                << "pixel " << i << ", " << pixel[0] << " " << pixel[1] << " " << pixel[2] << " gives " << element
                << " and not " << exact[c] << " in " << c;
        }
    }
}

template <typename T>
void expectFormula(const Formula& formula)
{
    for (const VexaSize& size : edgeSizes())
        for (const bool reversed : {false, true}) {
            SCOPED_TRACE(testing::Message() << formula.name << " of " << 8 * sizeof(T) << " bits, width " << size.width
                                            << (reversed ? ", BGR" : ", RGB"));
            const VexaChannelSeq sequence = formula.from == 4
                                                ? (reversed ? VEXA_CHANNEL_SEQ_BGRA : VEXA_CHANNEL_SEQ_RGBA)
                                                : (reversed ? VEXA_CHANNEL_SEQ_BGR : VEXA_CHANNEL_SEQ_RGB);
            VexaImage src = samples<T>(formula, size);
            VexaImage dst(size, formatOf<T>(formula.to));
            fillBuffer(dst, 0xA5);
            src.setChannelSequence(formula.color == Side::dst ? VEXA_CHANNEL_SEQ_NONE : sequence);
            dst.setChannelSequence(formula.color == Side::dst ? sequence : VEXA_CHANNEL_SEQ_NONE);
            ASSERT_EQ(formula.call(src, dst), success);
            expectPixels<T>(formula, sequence, src, dst);
            expectGaps(dst, 0xA5);
            if (formula.from != 3 || formula.to != 3 || formula.call == plain<co::rgb2Lab>) continue;
            VexaImage image(src);
            image.setChannelSequence(sequence);
            ASSERT_EQ(formula.call(image, image), success);
            EXPECT_EQ(download<T>(image), download<T>(dst)) << "in place";
        }
}

void luma(const double* in, double* out)
{
    out[0] = 0.299 * in[0] + 0.587 * in[1] + 0.114 * in[2];
}

void weighted(const double* in, double* out)
{
    out[0] = 1.5 * in[0] - 0.75 * in[1] + 0.5 * in[2];
}

void replicated(const double* in, double* out)
{
    out[0] = out[1] = out[2] = in[0];
    out[3] = 0;
}

TEST(Color, Gray)
{
    const Call call = plain<co::rgb2gray>;
    expectFormula<u8>({"rgb2gray", call, Side::src, 3, 1, luma, 1e-4});
    expectFormula<u8>({"rgb2gray", call, Side::src, 4, 1, luma, 1e-4});
    expectFormula<u16>({"rgb2gray", call, Side::src, 3, 1, luma, 0.02});
    expectFormula<u16>({"rgb2gray", call, Side::src, 4, 1, luma, 0.02});
    expectFormula<f32>({"rgb2gray", call, Side::src, 3, 1, luma, 1e-6, -64, 192});
    expectFormula<u8>({"by weights", grayByWeights, Side::src, 3, 1, weighted, 0});
    expectFormula<u16>({"by weights", grayByWeights, Side::src, 3, 1, weighted, 0});
    expectFormula<f32>({"by weights", grayByWeights, Side::src, 3, 1, weighted, 1e-5, -64, 192});
    for (const int channels : {3, 4}) {
        expectFormula<u8>({"gray2rgb", plain<co::gray2rgb>, Side::none, 1, channels, replicated, 0});
        expectFormula<u16>({"gray2rgb", plain<co::gray2rgb>, Side::none, 1, channels, replicated, 0});
        expectFormula<f32>({"gray2rgb", plain<co::gray2rgb>, Side::none, 1, channels, replicated, 0, -64, 192});
    }
}

TEST(Color, GrayInPlaceBecomesColor)
{
    const VexaImage gray = noise<u8>({67, 5}, 1, 3);
    VexaImage image(gray);
    ASSERT_EQ(co::gray2rgb(image), success);
    EXPECT_EQ(image.type(), VEXA_8UC3);
    EXPECT_EQ(image.channelSeq(), VEXA_CHANNEL_SEQ_BGR);
    const std::vector<u8> elements = download<u8>(gray);
    expectElements<u8>(image, [&](std::size_t i) { return elements[i / 3]; });

    VexaImage empty;
    EXPECT_EQ(co::gray2rgb(empty), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::gray2rgb(image), badChannels);
    EXPECT_FALSE(image.isInitialized());
    VexaImage withSign(4, 2, VEXA_8SC1);
    EXPECT_EQ(co::gray2rgb(withSign), badType);
    EXPECT_EQ(withSign.type(), VEXA_8UC3);
}

/// As the arithmetic shift of integers.
double shifted(double sum)
{
    return std::floor((sum + 128) / 256);
}

void yuvOf8(const double* in, double* out)
{
    out[0] = shifted(66 * in[0] + 129 * in[1] + 25 * in[2]) + 16;
    out[1] = shifted(-38 * in[0] - 74 * in[1] + 112 * in[2]) + 128;
    out[2] = shifted(112 * in[0] - 94 * in[1] - 18 * in[2]) + 128;
}

void colorOf8(const double* in, double* out)
{
    const double c = 298 * (in[0] - 16);
    out[0] = shifted(c + 409 * (in[2] - 128));
    out[1] = shifted(c - 100 * (in[1] - 128) - 208 * (in[2] - 128));
    out[2] = shifted(c + 516 * (in[1] - 128));
}

void yuvOf16(const double* in, double* out)
{
    out[0] = 0.299 * in[0] + 0.587 * in[1] + 0.114 * in[2];
    out[1] = -0.168736 * in[0] - 0.331264 * in[1] + 0.5 * in[2];
    out[2] = 0.5 * in[0] - 0.418688 * in[1] - 0.081312 * in[2];
}

void colorOf16(const double* in, double* out)
{
    out[0] = in[0] + 1.4075 * (in[2] - 128);
    out[1] = in[0] - 0.3455 * (in[1] - 128) - 0.7169 * (in[2] - 128);
    out[2] = in[0] + 1.779 * (in[1] - 128);
}

TEST(Color, Yuv)
{
    expectFormula<u8>({"rgb2yuv", plain<co::rgb2yuv>, Side::src, 3, 3, yuvOf8, 0});
    expectFormula<u8>({"yuv2rgb", plain<co::yuv2rgb>, Side::dst, 3, 3, colorOf8, 0});
    expectFormula<u16>({"rgb2yuv", plain<co::rgb2yuv>, Side::src, 3, 3, yuvOf16, 0.02});
    expectFormula<u16>({"yuv2rgb", plain<co::yuv2rgb>, Side::dst, 3, 3, colorOf16, 0.03});
}

/// ITU-R BT.601, colours from 0 to `white`.
template <int white>
void yCbCr(const double* in, double* out)
{
    out[0] = (16 * white + 65.481 * in[0] + 128.553 * in[1] + 24.966 * in[2]) / 255;
    out[1] = (128 * white - 37.797 * in[0] - 74.203 * in[1] + 112 * in[2]) / 255;
    out[2] = (128 * white + 112 * in[0] - 93.786 * in[1] - 18.214 * in[2]) / 255;
}

/// Its inverse, with coefficients that are off by some 1e-6.
template <int white>
void colorOfYCbCr(const double* in, double* out)
{
    const double y = 1.16438103 * in[0];
    out[0] = y + 1.59601951 * in[2] - 0.874202371 * white;
    out[1] = y - 0.391756505 * in[1] - 0.812965512 * in[2] + 0.531668186 * white;
    out[2] = y + 2.01722836 * in[1] - 1.08563256 * white;
}

TEST(Color, YCbCr)
{
    const Call there = plain<co::rgb2ycbcr>;
    const Call back = plain<co::ycbcr2rgb>;
    expectFormula<u8>({"rgb2ycbcr", there, Side::src, 3, 3, yCbCr<255>, 2e-4});
    expectFormula<u16>({"rgb2ycbcr", there, Side::src, 3, 3, yCbCr<65535>, 0.04});
    expectFormula<f32>({"rgb2ycbcr", there, Side::src, 3, 3, yCbCr<1>, 1e-6, -2, 3});
    expectFormula<u8>({"ycbcr2rgb", back, Side::dst, 3, 3, colorOfYCbCr<255>, 3e-4});
    expectFormula<u16>({"ycbcr2rgb", back, Side::dst, 3, 3, colorOfYCbCr<65535>, 0.06});
    expectFormula<f32>({"ycbcr2rgb", back, Side::dst, 3, 3, colorOfYCbCr<1>, 2e-6, -2, 3});
}

void hsvOf(const double* in, double* out)
{
    const double max = std::max({in[0], in[1], in[2]});
    const double delta = max - std::min({in[0], in[1], in[2]});
    // The usual hexagon: sixths of a circle from red over green to blue.
    const double sixths = max == in[0]   ? (in[1] - in[2]) / delta
                          : max == in[1] ? 2 + (in[2] - in[0]) / delta
                                         : 4 + (in[0] - in[1]) / delta;
    out[0] = delta == 0 ? 0 : (sixths < 0 ? sixths + 6 : sixths) / 6;
    out[1] = delta == 0 ? 0 : delta / max;
    out[2] = max;
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

/// Floats have no more than the 8 bits either.
void bgrOfFloats(const double* in, double* out)
{
    double bytes[3];
    for (int c = 0; c < 3; ++c) bytes[c] = std::floor(static_cast<double>(static_cast<float>(in[c] * 255)));
    bgrOf(bytes, out);
    for (int c = 0; c < 3; ++c) out[c] /= 255;
}

TEST(Color, Hsv)
{
    expectFormula<f32>({"rgb2hsv", plain<co::rgb2hsv>, Side::src, 3, 3, hsvOf, 2e-6, 0, 1, 1});
    expectFormula<u8>({"hsv2rgb", plain<co::hsv2rgb>, Side::none, 3, 3, bgrOf, 0});
    expectFormula<f32>({"hsv2rgb", plain<co::hsv2rgb>, Side::none, 3, 3, bgrOfFloats, 1e-6});
}

void labOf(const double* in, double* out)
{
    double linear[3];
    for (int c = 0; c < 3; ++c) linear[c] = in[c] > 0.04045 ? std::pow((in[c] + 0.055) / 1.055, 2.4) : in[c] / 12.92;
    const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
    const double x = f((0.412453 * linear[0] + 0.35758 * linear[1] + 0.180423 * linear[2]) / 0.95047);
    const double y = f(0.212671 * linear[0] + 0.71516 * linear[1] + 0.072169 * linear[2]);
    const double z = f((0.019334 * linear[0] + 0.119193 * linear[1] + 0.950227 * linear[2]) / 1.08883);
    out[0] = 116 * y - 16;
    out[1] = 500 * (x - y);
    out[2] = 200 * (y - z);
}

void colorOfLab(const double* in, double* out)
{
    const auto inverse = [](double f) { return f * f * f > 0.008856 ? f * f * f : (f - 16.0 / 116) / 7.787; };
    const double fy = (in[0] + 16) / 116;
    const double x = 0.95047 * inverse(fy + in[1] / 500);
    const double y = inverse(fy);
    const double z = 1.08883 * inverse(fy - in[2] / 200);
    out[0] = 3.2406 * x - 1.5372 * y - 0.4986 * z;
    out[1] = -0.9689 * x + 1.8758 * y + 0.0415 * z;
    out[2] = 0.0557 * x - 0.204 * y + 1.057 * z;
    for (int c = 0; c < 3; ++c)
        out[c] = out[c] > 0.0031308 ? 1.055 * std::pow(out[c], 1 / 2.4) - 0.055 : 12.92 * out[c];
}

void colorOfLab8(const double* in, double* out)
{
    const double lab[] = {in[0] / 2.55, in[1] - 128, in[2] - 128};
    colorOfLab(lab, out);
    for (int c = 0; c < 3; ++c) out[c] *= 255;
}

TEST(Color, Lab)
{
    expectFormula<f32>({"rgb2Lab", plain<co::rgb2Lab>, Side::src, 3, 3, labOf, 5e-4});
    expectFormula<f32>({"Lab2rgb", plain<co::Lab2rgb>, Side::dst, 3, 3, colorOfLab, 5e-5, -60, 100});
    expectFormula<u8>({"Lab2rgb", plain<co::Lab2rgb>, Side::dst, 3, 3, colorOfLab8, 0.01});
}

TEST(Color, LabAndBack)
{
    for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_BGR}) {
        VexaImage src = samples<f32>({"", nullptr, Side::src, 3, 3, nullptr, 0}, {67, 5});
        src.setChannelSequence(sequence);
        VexaImage lab;
        VexaImage result(src.size(), VEXA_32FC3);
        result.setChannelSequence(sequence);
        ASSERT_EQ(co::rgb2Lab(src, lab), success);
        ASSERT_EQ(co::Lab2rgb(lab, result), success);
        const std::vector<f32> elements = download<f32>(src);
        expectElements<f32>(
            result, [&](std::size_t i) { return elements[i]; }, 2e-3);
    }
}

/// One pixel, worked out by hand; both sequences are RGB.
TEST(Color, Examples)
{
    const struct {
        Call call;
        int depth;
        std::array<double, 3> in;
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
        VexaImage src(1, 1, example.depth, 3);
        VexaImage dst(1, 1, example.depth, 3);
        src.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        dst.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        ASSERT_EQ(src.set(0, 0, VexaScalar(example.in[0], example.in[1], example.in[2])), success);
        ASSERT_EQ(example.call(src, dst), success);
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(dst.get(0, 0, c), example.out[static_cast<std::size_t>(c)])
                << "example " << &example - examples << ", channel " << c;
    }
}

TEST(Color, PackedYuv)
{
    for (const VexaSize& size : edgeSizes())
        for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_BGR, VEXA_CHANNEL_SEQ_NONE}) {
            VexaImage src = noise<u8>(size, 3, 5);
            src.setChannelSequence(sequence);
            VexaImage dst(size, VEXA_8UC2);
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(co::rgb2yuv422(src, dst), success);
            const std::vector<u8> in = download<u8>(src);
            const auto width = static_cast<std::size_t>(size.width);
            expectElements<u8>(dst, [&](std::size_t i) {
                const u8* const bgr = &in[i / 2 * 3];
                const double rgb[] = {double(bgr[2]), double(bgr[1]), double(bgr[0])};
                double yuv[3];
                yuvOf8(rgb, yuv);
                const bool isOddColumn = i / 2 % width % 2 == 1;
                return yuv[i % 2 == 1 ? 0 : isOddColumn ? 2 : 1];
            });
            expectGaps(dst, 0xA5);
        }
}

/// On raw pointers, one worker of each kind: two pitches, weights, one pitch, no sequence.
TEST(Color, Workers)
{
    const VexaSize size(67, 5);
    VexaImage src = noise<u8>(size, 3, 5);
    src.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    VexaImage gray(67, 5, 8, 1);
    VexaImage dst(67, 5, 8, 3);
    VexaImage expected;
    ASSERT_EQ(vexa_rgbToGray_8u_C3(src.ptr<u8>(), gray.ptr<u8>(), 67, 5, src.pitch(), gray.pitch(),
                                   VEXA_CHANNEL_SEQ_RGB, nullptr),
              success);
    expectPixels<u8>({"", nullptr, Side::src, 3, 1, luma, 1e-4}, VEXA_CHANNEL_SEQ_RGB, src, gray);
    ASSERT_EQ(vexa_colorToGray_8u_C3(src.ptr<u8>(), gray.ptr<u8>(), 67, 5, src.pitch(), gray.pitch(), 0.5F, -0.75F,
                                     1.5F, VEXA_CHANNEL_SEQ_BGR, nullptr),
              success);
    expectPixels<u8>({"", nullptr, Side::src, 3, 1, weighted, 0}, VEXA_CHANNEL_SEQ_RGB, src, gray);
    ASSERT_EQ(vexa_rgbToYuv_8u_C3(src.ptr<u8>(), dst.ptr<u8>(), 67, 5, src.pitch(), VEXA_CHANNEL_SEQ_BGR, nullptr),
              success);
    expectPixels<u8>({"", nullptr, Side::src, 3, 3, yuvOf8, 0}, VEXA_CHANNEL_SEQ_BGR, src, dst);
    ASSERT_EQ(vexa_rgbToYuv_8u_C3(src.ptr<u8>(), dst.ptr<u8>(), 67, 5, src.pitch(), VEXA_CHANNEL_SEQ_NONE, nullptr),
              success);
    expectPixels<u8>({"", nullptr, Side::src, 3, 3, yuvOf8, 0}, VEXA_CHANNEL_SEQ_BGR, src, dst);
    ASSERT_EQ(vexa_hsvToBgr_8u_c3(src.ptr<u8>(), dst.ptr<u8>(), 67, 5, src.pitch(), nullptr), success);
    expectPixels<u8>({"", nullptr, Side::none, 3, 3, bgrOf, 0}, VEXA_CHANNEL_SEQ_RGB, src, dst);
    VexaImage uyvy(67, 5, 8, 2);
    ASSERT_EQ(vexa_rgb2yuv422_8u(src.ptr<u8>(), uyvy.ptr<u8>(), 67, 5, src.pitch(), uyvy.pitch(), nullptr), success);
    ASSERT_EQ(co::rgb2yuv422(src, expected), success);
    EXPECT_EQ(download<u8>(uyvy), download<u8>(expected));
}

}  // namespace
