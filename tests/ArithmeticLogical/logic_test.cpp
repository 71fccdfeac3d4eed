/// @file
/// Bitwise complement.

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

template <typename T>
void expectComplement()
{
    for (const int channels : {1, 3})
        for (const VexaSize& size : edgeSizes()) {
            const VexaImage src = noise<T>(size, channels, 1);
            VexaImage dst(size, src.type());
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(al::NOT(src, dst), VEXA_SUCCESS);
            const std::vector<T> before = download<T>(src);
            const double top = std::numeric_limits<T>::max();
            expectElements<T>(dst, [&](std::size_t i) { return top - before[i]; });
            expectGaps(dst, 0xA5);
        }
}

TEST(Not, ComplementsWithinTheElement)
{
    expectComplement<u8>();
    expectComplement<u16>();
}

TEST(Not, CreatesAndRunsInPlace)
{
    const VexaImage src = rowOf<u16>({1, 0, 65535});
    VexaImage dst;
    ASSERT_EQ(al::NOT(src, dst), VEXA_SUCCESS);
    EXPECT_EQ(dst.type(), VEXA_16UC1);
    EXPECT_EQ(download<u16>(dst), (std::vector<u16>{65534, 65535, 0}));
    ASSERT_EQ(al::NOT(dst, dst), VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(dst), download<u16>(src));
}

TEST(Not, SupportsExactlyItsTypes)
{
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool supported = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3;
        VexaImage dst;
        EXPECT_EQ(al::NOT(VexaImage(3, 2, type), dst), supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR) << row;
        EXPECT_EQ(dst.type(), type) << "created before a type is refused";
    }
}

TEST(Not, ChecksInOrder)
{
    const VexaImage src = constant<u8>({5, 3}, 1, 9);
    VexaImage empty;
    VexaImage untouched;
    EXPECT_EQ(al::NOT(empty, untouched), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(untouched.isInitialized());
    const VexaImage misfits[] = {VexaImage(4, 3, VEXA_8UC1), VexaImage(5, 4, VEXA_8UC1), VexaImage(5, 3, VEXA_8SC1),
                                 VexaImage(5, 3, VEXA_8UC3), VexaImage(5, 3, VEXA_16UC1)};
    for (const VexaImage& misfit : misfits) {
        VexaImage dst(misfit);
        const void* const buffer = dst.ptr();
        EXPECT_EQ(al::NOT(src, dst), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(dst.ptr(), buffer);
    }
}

}  // namespace
