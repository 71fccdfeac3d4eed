/// @file
/// Demosaicing against direct evaluations in double: the table of stencils retyped, the directional one pixel by pixel.

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <string>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

/// A raw frame in double, read with or without a border of zeros.
class Raw {
public:
    template <typename T>
    Raw(const VexaImage& image, T /*element*/) : width(image.width()), height(image.height())
    {
        for (const T element : download<T>(image)) _elements.push_back(element);
    }

    double clamped(int x, int y) const { return at(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1)); }
    double orZero(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height ? at(x, y) : 0.0; }

    int width;
    int height;

private:
    double at(int x, int y) const { return _elements[static_cast<std::size_t>(y * width + x)]; }

    std::vector<double> _elements;
};

// ---- stencils ----

/// A sample at an offset from the pixel.
using Samples = std::function<double(int dx, int dy)>;

double stencil(const std::string& name, const Samples& T)
{
    const double C = T(0, 0), N = T(0, -1), S = T(0, 1), W = T(-1, 0), E = T(1, 0);
    const double N2 = T(0, -2), S2 = T(0, 2), W2 = T(-2, 0), E2 = T(2, 0);
    const double diagonal = T(-1, -1) + T(1, -1) + T(-1, 1) + T(1, 1);
    const double q5 = 5 * C + 4 * (N + S) - diagonal - N2 - S2;
    const double q6 = 5 * C + 4 * (W + E) - diagonal - W2 - E2;
    const std::map<std::string, double> values = {
        {"0", 0},
        {"C", C},
        {"G4", E2 >= W2 ? (N + S + E + W) / 4 : (N + S) / 2},
        {"D4", diagonal / 4},
        {"H2", (W + E) / 2},
        {"V2", (N + S) / 2},
        {"Q1", (4 * C + 2 * (N + S + E + W) - (N2 + S2 + E2 + W2)) / 8},
        {"Q2", (6 * C + 2 * diagonal - (N2 + S2 + E2 + W2)) / 8},
        {"Q3", (6 * C + 2 * diagonal - 1.5 * (N2 + S2 + E2 + W2)) / 8},
        {"Q4", (6 * C + 2 * diagonal - 1.5 * N2 - 1.5 * E2 - W2 - S2) / 8},
        {"Q5", q5 / 8},
        {"Q6", q6 / 8},
        {"Q7", (q6 + 0.5 * N2) / 8},
        {"Q8", (q5 + 0.5 * (W2 + E2)) / 8},
        {"Q9", (q6 + 0.5 * (N2 + S2)) / 8},
    };
    return values.at(name);
}

/// Stencils of slots 0, 1, 2; starred ones are centred one column right and one row up.
using Cell = std::array<std::string, 3>;

/// Cells at (even x, even y), (odd, even), (even, odd), (odd, odd).
using Cells = std::array<Cell, 4>;

const std::map<VexaBayerSeq, Cells> plain = {
    {VEXA_BAYER_RGGB, {{{"D4", "G4", "C"}, {"V2", "C", "H2"}, {"H2", "C", "V2"}, {"C", "G4", "D4"}}}},
    {VEXA_BAYER_BGGR, {{{"C", "G4", "D4"}, {"H2", "C", "V2"}, {"V2", "C", "H2"}, {"D4", "G4", "C"}}}},
    {VEXA_BAYER_GRBG, {{{"H2", "C", "V2"}, {"C", "G4", "D4"}, {"D4", "G4", "C"}, {"V2", "C", "H2"}}}},
    {VEXA_BAYER_GBRG, {{{"C", "G4", "D4"}, {"0", "0", "0"}, {"D4", "G4", "C"}, {"V2", "C", "H2"}}}},
};

const std::map<VexaBayerSeq, Cells> highQuality8 = {
    {VEXA_BAYER_RGGB_HQ, {{{"Q4", "Q1", "C"}, {"Q5", "C", "Q7"}, {"Q7", "C", "Q5"}, {"C", "Q1", "Q2"}}}},
    {VEXA_BAYER_BGGR_HQ, {{{"Q6*", "C", "Q5*"}, {"C", "Q1", "Q2"}, {"Q2", "Q1", "C"}, {"Q5*", "C", "Q6*"}}}},
    {VEXA_BAYER_GRBG_HQ, {{{"Q2", "Q1", "C"}, {"Q5*", "C", "Q6*"}, {"Q6*", "C", "Q5*"}, {"C", "Q1", "Q2"}}}},
    {VEXA_BAYER_GBRG_HQ, {{{"Q2", "Q1", "C"}, {"Q6*", "C", "Q5*"}, {"0", "C", "0"}, {"C", "Q1", "Q2"}}}},
};

const std::map<VexaBayerSeq, Cells> highQuality16 = {
    {VEXA_BAYER_RGGB_HQ, {{{"Q3", "Q1", "C"}, {"Q8", "C", "Q9"}, {"Q9", "C", "Q8"}, {"C", "Q1", "Q3"}}}},
    {VEXA_BAYER_BGGR_HQ, {{{"Q6", "C", "Q5"}, {"C", "Q1", "Q2"}, {"Q2", "Q1", "C"}, {"Q5", "C", "Q6"}}}},
    {VEXA_BAYER_GRBG_HQ, {{{"Q2", "Q1", "C"}, {"Q5", "C", "Q6"}, {"Q6", "C", "Q5"}, {"C", "Q1", "Q2"}}}},
    {VEXA_BAYER_GBRG_HQ, {{{"Q2", "Q1", "C"}, {"Q6", "C", "Q5"}, {"0", "C", "0"}, {"C", "Q1", "Q2"}}}},
};

double valueAt(const Raw& raw, int x, int y, std::string name)
{
    const int star = name.back() == '*' ? 1 : 0;
    if (star) name.pop_back();
    return stencil(name, [&](int dx, int dy) { return raw.clamped(x + star + dx, y - star + dy); });
}

/// The element that a value is stored as.
using Store = std::function<double(double value)>;

/// Truncated within 0 to top.
Store boundedBy(double top)
{
    return [top](double value) { return std::trunc(std::clamp(value, 0.0, top)); };
}

double wrapped(double value)
{
    return std::fmod(std::trunc(std::max(value, 0.0)), 256.0);
}

template <typename T>
void expectStencils(const VexaImage& src, VexaBayerSeq seq, const Cells& cells, const Store& store)
{
    SCOPED_TRACE(testing::Message() << "layout " << seq << ", " << 8 * sizeof(T) << " bits, " << src.width() << "x"
                                    << src.height());
    VexaImage dst(src.size(), formatOf<T>(3));
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::demosaic(src, dst, seq), success);
    const Raw raw(src, T());
    expectElements<T>(dst, [&](std::size_t i) {
        const int x = static_cast<int>(i / 3) % raw.width;
        const int y = static_cast<int>(i / 3) / raw.width;
        return store(valueAt(raw, x, y, cells[static_cast<std::size_t>(x % 2 + 2 * (y % 2))][i % 3]));
    });
    expectGaps(dst, 0xA5);
}

const std::vector<VexaSize> sizes = {{1, 1}, {2, 2}, {3, 3}, {15, 16}, {5, 70}, {515, 4}, {1026, 3}};

TEST(Demosaic, EveryCellOfTheTable)
{
    for (const VexaSize& size : sizes) {
        const VexaImage bytes = noise<u8>(size, 1, 3);
        for (const auto& [seq, cells] : plain) expectStencils<u8>(bytes, seq, cells, boundedBy(255));
        for (const auto& [seq, cells] : highQuality8) expectStencils<u8>(bytes, seq, cells, wrapped);
        for (const int bits : {12, 16}) {
            VexaImage words = noise<u16>(size, 1, 5);
            words.setDataBits(bits);
            const Store store = boundedBy(std::pow(2.0, bits) - 1);
            for (const auto& [seq, cells] : plain) expectStencils<u16>(words, seq, cells, store);
            for (const auto& [seq, cells] : highQuality16) expectStencils<u16>(words, seq, cells, store);
        }
    }
}

/// Weights that sum to more than 1 wrap around in 8 bits.
TEST(Demosaic, FlatImages)
{
    VexaImage dst;
    ASSERT_EQ(co::demosaic(constant<u8>({2, 2}, 1, 255), dst, VEXA_BAYER_RGGB_HQ), success);
    EXPECT_EQ(download<u8>(dst), (std::vector<u8>{30, 255, 255, 223, 255, 239, 239, 255, 223, 255, 255, 62}));
    ASSERT_EQ(co::demosaic(constant<u8>({2, 2}, 1, 77), dst, VEXA_BAYER_RGGB), success);
    EXPECT_EQ(download<u8>(dst), std::vector<u8>(12, 77));
}

// ---- directional filtering ----

struct Layout {
    VexaBayerSeq seq;
    int redX, redY;  ///< parity of the red sites; blue ones are diagonal to them
};

const Layout layouts[] = {
    {VEXA_BAYER_RGGB, 0, 0}, {VEXA_BAYER_BGGR, 1, 1}, {VEXA_BAYER_GRBG, 1, 0}, {VEXA_BAYER_GBRG, 0, 1}};

/// Directional filtering with an a-posteriori decision (Menon, Andriani and Calvagno 2007), one pixel at a time.
class Directional {
public:
    Directional(const Raw& raw, const Layout& layout, double top)
        : _raw(raw),
          _layout(layout),
          _store(boundedBy(top)),
          _slots(static_cast<std::size_t>(raw.width * raw.height)),
          _vertical(_slots.size())
    {
        forEach(0, [&](int x, int y) { chooseGreen(x, y); });
        forEach(1, [&](int x, int y) {
            if (isGreen(x, y)) fillGreenSite(x, y);
        });
        forEach(1, [&](int x, int y) {
            if (!isGreen(x, y)) fillColoredSite(x, y);
        });
    }

    double operator[](std::size_t element) const { return _slots[element / 3][element % 3]; }

private:
    using Pixel = std::array<double, 3>;

    void forEach(int margin, const std::function<void(int, int)>& rule)
    {
        for (int y = margin; y < _raw.height - margin; ++y)
            for (int x = margin; x < _raw.width - margin; ++x) rule(x, y);
    }
    bool isGreen(int x, int y) const { return (x + y + _layout.redX + _layout.redY) % 2 != 0; }
    bool isRedRow(int y) const { return y % 2 == _layout.redY; }
    Pixel& at(int x, int y) { return _slots[static_cast<std::size_t>(y * _raw.width + x)]; }

    /// The sample at a distance along a direction.
    double along(bool vertical, int x, int y, int d) const
    {
        return vertical ? _raw.orZero(x, y + d) : _raw.orZero(x + d, y);
    }
    double green(bool vertical, int x, int y) const
    {
        const auto T = [&](int d) { return along(vertical, x, y, d); };
        return (2 * (T(-1) + T(0) + T(1)) - T(-2) - T(2)) / 4;
    }
    double chrominance(bool vertical, int x, int y) const { return _raw.orZero(x, y) - green(vertical, x, y); }

    /// Differences along the direction at five places, given as steps along and across it.
    double gradients(bool vertical, int x, int y) const
    {
        const auto chroma = [&](int a, int c) {
            return vertical ? chrominance(true, x + c, y + a) : chrominance(false, x + a, y + c);
        };
        const auto step = [&](int from, int to, int across) {
            return std::abs(chroma(from, across) - chroma(to, across));
        };
        if (vertical) return step(0, 2, -2) + step(-2, 0, 0) + step(0, 2, 0) + step(2, 4, 0) + step(0, 2, 2);
        return step(-2, 0, 0) + step(0, 2, -2) + step(0, 2, 0) + step(0, 2, 2) + step(2, 4, 0);
    }

    void chooseGreen(int x, int y)
    {
        at(x, y).fill(_store(_raw.orZero(x, y)));
        if (isGreen(x, y)) return;
        const bool vertical = gradients(true, x, y) < gradients(false, x, y);
        _vertical[static_cast<std::size_t>(y * _raw.width + x)] = vertical;
        at(x, y)[1] = _store(green(vertical, x, y));
    }

    /// The pixel's slot `from` and half the differences that its neighbours have between the slots.
    double fromNeighbours(bool vertical, int x, int y, std::size_t slot, std::size_t from)
    {
        const Pixel& before = vertical ? at(x, y - 1) : at(x - 1, y);
        const Pixel& after = vertical ? at(x, y + 1) : at(x + 1, y);
        return _store(at(x, y)[from] + ((before[slot] - before[from]) + (after[slot] - after[from])) / 2);
    }
    void fillGreenSite(int x, int y)
    {
        const double blue = fromNeighbours(isRedRow(y), x, y, 0, 1);
        const double red = fromNeighbours(!isRedRow(y), x, y, 2, 1);
        at(x, y) = {blue, at(x, y)[1], red};
    }
    void fillColoredSite(int x, int y)
    {
        const std::size_t own = isRedRow(y) ? 2 : 0;
        at(x, y)[2 - own] = fromNeighbours(_vertical[static_cast<std::size_t>(y * _raw.width + x)], x, y, 2 - own, own);
    }

    const Raw& _raw;
    const Layout& _layout;
    Store _store;
    std::vector<Pixel> _slots;
    std::vector<bool> _vertical;
};

template <typename T>
void expectDirectional(const VexaImage& src, int bits)
{
    const Raw raw(src, T());
    for (const Layout& layout : layouts) {
        SCOPED_TRACE(testing::Message() << "layout " << layout.seq << ", " << bits << " bits, " << raw.width << "x"
                                        << raw.height);
        const Directional expected(raw, layout, std::pow(2.0, bits) - 1);
        for (const bool refine : {false, true}) {
            VexaImage dst(src.size(), formatOf<T>(3));
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(co::demosaicDFPD(src, dst, layout.seq, refine), success);
            expectElements<T>(dst, [&](std::size_t i) { return expected[i]; });
            expectGaps(dst, 0xA5);
        }
    }
}

TEST(DemosaicDFPD, PixelByPixel)
{
    for (const VexaSize& size : sizes) {
        expectDirectional<u8>(noise<u8>(size, 1, 7), 8);
        VexaImage words = noise<u16>(size, 1, 8);
        expectDirectional<u16>(words, 16);
        words.setDataBits(12);
        expectDirectional<u16>(words, 12);
    }
}

/// Stripes are filtered along them, so gray stays gray; across them it would not.
TEST(DemosaicDFPD, FollowsEdges)
{
    const VexaSize size{24, 24};
    for (const bool vertical : {false, true}) {
        std::vector<u8> stripes;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) stripes.push_back((vertical ? x : y) / 3 % 2 ? 200 : 40);
        for (const Layout& layout : layouts) {
            VexaImage dst;
            ASSERT_EQ(co::demosaicDFPD(imageOf<u8>(size, 1, stripes), dst, layout.seq, false), success);
            const std::vector<u8> pixels = download<u8>(dst);
            for (int y = 8; y < 16; ++y)
                for (int x = 8; x < 16; ++x)
                    for (std::size_t c = 0; c < 3; ++c) {
                        const auto i = static_cast<std::size_t>(y * size.width + x);
                        EXPECT_EQ(pixels[3 * i + c], stripes[i]) << x << ", " << y;
                    }
        }
    }
}

// ---- statuses ----

using Operation = std::function<VexaStatus(const VexaImage& src, VexaImage& dst, VexaBayerSeq seq)>;

/// `seq` is one that the operation serves, `refused` its status for one that it doesn't.
void expectChecks(const Operation& operation, VexaStatus refused)
{
    VexaImage dst;
    EXPECT_EQ(operation(VexaImage(), dst, VEXA_BAYER_RGGB), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(operation(VexaImage(8, 6, VEXA_8UC3), dst, VEXA_BAYER_RGGB), badChannels);
    EXPECT_FALSE(dst.isInitialized());
    const VexaImage src(8, 6, VEXA_8UC1);
    const struct {
        VexaType type;
        int width, height;
        VexaStatus status;
    } destinations[] = {{VEXA_16UC1, 9, 6, badChannels},
                        {VEXA_8UC3, 9, 6, mode},
                        {VEXA_8UC3, 8, 7, mode},
                        {VEXA_16UC3, 8, 6, mode},
                        {VEXA_8UC3, 8, 6, success}};
    for (const auto& expected : destinations) {
        VexaImage other(expected.width, expected.height, expected.type);
        EXPECT_EQ(operation(src, other, VEXA_BAYER_RGGB), expected.status) << expected.type;
    }
    VexaImage fromFloat;
    EXPECT_EQ(operation(VexaImage(8, 6, VEXA_32FC1), fromFloat, VEXA_BAYER_BLANK), badDepth);
    EXPECT_EQ(fromFloat.type(), VEXA_32FC3);
    for (const int seq : {-1, int{VEXA_BAYER_BLANK}, 9}) {
        VexaImage created;
        EXPECT_EQ(operation(src, created, static_cast<VexaBayerSeq>(seq)), refused) << seq;
        EXPECT_EQ(created.type(), VEXA_8UC3);
    }
}

TEST(Demosaic, Checks)
{
    expectChecks([](const VexaImage& src, VexaImage& dst, VexaBayerSeq seq) { return co::demosaic(src, dst, seq); },
                 mode);
}

TEST(DemosaicDFPD, Checks)
{
    const Operation operation = [](const VexaImage& src, VexaImage& dst, VexaBayerSeq seq) {
        return co::demosaicDFPD(src, dst, seq, true);
    };
    expectChecks(operation, VEXA_INVALID_ARG_ERROR);
    for (int seq = VEXA_BAYER_BGGR_HQ; seq <= VEXA_BAYER_GBRG_HQ; ++seq) {
        VexaImage dst;
        EXPECT_EQ(operation(VexaImage(8, 6, VEXA_16UC1), dst, static_cast<VexaBayerSeq>(seq)), VEXA_INVALID_ARG_ERROR);
    }
}

}  // namespace
