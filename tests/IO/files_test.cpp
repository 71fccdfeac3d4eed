/// @file
/// Images to files and back. Files that a test loads were written by OpenCV itself or byte by byte, so that a mistake
/// of saving can't hide one of loading.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "images.h"

namespace io = vexa::io;
using kit::f32;
using kit::u16;
using kit::u8;

namespace {

/// Tests in a folder of their own.
class Files : public testing::Test {
protected:
    Files() : _folder(std::filesystem::path(testing::TempDir()) / ("vexa_files_" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(_folder);
    }
    ~Files() override { std::filesystem::remove_all(_folder); }

    std::string path(const std::string& name) const { return (_folder / name).string(); }

    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string read(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string writePicture(const std::string& name, const cv::Mat& pixels) const
    {
        EXPECT_TRUE(cv::imwrite(path(name), pixels));
        return path(name);
    }

    /// The first half of a picture file.
    std::string writeTruncated(const std::string& name) const
    {
        cv::Mat pixels(64, 64, CV_8UC3);
        cv::randu(pixels, 0, 256);
        writePicture(name, pixels);
        const std::string whole = read(name);
        return write(name, whole.substr(0, whole.size() / 2));
    }

    /// Names under which no picture can be found.
    std::vector<std::string> unreadable() const
    {
        return {path("missing.png"),
                path("missing/folder.png"),
                path(""),
                "",
                write("empty.png", ""),
                write("text.png", "This is no picture.\n"),
                writeTruncated("half.png"),
                writeTruncated("half.tiff"),
                writeTruncated("half.jpg"),
                write("header.png", "\x89PNG\r\n\x1a\n")};
    }

private:
    std::filesystem::path _folder;
};

std::string textThrownBy(const std::string& file)
{
    try {
        (void)io::loadImage(file, VEXA_LOAD_IMAGE_DEFAULT);
    } catch (const char* text) {
        return text;
    }
    return "nothing thrown";
}

/// Saves noise and loads it again.
template <typename T>
void expectRoundTrip(const std::string& file, int channels)
{
    SCOPED_TRACE(file + " with " + std::to_string(channels) + " channels");
    for (const VexaSize& size : kit::edgeSizes()) {
        VexaImage image = kit::noise<T>(size, channels, 7);
        ASSERT_EQ(io::saveImage(image, file), VEXA_SUCCESS);
        const VexaImage loaded = io::loadImage(file, VEXA_LOAD_IMAGE_DEFAULT);
        ASSERT_EQ(loaded.type(), image.type());
        ASSERT_EQ(loaded.width(), size.width);
        ASSERT_EQ(loaded.height(), size.height);
        EXPECT_EQ(kit::download<T>(loaded), kit::download<T>(image));
    }
}

TEST_F(Files, SavesAndLoadsWithoutLoss)
{
    for (const int channels : {1, 3, 4}) {
        expectRoundTrip<u8>(path("a.png"), channels);
        expectRoundTrip<u16>(path("a.png"), channels);
        expectRoundTrip<u8>(path("a.tiff"), channels);
        expectRoundTrip<u16>(path("a.tiff"), channels);
    }
    expectRoundTrip<u8>(path("a.bmp"), 3);
}

TEST_F(Files, SavesAndLoadsJpegNearly)
{
    for (const int channels : {1, 3}) {
        const auto smooth = [=](std::size_t i) {
            const std::size_t x = i / static_cast<std::size_t>(channels) % 101;
            return static_cast<double>(40 + x + 20 * (i % static_cast<std::size_t>(channels)));
        };
        std::vector<u8> elements(static_cast<std::size_t>(101 * 31 * channels));
        for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = static_cast<u8>(smooth(i));
        VexaImage image = kit::imageOf<u8>({101, 31}, channels, elements);
        ASSERT_EQ(io::saveImage(image, path("a.jpg")), VEXA_SUCCESS);
        kit::expectElements<u8>(io::loadImage(path("a.jpg"), VEXA_LOAD_IMAGE_DEFAULT), smooth, 5);
    }
}

TEST_F(Files, LoadTypesChooseChannelsAndDepth)
{
    constexpr auto anyOther = static_cast<VexaLoadType>(-2);
    struct Case {
        int cvType;
        VexaType loaded[6];
    };
    const VexaLoadType loads[] = {VEXA_LOAD_IMAGE_DEFAULT,
                                  VEXA_LOAD_IMAGE_GRAYSCALE,
                                  VEXA_LOAD_IMAGE_COLOR,
                                  VEXA_LOAD_IMAGE_GRAYSCALE_KEEP_DEPTH,
                                  VEXA_LOAD_IMAGE_COLOR_KEEP_DEPTH,
                                  anyOther};
    // clang-format off
    const Case cases[] = {
        {CV_8UC1,  {VEXA_8UC1,  VEXA_8UC1, VEXA_8UC3, VEXA_8UC1,  VEXA_8UC1,  VEXA_8UC1}},
        {CV_8UC3,  {VEXA_8UC3,  VEXA_8UC1, VEXA_8UC3, VEXA_8UC1,  VEXA_8UC3,  VEXA_8UC3}},
        {CV_8UC4,  {VEXA_8UC4,  VEXA_8UC1, VEXA_8UC3, VEXA_8UC1,  VEXA_8UC3,  VEXA_8UC4}},
        {CV_16UC1, {VEXA_16UC1, VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC1, VEXA_16UC1}},
        {CV_16UC3, {VEXA_16UC3, VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3, VEXA_16UC3}},
    };
    // clang-format on
    for (const Case& row : cases) {
        const std::string file = writePicture("a.png", cv::Mat(5, 7, row.cvType, cv::Scalar::all(100)));
        for (std::size_t i = 0; i < std::size(loads); ++i) {
            SCOPED_TRACE(testing::Message() << "file of type " << row.cvType << " loaded as " << loads[i]);
            EXPECT_EQ(io::loadImage(file, loads[i]).type(), row.loaded[i]);
            VexaImage image;
            EXPECT_EQ(image.create(file, loads[i]), VEXA_SUCCESS);
            EXPECT_EQ(image.type(), row.loaded[i]);
            EXPECT_EQ(VexaImage(file, loads[i]).type(), row.loaded[i]);
        }
    }
}

TEST_F(Files, LoadsFloats)
{
    const cv::Mat pixels = (cv::Mat_<float>(2, 3) << 0, 0.5F, -3.25F, 1e30F, 1, 1e-3F);
    const VexaImage image = io::loadImage(writePicture("a.tiff", pixels), VEXA_LOAD_IMAGE_DEFAULT);
    EXPECT_EQ(image.type(), VEXA_32FC1);
    EXPECT_EQ(kit::download<f32>(image), std::vector<f32>(pixels.begin<float>(), pixels.end<float>()));
}

/// A portable pixmap holds red, green, blue.
TEST_F(Files, ChannelsAreBlueGreenRed)
{
    const std::string pixmap = "P6\n2 1\n255\n\xC8\x14\x0A\x01\x02\x03";
    VexaImage image = io::loadImage(write("a.ppm", pixmap), VEXA_LOAD_IMAGE_COLOR);
    EXPECT_EQ(kit::download<u8>(image), (std::vector<u8>{10, 20, 200, 3, 2, 1}));
    EXPECT_EQ(image.channelSeq(), VEXA_CHANNEL_SEQ_BGR);
    ASSERT_EQ(io::saveImage(image, path("b.ppm")), VEXA_SUCCESS);
    EXPECT_EQ(read("b.ppm"), pixmap);
}

/// A photograph may ask its viewer to turn it; pixels are loaded as they are stored.
TEST_F(Files, LoadsPhotographsUnturned)
{
    using namespace std::string_literals;
    writePicture("a.jpg", cv::Mat(10, 20, CV_8UC3, cv::Scalar::all(100)));
    const std::string turn =
        "\xFF\xE1\0\x22"s + "Exif\0\0II*\0\x08\0\0\0\1\0"s + "\x12\1\3\0\1\0\0\0\6\0\0\0"s + "\0\0\0\0"s;
    const std::string file = write("turned.jpg", read("a.jpg").insert(2, turn));
    ASSERT_EQ(cv::imread(file).cols, 10) << "the file must ask to be turned";
    for (int load = VEXA_LOAD_IMAGE_DEFAULT; load <= VEXA_LOAD_IMAGE_COLOR_KEEP_DEPTH; ++load)
        EXPECT_EQ(io::loadImage(file, static_cast<VexaLoadType>(load)).width(), 20) << "load type " << load;
}

TEST_F(Files, SavesFloatsFromZeroToOneAsBytes)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<f32> floats = {0, 0.5F, 1, 2, -1, 0.25F, 0.999F, 1e30F, nan};
    const std::vector<u8> bytes = {0, 127, 255, 255, 0, 63, 254, 255, 0};
    for (const int channels : {1, 3}) {
        VexaImage image = kit::imageOf<f32>({9 / channels, 1}, channels, floats);
        ASSERT_EQ(io::saveImage(image, path("a.png")), VEXA_SUCCESS);
        const VexaImage loaded = io::loadImage(path("a.png"), VEXA_LOAD_IMAGE_DEFAULT);
        EXPECT_EQ(loaded.channels(), channels);
        EXPECT_EQ(kit::download<u8>(loaded), bytes);
        EXPECT_EQ(image.type(), channels == 1 ? VEXA_32FC1 : VEXA_32FC3) << "the image itself must stay as it is";
    }
}

TEST_F(Files, RefusesWhatCannotBeSaved)
{
    struct Case {
        VexaType type;
        std::string name;
        VexaStatus status;
    };
    const Case cases[] = {
        {VEXA_NO_TYPE, "a.png", VEXA_IMAGE_NOT_INITIALIZED},
        {VEXA_8SC1, "a.png", VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {VEXA_16SC1, "a.tiff", VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {VEXA_32SC3, "a.tiff", VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {VEXA_16SC1, "a.unknown", VEXA_DEPTH_NOT_SUPPORTED_ERROR},
        {VEXA_8UC2, "a.png", VEXA_UNKNOWN_ERROR},
        {VEXA_8UC1, "a.unknown", VEXA_UNKNOWN_ERROR},
        {VEXA_8UC1, "a", VEXA_UNKNOWN_ERROR},
        {VEXA_8UC1, "missing/a.png", VEXA_UNKNOWN_ERROR},
        {VEXA_32FC1, "missing/a.tiff", VEXA_UNKNOWN_ERROR},
        {VEXA_8UC3, "", VEXA_UNKNOWN_ERROR},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(testing::Message() << row.type << " to " << row.name);
        VexaImage image;
        (void)image.create(8, 4, row.type);
        ASSERT_EQ(image.isInitialized(), row.type != VEXA_NO_TYPE);
        EXPECT_EQ(io::saveImage(image, path(row.name)), row.status);
        EXPECT_FALSE(std::filesystem::is_regular_file(path(row.name))) << "nothing may be left behind";
    }
    VexaImage released(8, 4, VEXA_16SC1);
    ASSERT_EQ(released.release(), VEXA_SUCCESS);
    EXPECT_EQ(io::saveImage(released, path("a.png")), VEXA_IMAGE_NOT_INITIALIZED);
}

TEST_F(Files, UnreadableFilesAreNotFound)
{
    for (const std::string& file : unreadable()) {
        SCOPED_TRACE(file);
        EXPECT_EQ(textThrownBy(file), "Image Not Found");
        VexaImage image;
        EXPECT_EQ(image.create(file, VEXA_LOAD_IMAGE_DEFAULT), VEXA_INVALID_ARG_ERROR);
        EXPECT_FALSE(image.isInitialized());
        EXPECT_FALSE(VexaImage(file, VEXA_LOAD_IMAGE_COLOR).isInitialized());

        VexaImage full = kit::constant<u8>({5, 4}, 1, 9);
        EXPECT_EQ(full.create(file, VEXA_LOAD_IMAGE_DEFAULT), VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(kit::download<u8>(full), std::vector<u8>(20, 9));
    }
}

/// An image that is there stays as it is, and takes as many bytes of the picture's rows as its own rows have.
TEST_F(Files, CreateUploadsIntoAnImageAsItStands)
{
    constexpr int rows = 10;
    constexpr int rowBytes = 60;
    cv::Mat pixels(rows, rowBytes / 3, CV_8UC3);
    cv::randu(pixels, 0, 200);
    const std::string file = writePicture("a.png", pixels);
    struct Case {
        int width, height;
        VexaType type;
        VexaStatus status;
    };
    const Case cases[] = {
        {20, 10, VEXA_8UC3, VEXA_SUCCESS},           {12, 6, VEXA_8UC3, VEXA_SUCCESS},
        {20, 30, VEXA_8UC3, VEXA_SUCCESS},           {12, 30, VEXA_8UC3, VEXA_SUCCESS},
        {30, 10, VEXA_8UC3, VEXA_MEMCPY_H2D_ERROR},  {30, 30, VEXA_8UC3, VEXA_MEMCPY_H2D_ERROR},
        {21, 1, VEXA_8UC3, VEXA_MEMCPY_H2D_ERROR},   {60, 5, VEXA_8UC1, VEXA_SUCCESS},
        {30, 11, VEXA_16UC1, VEXA_SUCCESS},          {7, 4, VEXA_32FC2, VEXA_SUCCESS},
        {20, 10, VEXA_32FC1, VEXA_MEMCPY_H2D_ERROR},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << " of type " << row.type);
        VexaImage image(row.width, row.height, row.type);
        kit::fillBuffer(image, 255);
        const void* const buffer = image.ptr();
        EXPECT_EQ(image.create(file, VEXA_LOAD_IMAGE_DEFAULT), row.status);
        EXPECT_EQ(image.ptr(), buffer);
        EXPECT_EQ(image.type(), row.type);
        EXPECT_EQ(image.width(), row.width);
        EXPECT_EQ(image.height(), row.height);

        std::vector<u8> bytes(static_cast<std::size_t>(image.pitch() * row.height));
        ASSERT_EQ(image.download(bytes.data()), VEXA_SUCCESS);
        const int ownRowBytes = row.width * image.channels() * image.depth() / 8;
        for (int y = 0; y < row.height; ++y)
            for (int x = 0; x < image.pitch(); ++x) {
                const bool isCovered = row.status == VEXA_SUCCESS && y < rows && x < ownRowBytes;
                ASSERT_EQ(bytes[static_cast<std::size_t>(y * image.pitch() + x)], isCovered ? pixels.ptr(y)[x] : 255)
                    << "byte " << x << " of row " << y;
            }
    }
}

/// Decoders may complain of damage on the error stream, but a file that isn't there is the caller's to report.
TEST_F(Files, NothingIsPrinted)
{
    VexaImage twoChannels = kit::noise<u8>({17, 9}, 2, 1);
    VexaImage floats = kit::noise<f32>({17, 9}, 1, 1);
    const std::vector<std::string> damaged = unreadable();
    testing::internal::CaptureStdout();
    for (const std::string& file : damaged) (void)textThrownBy(file);
    testing::internal::CaptureStderr();
    for (const std::string& file : {path("missing.png"), path(""), path("empty.png"), std::string()})
        (void)textThrownBy(file);
    (void)io::saveImage(floats, path("a.png"));
    (void)io::loadImage(path("a.png"), VEXA_LOAD_IMAGE_DEFAULT);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    (void)io::saveImage(twoChannels, path("a.png"));
    (void)io::saveImage(floats, path("missing/a.unknown"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
