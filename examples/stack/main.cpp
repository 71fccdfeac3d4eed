/// @file
/// Makes one sharp picture of photographs that are focused at different distances. See `usage`.

#include <memory>

#include "../program.h"

namespace {

constexpr char usage[] =
    "stack PICTURE DIFFERENCE FRAME FRAME... [--smooth SIDE]\n"
    "stack --blur PHOTO LEFT RIGHT\n"
    "\n"
    "Takes each part of PICTURE from the FRAME that is sharpest there; all frames have one size, and the scene does\n"
    "not move between them. DIFFERENCE, four times as bright as it is, tells what came from other frames than the\n"
    "first. With --blur it makes two frames of a photograph instead, one sharp on the left, one on the right.\n"
    "\n"
    "  SIDE  the choice of frames is smoothed by the mean of so many pixels squared, 1 to 21; by default 15\n";

const Program program("stack");

/// What the command line asks for.
struct Request {
    std::vector<std::string> files;
    int smooth = 15;
    bool blur = false;
};

Request requestOf(int argc, char** argv)
{
    Request request;
    request.files = program.files(
        argc, argv, usage,
        [&](const std::string& option) {
            if (option == "--blur") request.blur = true;
            return option == "--blur";
        },
        [&](const std::string& option, const char* value) {
            if (option == "--smooth") request.smooth = program.number(option, value, 1, 21);
            return option == "--smooth";
        });
    if (request.blur && request.files.size() != 3) program.refuse("name three files; --help tells more");
    if (!request.blur && request.files.size() < 4)
        program.refuse("name two files to write and at least two frames; --help tells more");
    return request;
}

void stackFiles(const Request& request)
{
    const int count = static_cast<int>(request.files.size()) - 2;
    const std::unique_ptr<VexaImage[]> frames(new VexaImage[static_cast<std::size_t>(count)]);
    for (int i = 0; i < count; ++i) {
        const std::string& file = request.files[static_cast<std::size_t>(i) + 2];
        frames[i] = program.load(file, VEXA_LOAD_IMAGE_COLOR);
        if (frames[i].type() != VEXA_8UC3) program.refuse(file + " has no pixels of three bytes");
        if (frames[i].width() != frames[0].width() || frames[i].height() != frames[0].height())
            program.refuse(file + " has another size than " + request.files[2]);
    }
    VexaImage picture;
    const VexaFilter mean = VexaSpecialFilters::average({request.smooth, request.smooth});
    VexaTimer timer;
    timer.Start();
    const VexaStatus status = vexa::computerVision::focusStack(frames.get(), count, picture, mean);
    timer.Stop();
    std::printf("\n");
    program.require(status, "focusStack");
    std::printf("stacked %d frames in %.3f ms\n", count, 1000 * timer.GetElapsedTime());
    program.save(picture, request.files[0]);
    program.saveDifference(picture, frames[0], request.files[1]);
}

void blurPhoto(const Request& request)
{
    const VexaImage photo = program.load(request.files[0], VEXA_LOAD_IMAGE_COLOR);
    VexaImage blurred;
    program.require(vexa::imageFiltering::imageFilter(photo, blurred, VexaSpecialFilters::gaussian({21, 21}, 4)),
                    "imageFilter");
    const int half = photo.width() / 2;
    const VexaRect sides[] = {{0, 0, half, photo.height()}, {half, 0, photo.width() - half, photo.height()}};
    for (std::size_t i = 0; i < 2; ++i) {
        VexaImage frame = blurred;
        program.require(photo.copyTo(frame, sides[i].origin(), sides[i]), "copyTo");
        program.save(frame, request.files[i + 1]);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const Request request = requestOf(argc, argv);
    if (request.blur)
        blurPhoto(request);
    else
        stackFiles(request);
    return 0;
}
