/// @file
/// The twelve forms of upload and download as one table, so that what holds for all of them is tested for all of them.

#pragma once

#include <tuple>

#include "images.h"

namespace kit {

/// A rectangle of pixels on its way: its corner in host memory, its corner in the image, and its size.
struct Region {
    VexaPoint2D<int> host;
    VexaPoint2D<int> image;
    VexaSize size;

    VexaRect inHost() const { return {host.x, host.y, size.width, size.height}; }
    VexaRect inImage() const { return {image.x, image.y, size.width, size.height}; }
};

enum class Moves { wholeImage, region, buffer };

struct Transfer {
    const char* name;
    bool toImage;
    Moves moves;
    VexaStatus whenCopyFails;
    VexaStatus (*run)(VexaImage& image, u8* host, int pitch, const Region& region);
};

inline const std::vector<Transfer>& transfers()
{
    using I = VexaImage;
    using R = const Region&;
    static const std::vector<Transfer> table = {
        {"upload", true, Moves::wholeImage, VEXA_MEMCPY_H2D_ERROR,
         [](I& image, u8* host, int pitch, R) { return image.upload(host, pitch); }},
        {"upload, stream", true, Moves::wholeImage, VEXA_SUCCESS,
         [](I& image, u8* host, int pitch, R) { return image.upload(host, pitch, VexaStream(true)); }},
        {"upload region", true, Moves::region, VEXA_MEMCPY_D2H_ERROR,
         [](I& image, u8* host, int pitch, R r) { return image.upload(host, r.inHost(), pitch, r.image); }},
        {"upload region, stream", true, Moves::region, VEXA_MEMCPY_D2H_ERROR,
         [](I& image, u8* host, int pitch, R r) {
             return image.upload(host, r.inHost(), pitch, r.image, VexaStream(true));
         }},
        {"upload buffer", true, Moves::buffer, VEXA_MEMCPY_H2D_ERROR,
         [](I& image, u8* host, int, R) { return image.upload(host); }},
        {"upload buffer, stream", true, Moves::buffer, VEXA_MEMCPY_H2D_ERROR,
         [](I& image, u8* host, int, R) { return image.upload(host, VexaStream(true)); }},
        {"download", false, Moves::wholeImage, VEXA_MEMCPY_D2H_ERROR,
         [](I& image, u8* host, int pitch, R) { return image.download(host, pitch); }},
        {"download, stream", false, Moves::wholeImage, VEXA_SUCCESS,
         [](I& image, u8* host, int pitch, R) { return image.download(host, pitch, VexaStream(true)); }},
        {"download region", false, Moves::region, VEXA_MEMCPY_D2H_ERROR,
         [](I& image, u8* host, int pitch, R r) { return image.download(host, r.host, pitch, r.inImage()); }},
        {"download region, stream", false, Moves::region, VEXA_MEMCPY_D2H_ERROR,
         [](I& image, u8* host, int pitch, R r) {
             return image.download(host, r.host, pitch, r.inImage(), VexaStream(true));
         }},
        {"download buffer", false, Moves::buffer, VEXA_MEMCPY_H2D_ERROR,
         [](I& image, u8* host, int, R) { return image.download(host); }},
        {"download buffer, stream", false, Moves::buffer, VEXA_MEMCPY_H2D_ERROR,
         [](I& image, u8* host, int, R) { return image.download(host, VexaStream(true)); }},
    };
    return table;
}

/// Reproducible bytes.
inline std::vector<u8> noiseBytes(std::size_t count, std::uint32_t seed)
{
    std::vector<u8> bytes(count);
    for (u8& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<u8>(seed >> 24);
    }
    return bytes;
}

/// The whole buffer of an image with the gaps behind its rows.
inline std::vector<u8> bufferOf(const VexaImage& image)
{
    std::vector<u8> bytes(static_cast<std::size_t>(image.pitch()) * image.height());
    EXPECT_EQ(image.download(bytes.data()), VEXA_SUCCESS);
    return bytes;
}

/// All that an image tells of itself.
using Fields = std::tuple<bool, bool, void*, int, int, int, int, int, int, VexaChannelSeq, VexaType>;
inline Fields fieldsOf(const VexaImage& image)
{
    return {image.isInitialized(), image.isSigned(),   image.ptr(),   image.width(),
            image.height(),        image.pitch(),      image.depth(), image.channels(),
            image.dataBits(),      image.channelSeq(), image.type()};
}

/// The type and sign are those of a fresh image or of the one that has been released.
inline void expectEmpty(const VexaImage& image, VexaType type = VEXA_NO_TYPE, bool isSigned = false)
{
    EXPECT_EQ(fieldsOf(image), Fields(false, isSigned, nullptr, 0, 0, 0, 0, 0, 0, VEXA_CHANNEL_SEQ_NONE, type));
}

}  // namespace kit
