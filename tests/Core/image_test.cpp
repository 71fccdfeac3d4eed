/// @file
/// VexaImage: allocation, copies, transfers, single pixels and convertTo. Buffers are compared as a whole, with the
/// gaps behind their rows, against bytes moved one by one.

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "transfers.h"

using kit::u16;
using kit::u8;

/// Allocations that can't be met are part of these tests.
extern "C" VEXA_API const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

constexpr VexaType types[] = {VEXA_8UC1, VEXA_8SC3, VEXA_16UC3, VEXA_16SC2, VEXA_32FC4, VEXA_32SC1, VEXA_64FC2};

/// An image whose whole buffer is noise.
VexaImage noisy(VexaSize size, VexaType type, std::uint32_t seed)
{
    VexaImage image(size, type);
    EXPECT_EQ(image.upload(kit::noiseBytes(static_cast<std::size_t>(image.pitch()) * size.height, seed).data()),
              VEXA_SUCCESS);
    return image;
}

int pixelBytes(const VexaImage& image)
{
    return image.channels() * image.depth() / 8;
}

/// The fields in memory, in the order that code compiled against the library relies on.
TEST(Image, Layout)
{
    struct Fields {
        bool init, isSigned;
        void* data;
        Vexa32s width, height, pitch, depth, channels, dataBits;
        VexaChannelSeq channelSequence;
        VexaType type;
    };
    static_assert(std::is_standard_layout_v<VexaImage> && sizeof(VexaImage) == sizeof(Fields));
    VexaImage image(3, 2, 40, -16, 4);
    EXPECT_EQ(image.setDataBits(11), VEXA_SUCCESS);
    Fields fields;
    std::memcpy(static_cast<void*>(&fields), static_cast<const void*>(&image), sizeof fields);
    EXPECT_EQ(kit::fieldsOf(image),
              kit::Fields(fields.init, fields.isSigned, fields.data, fields.width, fields.height, fields.pitch,
                          fields.depth, fields.channels, fields.dataBits, fields.channelSequence, fields.type));
    EXPECT_EQ(fields.pitch, 40);
    EXPECT_EQ(fields.dataBits, 11);
    EXPECT_EQ(image.ptr<unsigned char>(), fields.data);
    EXPECT_EQ(image.ptr<unsigned short>(), fields.data);
    EXPECT_EQ(image.ptr<float>(), fields.data);
}

TEST(Image, CreateChecksInOrder)
{
    struct Row {
        int width, height, depth, channels;
        VexaStatus status;
    };
    // clang-format off
    const Row rows[] = {
        {0, 10, 8, 1, VEXA_INVALID_ARG_ERROR}, {INT_MIN, 10, 8, 1, VEXA_INVALID_ARG_ERROR},
        {10, 0, 8, 1, VEXA_INVALID_ARG_ERROR}, {10, INT_MIN, 8, 1, VEXA_INVALID_ARG_ERROR},
        {-1, 10, 12, 5, VEXA_INVALID_ARG_ERROR},
        {10, 10, 8, 0, VEXA_CHANNEL_NOT_SUPPORTED_ERROR}, {10, 10, 12, INT_MIN, VEXA_CHANNEL_NOT_SUPPORTED_ERROR},
        {10, 10, 8, 5, VEXA_CHANNEL_NOT_SUPPORTED_ERROR}, {10, 10, 12, INT_MAX, VEXA_CHANNEL_NOT_SUPPORTED_ERROR},
        {10, 10, 12, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR}, {10, 10, 24, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {10, 10, 4, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR}, {10, 10, 1, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {10, 10, -48, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR}, {10, 10, INT_MIN, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {10, 10, INT_MAX, 1, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {INT_MAX, 1, 64, 4, VEXA_MEM_ALLOC_ERR}, {INT_MAX, INT_MAX, 8, 1, VEXA_MEM_ALLOC_ERR},
        {INT_MAX, INT_MAX, 1 << 30, 4, VEXA_MEM_ALLOC_ERR},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << " " << row.depth << " " << row.channels);
        VexaImage image;
        EXPECT_EQ(image.create(row.width, row.height, row.depth, row.channels), row.status);
        EXPECT_EQ(image.create({row.width, row.height}, row.depth, row.channels), row.status);
        EXPECT_EQ(image.create(row.width, row.height, INT_MAX, row.depth, row.channels), row.status);
        kit::expectEmpty(image);
        kit::expectEmpty(VexaImage(row.width, row.height, row.depth, row.channels));
        kit::expectEmpty(VexaImage({row.width, row.height}, row.depth, row.channels));
        kit::expectEmpty(VexaImage(row.width, row.height, INT_MAX, row.depth, row.channels));
    }
    VexaImage image;
    EXPECT_EQ(image.create(0, 10, VEXA_NO_TYPE), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(image.create(10, 10, VEXA_NO_TYPE), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(image.create({10, 10}, VEXA_UNKNOWN_TYPE), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(image.create(10, 10, INT_MIN, 8, 1), VEXA_MEM_ALLOC_ERR);
    kit::expectEmpty(image);
    kit::expectEmpty(VexaImage(VexaSize(10, 10), VEXA_NO_TYPE));
}

TEST(Image, CreateEveryFormat)
{
    const VexaSize size(5, 4);
    const VexaChannelSeq sequences[] = {VEXA_CHANNEL_SEQ_LUMINANCE, VEXA_CHANNEL_SEQ_LUMINANCE, VEXA_CHANNEL_SEQ_BGR,
                                        VEXA_CHANNEL_SEQ_BGRA};
    // Depths that no format has make images too; only the operations refuse them.
    for (const int depth : {8, -8, 16, -16, 32, -32, 64, -64, 0, 128, -128, 256})
        for (int channels = 1; channels <= 4; ++channels) {
            SCOPED_TRACE(testing::Message() << depth << " " << channels);
            const int bits = std::abs(depth);
            const VexaType type = getType(bits, channels, depth < 0);
            const auto expect = [&](VexaImage image) {
                EXPECT_EQ(kit::fieldsOf(image), kit::Fields(true, depth < 0, image.ptr(), 5, 4, image.pitch(), bits,
                                                            channels, bits, sequences[channels - 1], type));
                EXPECT_GE(image.pitch(), 5 * channels * bits / 8);
                EXPECT_EQ(image.release(), VEXA_SUCCESS);
                kit::expectEmpty(image, type, depth < 0);
                EXPECT_EQ(image.release(), VEXA_IMAGE_NOT_INITIALIZED);
            };
            // Constructed in place of the parameter, so no copy is made on the way.
            expect(VexaImage(5, 4, depth, channels));
            expect(VexaImage(size, depth, channels));
            expect(VexaImage(5, 4, 5 * channels * bits / 8 + 3, depth, channels));
            if (type == VEXA_NO_TYPE) continue;
            expect(VexaImage(5, 4, type));
            expect(VexaImage(size, type));
        }
}

TEST(Image, CreateOnAnInitialisedImageDoesNothing)
{
    VexaImage image = noisy({5, 4}, VEXA_16SC3, 1);
    const kit::Fields fields = kit::fieldsOf(image);
    const std::vector<u8> pixels = kit::bufferOf(image);
    EXPECT_EQ(image.create(9, 9, 8, 1), VEXA_SUCCESS);
    EXPECT_EQ(image.create(0, -1, 12, 7), VEXA_SUCCESS);
    EXPECT_EQ(image.create(9, 9, 64, 8, 1), VEXA_SUCCESS);
    EXPECT_EQ(image.create(0, 0, -1, 12, 0), VEXA_SUCCESS);
    EXPECT_EQ(image.create({9, 9}, 8, 1), VEXA_SUCCESS);
    EXPECT_EQ(image.create(9, 9, VEXA_NO_TYPE), VEXA_SUCCESS);
    EXPECT_EQ(image.create({9, 9}, VEXA_8UC1), VEXA_SUCCESS);
    EXPECT_EQ(kit::fieldsOf(image), fields);
    EXPECT_EQ(kit::bufferOf(image), pixels);

    EXPECT_EQ(image.release(), VEXA_SUCCESS);
    EXPECT_EQ(image.create(9, 4, VEXA_8UC1), VEXA_SUCCESS);
    EXPECT_EQ(image.width(), 9);
    EXPECT_EQ(image.type(), VEXA_8UC1);
    EXPECT_FALSE(image.isSigned());
}

TEST(Image, PitchOfTheCallers)
{
    for (const int pitch : {0, 1, 4, 10, 11, 77}) {
        SCOPED_TRACE(pitch);
        VexaImage image(10, 3, pitch, 8, 1);
        ASSERT_TRUE(image.isInitialized());
        EXPECT_EQ(image.pitch(), pitch);
        // The last row is inside the buffer whatever the pitch.
        EXPECT_EQ(image.set(9, 2, 0, 200), VEXA_SUCCESS);
        EXPECT_EQ(image.get(9, 2, 0), 200);
        std::vector<u8> rows(30, 7);
        EXPECT_EQ(image.upload(rows.data(), 10), pitch >= 10 ? VEXA_SUCCESS : VEXA_MEMCPY_H2D_ERROR);
        EXPECT_EQ(image.download(rows.data(), 10), pitch >= 10 ? VEXA_SUCCESS : VEXA_MEMCPY_D2H_ERROR);
        EXPECT_EQ(image.release(), VEXA_SUCCESS);
    }
}

TEST(Image, Setters)
{
    VexaImage image;
    EXPECT_EQ(image.setDataBits(0), VEXA_SUCCESS);
    EXPECT_EQ(image.setDataBits(1), VEXA_INVALID_ARG_ERROR);
    ASSERT_EQ(image.create(2, 2, VEXA_16SC1), VEXA_SUCCESS);
    for (const int bits : {-1, 17, INT_MIN, INT_MAX}) {
        EXPECT_EQ(image.setDataBits(bits), VEXA_INVALID_ARG_ERROR) << bits;
        EXPECT_EQ(image.dataBits(), 16);
    }
    for (const int bits : {0, 12, 16}) {
        EXPECT_EQ(image.setDataBits(bits), VEXA_SUCCESS) << bits;
        EXPECT_EQ(image.dataBits(), bits);
    }
    const std::vector<u8> before = kit::bufferOf(image);
    image.setChannelSequence(VEXA_CHANNEL_SEQ_RGBA);
    EXPECT_EQ(image.channelSeq(), VEXA_CHANNEL_SEQ_RGBA);
    EXPECT_EQ(kit::bufferOf(image), before);
    EXPECT_EQ(image.show("window", 0), VEXA_SUCCESS);
    EXPECT_EQ(VexaImage().show("window", 0), VEXA_SUCCESS);
}

/// Same size, format, sequence, data bits and pixels, in buffers of their own.
void expectCopy(const VexaImage& copy, const VexaImage& source)
{
    ASSERT_TRUE(copy.isInitialized());
    EXPECT_NE(copy.ptr(), source.ptr());
    kit::Fields expectedFields = kit::fieldsOf(source);
    std::get<2>(expectedFields) = copy.ptr();
    std::get<5>(expectedFields) = copy.pitch();
    ASSERT_EQ(kit::fieldsOf(copy), expectedFields);
    const int rowBytes = source.width() * pixelBytes(source);
    std::vector<u8> copied(static_cast<std::size_t>(rowBytes) * source.height());
    std::vector<u8> expected(copied.size());
    EXPECT_EQ(copy.download(copied.data(), rowBytes), VEXA_SUCCESS);
    EXPECT_EQ(source.download(expected.data(), rowBytes), VEXA_SUCCESS);
    EXPECT_EQ(copied, expected);
}

TEST(Image, CopiesAreDeep)
{
    for (const VexaType type : types) {
        SCOPED_TRACE(type);
        VexaImage source = noisy({17, 9}, type, 5);
        source.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        EXPECT_EQ(source.setDataBits(7), VEXA_SUCCESS);
        VexaImage copy(source);
        expectCopy(copy, source);
        EXPECT_EQ(copy.pitch(), source.pitch());
        VexaImage assigned;
        assigned = source;
        expectCopy(assigned, source);
        VexaImage replaced = noisy({3, 40}, VEXA_8UC1, 6);
        replaced = source;
        expectCopy(replaced, source);

        const double before = source.get(2, 2, 0);
        EXPECT_EQ(source.set(2, 2, 0, before == 1 ? 2 : 1), VEXA_SUCCESS);
        for (const VexaImage* image : {&copy, &assigned, &replaced}) EXPECT_EQ(image->get(2, 2, 0), before);
    }
}

TEST(Image, CopyHasAPitchOfItsOwn)
{
    VexaImage source(10, 3, 13, 8, 1);
    const std::vector<u8> bytes = kit::noiseBytes(39, 8);
    EXPECT_EQ(source.upload(bytes.data()), VEXA_SUCCESS);
    const VexaImage copy(source);
    expectCopy(copy, source);
    EXPECT_EQ(copy.pitch(), VexaImage(10, 3, 8, 1).pitch());
}

TEST(Image, CopyOfWhatCanNotBeCopied)
{
    kit::expectEmpty(VexaImage(VexaImage()));
    kit::expectEmpty(VexaImage::null());

    VexaImage kept = noisy({17, 9}, VEXA_16UC3, 5);
    const kit::Fields fields = kit::fieldsOf(kept);
    const std::vector<u8> pixels = kit::bufferOf(kept);
    kept = VexaImage();
    kept = VexaImage::null();
    const VexaImage& itself = kept;
    kept = itself;
    EXPECT_EQ(kit::fieldsOf(kept), fields);
    EXPECT_EQ(kit::bufferOf(kept), pixels);

    // An image whose depth makes no format can't be created by its format.
    const VexaImage formless(5, 4, 128, 1);
    ASSERT_TRUE(formless.isInitialized());
    kit::expectEmpty(VexaImage(formless));
    kept = formless;
    kit::expectEmpty(kept, VEXA_16UC3);
}

TEST(Transfers, MoveTheirPixelsAndNothingElse)
{
    const kit::Region region{{2, 3}, {1, 2}, {4, 3}};
    for (const VexaType type : types)
        for (const kit::Transfer& transfer : kit::transfers()) {
            SCOPED_TRACE(testing::Message() << transfer.name << " of type " << type);
            VexaImage image = noisy({7, 5}, type, 11);
            const int bytes = pixelBytes(image);
            const bool isRegion = transfer.moves == kit::Moves::region;
            const bool isBuffer = transfer.moves == kit::Moves::buffer;
            const int hostPitch = isBuffer ? image.pitch() : 11 * bytes + 3;
            std::vector<u8> host = kit::noiseBytes(static_cast<std::size_t>(hostPitch) * 9, 12);

            std::vector<u8> expectedBuffer = kit::bufferOf(image);
            std::vector<u8> expectedHost = host;
            const int rowBytes = isBuffer ? image.pitch() : (isRegion ? 4 : 7) * bytes;
            for (int y = 0; y < (isRegion ? 3 : 5); ++y)
                for (int x = 0; x < rowBytes; ++x) {
                    const int inHost = isRegion ? (3 + y) * hostPitch + 2 * bytes + x : y * hostPitch + x;
                    const int inImage = isRegion ? (2 + y) * image.pitch() + bytes + x : y * image.pitch() + x;
                    if (transfer.toImage)
                        expectedBuffer[inImage] = host[inHost];
                    else
                        expectedHost[inHost] = expectedBuffer[inImage];
                }

            EXPECT_EQ(transfer.run(image, host.data(), hostPitch, region), VEXA_SUCCESS);
            EXPECT_EQ(vexa::device::syncCurrentDevice(), VEXA_SUCCESS);
            EXPECT_EQ(kit::bufferOf(image), expectedBuffer);
            EXPECT_EQ(host, expectedHost);
        }
}

TEST(Transfers, RefusedCopiesMoveNothing)
{
    for (const kit::Transfer& transfer : kit::transfers()) {
        SCOPED_TRACE(transfer.name);
        VexaImage empty;
        std::vector<u8> host = kit::noiseBytes(4096, 2);
        const std::vector<u8> hostBefore = host;
        EXPECT_EQ(transfer.run(empty, host.data(), 64, {}), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(transfer.run(empty, nullptr, -1, {}), VEXA_IMAGE_NOT_INITIALIZED);

        VexaImage image = noisy({7, 5}, VEXA_16UC3, 11);
        const std::vector<u8> before = kit::bufferOf(image);
        const kit::Region whole{{0, 0}, {0, 0}, {7, 5}};
        EXPECT_EQ(transfer.run(image, nullptr, 42, whole), transfer.whenCopyFails);
        for (const int pitch : {41, 0, -1, -64, INT_MIN}) {
            if (transfer.moves == kit::Moves::buffer) break;
            EXPECT_EQ(transfer.run(image, host.data(), pitch, whole), transfer.whenCopyFails) << pitch;
        }
        for (const VexaSize& nothing : {VexaSize(0, 2), VexaSize(2, 0)}) {
            if (transfer.moves != kit::Moves::region) break;
            EXPECT_EQ(transfer.run(image, host.data(), 42, {{0, 0}, {3, 3}, nothing}), VEXA_SUCCESS);
        }
        EXPECT_EQ(kit::bufferOf(image), before);
        EXPECT_EQ(host, hostBefore);
    }
}

TEST(CopyTo, MovesARectangle)
{
    const VexaImage source = noisy({9, 8}, VEXA_16UC3, 3);
    VexaImage target = noisy({90, 7}, VEXA_16UC3, 4);
    VexaImage bytes = noisy({30, 7}, VEXA_8UC1, 5);
    ASSERT_NE(source.pitch(), target.pitch());
    // Offsets count pixels of the source, also in an image of another format.
    for (VexaImage* dst : {&target, &bytes}) {
        std::vector<u8> expected = kit::bufferOf(*dst);
        const std::vector<u8> from = kit::bufferOf(source);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 3 * 6; ++x)
                expected[(3 + y) * dst->pitch() + 1 * 6 + x] = from[(2 + y) * source.pitch() + 5 * 6 + x];
        EXPECT_EQ(source.copyTo(*dst, {1, 3}, {5, 2, 3, 4}, VexaStream(true)), VEXA_SUCCESS);
        EXPECT_EQ(kit::bufferOf(*dst), expected);
    }
}

TEST(CopyTo, CreatesAnEmptyDestination)
{
    const VexaImage source = noisy({9, 8}, VEXA_16SC3, 3);
    VexaImage dst;
    EXPECT_EQ(VexaImage().copyTo(dst, {0, 0}, {0, 0, 2, 2}, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
    kit::expectEmpty(dst);
    EXPECT_EQ(source.copyTo(dst, {0, 0}, {5, 2, 3, 4}, VexaStream(false)), VEXA_SUCCESS);
    EXPECT_EQ(dst.width(), 3);
    EXPECT_EQ(dst.height(), 4);
    EXPECT_EQ(dst.type(), VEXA_16SC3);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 3; ++x)
            for (int c = 0; c < 3; ++c) EXPECT_EQ(dst.get(x, y, c), source.get(5 + x, 2 + y, c));

    VexaImage none;
    EXPECT_EQ(source.copyTo(none, {0, 0}, {0, 0, -3, 4}, VexaStream(false)), VEXA_MEMCPY_D2H_ERROR);
    kit::expectEmpty(none);
}

/// The element at the byte where the layout puts it, read as T.
template <typename T>
double decoded(const VexaImage& image, int x, int y, int channel)
{
    T value;
    const std::vector<u8> bytes = kit::bufferOf(image);
    std::memcpy(&value, &bytes[image.pitch() * y + (image.channels() * x + channel) * sizeof(T)], sizeof(T));
    return static_cast<double>(value);
}

TEST(Pixels, EveryElementType)
{
    struct Case {
        double value, stored;
    };
    struct Row {
        int depth;
        double (*decode)(const VexaImage& image, int x, int y, int channel);
        std::vector<Case> cases;
    };
    const double nan = std::nan("");
    const double infinity = std::numeric_limits<double>::infinity();
    const Row rows[] = {
        {8, decoded<unsigned char>, {{300.7, 255}, {3.9, 3}, {-0.5, 0}, {-200, 0}, {200, 200}, {nan, 0}}},
        {-8, decoded<signed char>, {{127.9, 127}, {300, 127}, {-3.9, -3}, {-128.5, -128}, {-infinity, -128}, {nan, 0}}},
        {16, decoded<unsigned short>, {{65535.9, 65535}, {1e9, 65535}, {40000.9, 40000}, {-1, 0}, {nan, 0}}},
        {-16, decoded<short>, {{40000, 32767}, {-40000, -32768}, {-1.9, -1}, {12345.6, 12345}, {nan, 0}}},
        {32,
         decoded<float>,
         {{0.1, 0.1F}, {16777217, 16777216}, {-1e30, -1e30F}, {infinity, infinity}, {1e-40, 1e-40F}}},
        {-32, decoded<int>, {{3e9, INT_MAX}, {-3e9, INT_MIN}, {16777217.9, 16777217}, {-2.5, -2}, {nan, 0}}},
        {64, decoded<double>, {{0.1, 0.1}, {-1e300, -1e300}, {infinity, infinity}, {5e-324, 5e-324}}},
    };
    for (const Row& row : rows)
        for (int channels = 1; channels <= 4; ++channels) {
            SCOPED_TRACE(testing::Message() << row.depth << " " << channels);
            VexaImage image(3, 2, row.depth, channels);
            for (const Case& c : row.cases)
                for (int channel = 0; channel < channels; ++channel) {
                    kit::fillBuffer(image, 0x5A);
                    EXPECT_EQ(image.set(2, 1, channel, c.value), VEXA_SUCCESS);
                    EXPECT_EQ(row.decode(image, 2, 1, channel), c.stored);
                    EXPECT_EQ(image.get(2, 1, channel), c.stored);
                    // Nothing but the bytes of the element has changed.
                    std::vector<u8> bytes = kit::bufferOf(image);
                    const int size = image.depth() / 8;
                    const int first = image.pitch() + (channels * 2 + channel) * size;
                    for (int i = first; i < first + size; ++i) bytes[i] = 0x5A;
                    EXPECT_EQ(bytes, std::vector<u8>(bytes.size(), 0x5A));
                }
        }
}

TEST(Pixels, OutsideTheImage)
{
    VexaImage image = noisy({3, 2}, VEXA_32FC3, 1);
    const std::vector<u8> before = kit::bufferOf(image);
    const int outside[][3] = {{-1, 0, 0},      {3, 0, 0},       {0, -1, 0},      {0, 2, 0},
                              {0, 0, -1},      {0, 0, 3},       {INT_MIN, 0, 0}, {0, INT_MAX, 0},
                              {0, 0, INT_MIN}, {INT_MAX, 0, 0}, {0, INT_MIN, 0}, {0, 0, INT_MAX}};
    for (const auto& [x, y, channel] : outside) {
        EXPECT_EQ(image.get(x, y, channel), 0.0);
        EXPECT_EQ(image.set(x, y, channel, 1.0), VEXA_INVALID_ARG_ERROR);
        if (channel != 0) continue;
        const VexaScalar pixel = image.get(x, y);
        EXPECT_TRUE(pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0 && pixel[3] == 0);
        EXPECT_EQ(image.set(x, y, VexaScalar(1)), VEXA_INVALID_ARG_ERROR);
    }
    EXPECT_EQ(kit::bufferOf(image), before);
    EXPECT_EQ(VexaImage().get(0, 0, 0), 0.0);
    VexaImage empty;
    EXPECT_EQ(empty.set(0, 0, 0, 1.0), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(empty.set(0, 0, VexaScalar(1)), VEXA_INVALID_ARG_ERROR);
}

TEST(Pixels, WholePixels)
{
    for (int channels = 1; channels <= 4; ++channels) {
        VexaImage image(3, 2, -16, channels);
        kit::fillBuffer(image, 0);
        EXPECT_EQ(image.set(1, 1, VexaScalar(-1.5, 40000.0, 3.0, -4.0)), VEXA_SUCCESS);
        const double stored[] = {-1, 32767, 3, -4};
        const VexaScalar pixel = image.get(1, 1);
        EXPECT_TRUE(pixel.isInteger());
        for (int c = 0; c < 4; ++c) EXPECT_EQ(pixel[c], c < channels ? stored[c] : 0) << c << " of " << channels;
        EXPECT_EQ(image.get(2, 1)[0], 0);
    }
}

TEST(Pixels, DepthsWithoutElements)
{
    for (const int depth : {0, 128, 256, 1024}) {
        VexaImage image(3, 2, depth, 2);
        ASSERT_TRUE(image.isInitialized());
        EXPECT_EQ(image.get(1, 1, 1), 0.0) << depth;
        EXPECT_EQ(image.set(1, 1, 1, 5), VEXA_DEPTH_NOT_SUPPORTED_ERROR) << depth;
        EXPECT_EQ(image.set(3, 1, 1, 5), VEXA_INVALID_ARG_ERROR) << depth;
        EXPECT_EQ(image.set(1, 1, VexaScalar(5)), VEXA_SUCCESS) << depth;
        EXPECT_EQ(image.get(1, 1)[0], 0) << depth;
    }
}

TEST(ConvertTo, MakesTheDestination)
{
    VexaImage source = kit::imageOf<u16>({2, 2}, 3, {0, 1, 2, 255, 256, 300, 1000, 4, 5, 6, 7, 65535});
    source.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    ASSERT_EQ(source.setDataBits(3), VEXA_SUCCESS);
    const std::vector<u8> half = {1, 1, 2, 128, 129, 151, 255, 3, 3, 4, 4, 255};  // x / 2 + 1
    VexaImage fresh;
    VexaImage sameType(2, 2, VEXA_8UC3);
    VexaImage otherType(5, 7, VEXA_32FC4);
    VexaImage released(5, 7, VEXA_8UC3);
    ASSERT_EQ(released.release(), VEXA_SUCCESS);
    for (VexaImage* dst : {&fresh, &sameType, &otherType, &released}) {
        void* const data = dst->ptr();
        EXPECT_EQ(source.convertTo(*dst, VEXA_8UC3, 0.5F, 1.0F), VEXA_SUCCESS);
        EXPECT_EQ(dst->type(), VEXA_8UC3);
        EXPECT_EQ(kit::download<u8>(*dst), half);
        EXPECT_EQ(dst->channelSeq(), VEXA_CHANNEL_SEQ_BGR);
        EXPECT_EQ(dst->dataBits(), 8);
        EXPECT_TRUE(dst != &sameType || dst->ptr() == data);
    }
    VexaImage byDepth;
    EXPECT_EQ(source.convertTo(byDepth, 8, 0.5F, 1.0F, VexaStream(true)), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<u8>(byDepth), half);
    VexaImage floats;
    EXPECT_EQ(source.convertTo(floats, 32, 1.0F, 0.25F), VEXA_SUCCESS);
    EXPECT_EQ(floats.type(), VEXA_32FC3);
    EXPECT_EQ(floats.get(1, 1, 2), 65535.25);
}

TEST(ConvertTo, Refusals)
{
    VexaImage source = noisy({4, 3}, VEXA_16UC3, 1);
    source.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    ASSERT_EQ(source.setDataBits(11), VEXA_SUCCESS);
    VexaImage other = noisy({4, 3}, VEXA_32FC3, 2);
    const std::pair fields(kit::fieldsOf(source), kit::fieldsOf(other));
    const std::pair pixels(kit::bufferOf(source), kit::bufferOf(other));
    VexaImage none;
    EXPECT_EQ(none.convertTo(other, VEXA_32FC1, 1, 0), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(none.convertTo(none, VEXA_32FC1, 1, 0), VEXA_IMAGE_NOT_INITIALIZED);
    for (const VexaType type : {VEXA_8UC1, VEXA_32FC4, VEXA_NO_TYPE, VEXA_UNKNOWN_TYPE})
        for (VexaImage* dst : {&none, &other, &source})
            EXPECT_EQ(source.convertTo(*dst, type, 1, 0), VEXA_CHANNEL_NOT_SUPPORTED_ERROR) << type;
    for (const int depth : {-8, -16, -32, -64, 0, 12, 128, INT_MIN, INT_MAX})
        for (VexaImage* dst : {&none, &other, &source})
            EXPECT_EQ(source.convertTo(*dst, depth, 1, 0), VEXA_DEPTH_NOT_SUPPORTED_ERROR) << depth;
    kit::expectEmpty(none);
    EXPECT_EQ(std::pair(kit::fieldsOf(source), kit::fieldsOf(other)), fields);
    EXPECT_EQ(std::pair(kit::bufferOf(source), kit::bufferOf(other)), pixels);

    // A destination of the right type is taken as it is, and then its size matters.
    VexaImage larger = noisy({5, 3}, VEXA_8UC3, 3);
    const std::vector<u8> largerBefore = kit::bufferOf(larger);
    EXPECT_EQ(source.convertTo(larger, VEXA_8UC3, 1, 0), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(kit::bufferOf(larger), largerBefore);
    // A type that nothing converts to: the destination has been made anew by then.
    EXPECT_EQ(source.convertTo(larger, VEXA_64FC3, 1, 0), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(larger.type(), VEXA_64FC3);
    EXPECT_EQ(larger.width(), 4);
}

TEST(ConvertTo, Itself)
{
    struct Row {
        VexaType from, to;
        int bits, bitsAfter;  ///< data bits stay as they are where the new depth has room for them
    };
    const Row rows[] = {
        {VEXA_16UC3, VEXA_8UC3, 12, 8}, {VEXA_16UC3, VEXA_8UC3, 5, 5},    {VEXA_16UC3, VEXA_16UC3, 12, 12},
        {VEXA_8UC1, VEXA_32FC1, 8, 8},  {VEXA_32FC1, VEXA_16UC1, 32, 16}, {VEXA_32FC3, VEXA_8UC3, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.from << " to " << row.to);
        VexaImage image(3, 2, row.from);
        EXPECT_EQ(image.set(2, 1, image.channels() - 1, 100), VEXA_SUCCESS);
        EXPECT_EQ(image.set(0, 0, 0, 255), VEXA_SUCCESS);
        EXPECT_EQ(image.setDataBits(row.bits), VEXA_SUCCESS);
        image.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        EXPECT_EQ(image.convertTo(image, row.to, 0.5F, 1.0F), VEXA_SUCCESS);
        EXPECT_EQ(image.type(), row.to);
        EXPECT_EQ(image.width(), 3);
        EXPECT_EQ(image.height(), 2);
        EXPECT_EQ(image.get(2, 1, image.channels() - 1), 51);
        EXPECT_EQ(image.get(0, 0, 0), image.depth() == 32 ? 128.5 : 128);
        EXPECT_EQ(image.channelSeq(), VEXA_CHANNEL_SEQ_RGB);
        EXPECT_EQ(image.dataBits(), row.bitsAfter);
    }
}

}  // namespace
