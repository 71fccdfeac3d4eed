/// @file
/// Without OpenCV files can't be loaded or saved, and windows are as without a display. Prints what is otherwise.

#include <vexaCore.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

bool allRight = true;

void expect(bool right, const char* what)
{
    if (!right) std::printf("wrong: %s\n", what);
    allRight = allRight && right;
}

bool isNotFound(const char* file)
{
    try {
        (void)vexa::io::loadImage(file, VEXA_LOAD_IMAGE_DEFAULT);
    } catch (const char* text) {
        return text == std::string("Image Not Found");
    }
    return false;
}

}  // namespace

int main()
{
    std::ofstream("a.pgm") << "P5\n1 1\n255\nx";  // a picture, for those who can read it
    VexaImage empty;
    expect(isNotFound("a.pgm"), "loadImage throws");
    expect(empty.create("a.pgm", VEXA_LOAD_IMAGE_COLOR) == VEXA_INVALID_ARG_ERROR, "create fails");
    expect(!empty.isInitialized(), "the image stays empty");
    expect(vexa::io::saveImage(empty, "b.pgm") == VEXA_IMAGE_NOT_INITIALIZED, "empty images are refused");
    expect(vexa::createWindow("a", true) == VEXA_SUCCESS, "createWindow succeeds");
    expect(vexa::waitKeyPress(0) == -1, "waitKeyPress returns");
    if (vexa::device::getDeviceCount() > 0) {  // else built for a GPU, on a machine without one
        VexaImage image(4, 4, VEXA_8UC1);
        VexaImage isSigned(4, 4, VEXA_16SC1);
        expect(vexa::io::saveImage(image, "b.pgm") == VEXA_UNKNOWN_ERROR, "saveImage fails");
        expect(!std::ifstream("b.pgm").is_open(), "saveImage leaves no file");
        expect(vexa::io::saveImage(isSigned, "b.pgm") == VEXA_DEPTH_NOT_SUPPORTED_ERROR, "signed images are refused");
        expect(vexa::showImage("a", image) == VEXA_UNKNOWN_ERROR, "showImage fails");
    }
    return allRight ? 0 : 1;
}
