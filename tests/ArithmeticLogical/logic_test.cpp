/// @file
/// Logic, complement and shifts against whole-number arithmetic in wider words.

#include <climits>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

u32 shiftedLeft(u32 a, int bits, u32 top)
{
    const u64 word = bits < 0 || bits > 31 ? 0 : (u64{a} << bits) % 0x100000000U;
    return word >= 0x80000000U ? 0 : word > top ? top : static_cast<u32>(word);
}

u32 shiftedRight(u32 a, int bits)
{
    return bits < 0 || bits > 31 ? 0 : static_cast<u32>(a / (u64{1} << bits));
}

/// An operation on an image, of which some take a second one and others a constant. Destinations are compared by type
/// or only by depth, and created by type or only by depth. Of the exact result the low bits are stored.
struct Operation {
    const char* name;
    VexaStatus (*call)(const VexaImage& src, const VexaImage& other, int n, VexaImage& dst);
    u32 (*exact)(u32 a, u32 b, int n, u32 top);
    bool comparesType, createsType;
};
// clang-format off
const Operation operations[] = {
    {"AND of two", [](auto& src, auto& other, int, auto& dst) { return al::AND(src, other, dst); },
                   [](u32 a, u32 b, int, u32) { return a & b; }, false, false},
    {"OR of two", [](auto& src, auto& other, int, auto& dst) { return al::OR(src, other, dst); },
                  [](u32 a, u32 b, int, u32) { return a | b; }, false, false},
    {"XOR of two", [](auto& src, auto& other, int, auto& dst) { return al::XOR(src, other, dst); },
                   [](u32 a, u32 b, int, u32) { return a ^ b; }, false, false},
    {"AND", [](auto& src, auto&, int n, auto& dst) { return al::AND(src, n, dst); },
            [](u32 a, u32, int n, u32) { return a & static_cast<u32>(n); }, false, false},
    {"OR", [](auto& src, auto&, int n, auto& dst) { return al::OR(src, n, dst); },
           [](u32 a, u32, int n, u32) { return a | static_cast<u32>(n); }, false, false},
    {"XOR", [](auto& src, auto&, int n, auto& dst) { return al::XOR(src, n, dst); },
            [](u32 a, u32, int n, u32) { return a ^ static_cast<u32>(n); }, false, false},
    {"NOT", [](auto& src, auto&, int, auto& dst) { return al::NOT(src, dst); },
            [](u32 a, u32, int, u32 top) { return top - a; }, true, true},
    {"SHL", [](auto& src, auto&, int n, auto& dst) { return al::SHL(src, n, dst); },
            [](u32 a, u32, int n, u32 top) { return shiftedLeft(a, n, top); }, false, true},
    {"SHR", [](auto& src, auto&, int n, auto& dst) { return al::SHR(src, n, dst); },
            [](u32 a, u32, int n, u32) { return shiftedRight(a, n); }, true, false},
};
// clang-format on
constexpr int countOfTwo = 3;

template <typename T>
void expectAll(const VexaImage& src, const std::vector<int>& constants)
{
    const VexaImage other = noise<T>(src.size(), src.channels(), 2);
    const std::vector<T> a = download<T>(src);
    const std::vector<T> b = download<T>(other);
    for (const Operation& operation : operations)
        for (const int n : constants) {
            SCOPED_TRACE(std::string(operation.name) + " " + std::to_string(n));
            VexaImage dst(src.size(), src.type());
            fillBuffer(dst, 0xA5);
            VexaImage inPlace(src);
            ASSERT_EQ(operation.call(src, other, n, dst), VEXA_SUCCESS);
            ASSERT_EQ(operation.call(inPlace, other, n, inPlace), VEXA_SUCCESS);
            expectElements<T>(dst, [&](auto i) {
                return static_cast<T>(operation.exact(a[i], b[i], n, std::numeric_limits<T>::max()));
            });
            expectGaps(dst, 0xA5);
            EXPECT_EQ(download<T>(inPlace), download<T>(dst));
        }
}

TEST(Logic, AgreesWithWiderWords)
{
    std::vector<int> constants = {0x55AA, 0x10F, 0x12345, 256, 65537, -32768, INT_MIN, INT_MAX};
    for (int n = -2; n <= 40; ++n) constants.push_back(n);
    std::vector<u8> bytes;
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<u8>(i));
    expectAll<u8>(rowOf<u8>(bytes), constants);
    expectAll<u16>(rowOf<u16>({0, 1, 2, 127, 128, 255, 256, 4097, 32767, 32768, 65534, 65535}), constants);
    for (const VexaSize& size : edgeSizes())
        for (const int channels : {1, 3}) {
            expectAll<u8>(noise<u8>(size, channels, 1), {1, 0x5A});
            expectAll<u16>(noise<u16>(size, channels, 1), {1, 0x5A});
        }
}

TEST(Logic, SupportsExactlyItsTypes)
{
    for (const Operation& operation : operations)
        for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
            const auto type = static_cast<VexaType>(row);
            const bool served = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3;
            const VexaStatus status = served ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR;
            const VexaImage src(5, 3, type);
            VexaImage made(5, 3, type);
            VexaImage empty;
            EXPECT_EQ(operation.call(src, src, 1, made), status) << operation.name << " of type " << row;
            EXPECT_EQ(operation.call(src, src, 1, empty), status) << operation.name << " of type " << row;
            EXPECT_EQ(empty.type(), operation.createsType ? type : getType(src.depth(), src.channels(), false))
                << operation.name << " of type " << row << ": created, even if it is refused";
        }
}

TEST(Logic, ChecksInOrder)
{
    const VexaImage src(5, 3, VEXA_8UC1);
    const VexaImage otherSign(5, 3, VEXA_8SC1);
    const VexaImage tight(5, 3, 5, 8, 1);
    std::vector<VexaImage> misfits = {{4, 3, VEXA_8UC1}, {5, 4, VEXA_8UC1}, {5, 3, VEXA_8UC3}, {5, 3, VEXA_16UC1}};
    VexaImage untouched;
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        EXPECT_EQ(operation.call(VexaImage(), src, 1, untouched), VEXA_IMAGE_NOT_INITIALIZED);
        for (VexaImage& misfit : misfits) EXPECT_EQ(operation.call(src, src, 1, misfit), VEXA_NOT_SUPPORTED_MODE_ERROR);
        VexaImage dst(otherSign);
        EXPECT_EQ(operation.call(src, src, 1, dst),
                  operation.comparesType ? VEXA_NOT_SUPPORTED_MODE_ERROR : VEXA_SUCCESS);
        VexaImage tightDst(5, 3, 5, 8, 1);
        EXPECT_EQ(operation.call(src, tight, 1, tightDst), VEXA_SUCCESS) << "by the pitch of src, but inside";
    }
    for (int i = 0; i < countOfTwo; ++i) {
        EXPECT_EQ(operations[i].call(src, VexaImage(), 1, untouched), VEXA_IMAGE_NOT_INITIALIZED);
        for (const VexaImage& misfit : misfits)
            EXPECT_EQ(operations[i].call(src, misfit, 1, untouched), VEXA_NOT_SUPPORTED_MODE_ERROR);
        VexaImage dst;
        EXPECT_EQ(operations[i].call(src, otherSign, 1, dst), VEXA_SUCCESS) << "the type of the first decides";
        EXPECT_EQ(operations[i].call(otherSign, src, 1, dst), VEXA_NOT_SUPPORTED_MODE_ERROR);
    }
    EXPECT_FALSE(untouched.isInitialized());
}

}  // namespace
