/// @file
/// The bridge between images, files and windows: moves pixels between pictures on the host and device memory and
/// chooses their formats.

#include "vexaIO.h"

#include <new>

#include "pictures.h"

namespace {

/// A cleared picture of this format; without pixels if there is no memory.
vexa::Picture makePicture(int width, int height, int depth, int channels)
{
    vexa::Picture picture{width, height, depth, channels, 0, nullptr, nullptr};
    picture.pitch =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) * (static_cast<std::size_t>(depth) / 8);
    try {
        const std::shared_ptr<char[]> pixels(new char[picture.pitch * static_cast<std::size_t>(height)]());
        picture.pixels = pixels.get();
        picture.owner = pixels;
    } catch (const std::bad_alloc&) {
        picture.pixels = nullptr;
    }
    return picture;
}

/// The pixels of an image on the host; black where its rows overlap, as such an image can't be downloaded.
vexa::Picture downloaded(const VexaImage& image)
{
    vexa::Picture picture = makePicture(image.width(), image.height(), image.depth(), image.channels());
    (void)image.download(picture.pixels, static_cast<Vexa32s>(picture.pitch));
    return picture;
}

/// Uploads a picture into an image as it stands. An image taller than the picture takes only the picture's rows.
VexaStatus upload(VexaImage& image, const vexa::Picture& picture)
{
    const auto pitch = static_cast<Vexa32s>(picture.pitch);
    if (image.height() <= picture.height) return image.upload(picture.pixels, pitch);
    const VexaRect rows(0, 0, image.width(), picture.height);
    return image.upload(picture.pixels, rows, pitch, {0, 0}) ? VEXA_MEMCPY_H2D_ERROR : VEXA_SUCCESS;
}

bool isShownAsItIs(VexaType type)
{
    switch (type) {
        case VEXA_8UC1:
        case VEXA_8UC3:
        case VEXA_16UC1:
        case VEXA_16UC3:
        case VEXA_32FC1:
            return true;
        default:
            return false;
    }
}

}  // namespace

VexaStatus VexaImage::create(const std::string& file, VexaLoadType load)
{
    vexa::Picture picture;
    if (!vexa::decode(file, load, picture)) return VEXA_INVALID_ARG_ERROR;
    if (const VexaStatus failed = create(picture.width, picture.height, picture.depth, picture.channels)) return failed;
    return ::upload(*this, picture);
}

namespace vexa {

VexaImage io::loadImage(const std::string& file, VexaLoadType load)
{
    Picture picture;
    if (!decode(file, load, picture)) throw "Image Not Found";
    VexaImage image;
    if (image.create(picture.width, picture.height, picture.depth, picture.channels) == VEXA_SUCCESS)
        (void)upload(image, picture);
    return image;
}

VexaStatus io::saveImage(VexaImage& image, const std::string& file)
{
    if (!image.isInitialized()) return VEXA_IMAGE_NOT_INITIALIZED;
    if (image.isSigned()) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    Picture picture;
    if (image.type() == VEXA_32FC1 || image.type() == VEXA_32FC3) {
        VexaImage bytes;
        (void)image.convertTo(bytes, 8, 255.0F, 0.0F, VexaStream(false));
        picture = downloaded(bytes);
    } else {
        picture = downloaded(image);
    }
    return picture.pixels != nullptr && encode(file, picture) ? VEXA_SUCCESS : VEXA_UNKNOWN_ERROR;
}

VexaStatus createWindow(const std::string& name, bool resizable)
{
    openWindow(name, resizable);
    return VEXA_SUCCESS;
}

VexaStatus showImage(const std::string& name, const VexaImage& image)
{
    if (!image.isInitialized()) return VEXA_IMAGE_NOT_INITIALIZED;
    // Every other format is shown as three floats; one that is wider than that is refused by the download.
    Picture picture = isShownAsItIs(image.type())
                          ? makePicture(image.width(), image.height(), image.depth(), image.channels())
                          : makePicture(image.width(), image.height(), 32, 3);
    if (picture.pixels == nullptr) return VEXA_UNKNOWN_ERROR;
    (void)image.download(picture.pixels, static_cast<Vexa32s>(picture.pitch));
    return showPicture(name, picture) ? VEXA_SUCCESS : VEXA_UNKNOWN_ERROR;
}

int waitKeyPress(int delay)
{
    return waitKey(delay);
}

}  // namespace vexa
