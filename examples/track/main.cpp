/// @file
/// Follows features through the frames of a film, and shows how all pixels move from each frame to the next. See
/// `usage`.

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "../program.h"
#include "canvas.h"
#include "video.h"

namespace {

constexpr char usage[] =
    "track FRAME FRAME [FRAME ...] FOLDER [--features COUNT]\n"
    "track VIDEO FOLDER [--features COUNT]\n"
    "track --make PHOTO FOLDER [--frames COUNT]\n"
    "\n"
    "Follows corner-like features from frame to frame, and writes for each frame but the first into FOLDER\n"
    "  tracks_0001.png  the frame with the ways of its features: green, the ends yellow, lost ones red\n"
    "  flow_0001.png    how all pixels came there from the frame before: the hue is the direction, as on the wheel\n"
    "                   in the corner, the saturation the length; what could not be followed is black\n"
    "Frames are images of one size, in their order. A video is read where OpenCV's videoio was there at build time.\n"
    "With --make it writes frames frame_0000.png ... of a photograph instead that turns, grows and drifts away.\n"
    "\n"
    "  --features COUNT  how many features are followed, 200 by default\n"
    "  --frames COUNT    how many frames are made, 6 by default\n";

const Program program("track");

struct Request {
    std::vector<std::string> files;  ///< to read
    std::string folder;
    int features = 200;
    int frames = 6;
    bool make = false;
};

Request requestOf(int argc, char** argv)
{
    Request request;
    const auto flag = [&](const std::string& option) {
        if (option == "--make") request.make = true;
        return option == "--make";
    };
    const auto take = [&](const std::string& option, const std::string& value) {
        constexpr int most = 1000000;
        if (option == "--features")
            request.features = program.number(option, value, 1, most);
        else if (option == "--frames")
            request.frames = program.number(option, value, 1, most);
        else
            return false;
        return true;
    };
    request.files = program.files(argc, argv, usage, flag, take);
    if (request.files.size() < 2) program.refuse("name what to read and a folder to write to; --help tells more");
    request.folder = request.files.back() + "/";
    request.files.pop_back();
    return request;
}

/// An image of 8 bits in blue, green, red.
VexaImage load(const std::string& file)
{
    return program.load(file, VEXA_LOAD_IMAGE_COLOR);
}

/// Without a line for each of many.
void save(VexaImage& image, const std::string& file)
{
    if (vexa::io::saveImage(image, file) != VEXA_SUCCESS) program.refuse(file + " can't be written");
}

std::string numbered(const std::string& name, int number)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "_%04d.png", number);
    return name + digits;
}

/// Images, as a video is read.
class Files : public Video {
public:
    explicit Files(const std::vector<std::string>& names) : _names(names) {}
    int frames() const override { return static_cast<int>(_names.size()); }
    bool read(VexaImage& frame) override
    {
        if (_next == _names.size()) return false;
        frame = load(_names[_next++]);
        return true;
    }

private:
    std::vector<std::string> _names;
    std::size_t _next = 0;
};

std::unique_ptr<Video> open(const std::vector<std::string>& files)
{
    if (files.size() > 1) return std::make_unique<Files>(files);
    std::unique_ptr<Video> video = openVideo(files.front());
    if (video == nullptr) program.refuse(files.front() + " can't be read as a video; of images it takes two or more");
    return video;
}

/// Line by line in a file, over itself on a terminal.
class Progress {
public:
    explicit Progress(int frames) : _frames(frames) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress()
    {
        if (_isTerminal) std::fputc('\n', stderr);
    }

    void tell(int frame, std::size_t features) const
    {
        const std::string of = _frames > 0 ? " of " + std::to_string(_frames) : "";
        std::fprintf(stderr, "%sframe %d%s, %zu features%s", _isTerminal ? "\r" : "", frame, of.c_str(), features,
                     _isTerminal ? "   " : "\n");
    }

private:
    int _frames;
    bool _isTerminal = isatty(STDERR_FILENO) != 0;
};

VexaImage grayOf(const VexaImage& frame)
{
    VexaImage gray;
    program.require(vexa::colorOperations::rgb2gray(frame, gray), "rgb2gray");
    return gray;
}

using Feature = VexaPointValue2D<float, float>;

/// Pixels between features.
constexpr int distance = 8;

/// The tracks that go on, and those that end with this frame.
class Tracks {
public:
    explicit Tracks(int most) : _most(most) {}

    /// Starts as many new tracks as are missing, if many are, away from those that there are.
    void replenish(const VexaImage& gray)
    {
        if (2 * static_cast<int>(_tracks.size()) > _most) return;
        Feature* found = nullptr;
        int count = _most;
        program.require(
            vexa::computerVision::goodFeaturesToTrack(gray, VexaRect(0, 0, gray.width(), gray.height()), found, count,
                                                      VexaFeaturesCriteria(VEXA_FEATURES_KLT, 0.01F, distance)),
            "goodFeaturesToTrack");
        const std::unique_ptr<Feature[]> features(found);
        for (int i = 0; i < count && static_cast<int>(_tracks.size()) < _most; ++i)
            if (isFree(features[static_cast<std::size_t>(i)])) _tracks.push_back({{{found[i].x, found[i].y}}, false});
    }

    void follow(const VexaImage& previous, const VexaImage& next)
    {
        std::vector<Track> going;
        for (Track& track : _tracks)
            if (!track.isLost) going.push_back(std::move(track));
        _tracks = std::move(going);
        if (_tracks.empty()) return;
        std::vector<Feature> ends;
        for (const Track& track : _tracks) ends.emplace_back(track.points.back().x, track.points.back().y, 0.0F);
        Feature* found = nullptr;
        program.require(
            vexa::computerVision::trackFeatures(previous, next, ends.data(), found, static_cast<int>(ends.size()),
                                                VexaTrackingCriteria(3, VexaSize(15, 15), 20, 20.0F)),
            "trackFeatures");
        const std::unique_ptr<Feature[]> features(found);
        for (std::size_t i = 0; i < _tracks.size(); ++i) {
            _tracks[i].isLost = features[i].val != 0.0F;
            if (!_tracks[i].isLost) _tracks[i].points.push_back({features[i].x, features[i].y});
        }
    }

    std::size_t going() const
    {
        std::size_t count = 0;
        for (const Track& track : _tracks) count += track.isLost ? 0U : 1U;
        return count;
    }

    VexaImage drawnOn(const VexaImage& frame) const
    {
        Canvas canvas(frame);
        for (const Track& track : _tracks) canvas.draw(track);
        VexaImage picture;
        program.require(canvas.copyTo(picture), "upload");
        return picture;
    }

private:
    bool isFree(const Feature& feature) const
    {
        for (const Track& track : _tracks)
            if (std::fabs(track.points.back().x - feature.x) < static_cast<float>(distance) &&
                std::fabs(track.points.back().y - feature.y) < static_cast<float>(distance))
                return false;
        return true;
    }

    int _most;
    std::vector<Track> _tracks;
};

VexaImage flowBetween(const VexaImage& previous, const VexaImage& next)
{
    FlowField flow(previous.width(), previous.height());
    program.require(denseFlow(previous, next, VexaTrackingCriteria(3, VexaSize(7, 7), 8, 0.0F, 0.02F), flow),
                    "opticalFlowPyrLKDense");
    VexaImage picture;
    program.require(imageOf(flowPicture(flow, usualLength(flow)), flow.width, flow.height, picture), "upload");
    return picture;
}

void track(const Request& request)
{
    const std::unique_ptr<Video> video = open(request.files);
    VexaImage frame;
    if (!video->read(frame)) program.refuse(request.files.front() + " has no frames");
    VexaImage previous = grayOf(frame);
    Tracks tracks(request.features);
    int number = 0;
    {
        const Progress progress(video->frames());
        while (video->read(frame)) {
            const VexaImage next = grayOf(frame);
            if (next.width() != previous.width() || next.height() != previous.height())
                program.refuse("frame " + std::to_string(number + 2) + " has another size than the first");
            ++number;
            tracks.replenish(previous);
            tracks.follow(previous, next);
            VexaImage drawn = tracks.drawnOn(frame);
            save(drawn, numbered(request.folder + "tracks", number));
            VexaImage flow = flowBetween(previous, next);
            save(flow, numbered(request.folder + "flow", number));
            progress.tell(number + 1, tracks.going());
            previous = next;
        }
    }
    if (number == 0) program.refuse(request.files.front() + " has a single frame");
    std::printf("wrote %s to %s and the same of flow\n", numbered(request.folder + "tracks", 1).c_str(),
                numbered("tracks", number).c_str());
}

/// From a frame to the photograph, whose middle it shows: with every frame it turns by half a degree, grows by a
/// hundredth and drifts by 2 pixels to the right and 1 down.
void makeFrames(const Request& request)
{
    const VexaImage photo = load(request.files.front());
    const double x = photo.width() / 2.0;
    const double y = photo.height() / 2.0;
    for (int i = 0; i < request.frames; ++i) {
        const double angle = 0.5 * i * std::acos(-1.0) / 180;
        const double scale = 0.8 * std::pow(1.01, -i);
        const double c = scale * std::cos(angle);
        const double s = scale * std::sin(angle);
        const double fromX = x + 2 * i;
        const double fromY = y + i;
        double matrix[2][3] = {{c, s, x - c * fromX - s * fromY}, {-s, c, y + s * fromX - c * fromY}};
        VexaImage frame(photo);
        program.require(vexa::geometryTransforms::warpAffineBack(photo, frame, matrix, VEXA_INTER_CUBIC),
                        "warpAffineBack");
        save(frame, numbered(request.folder + "frame", i));
    }
    std::printf("wrote %s to %s\n", numbered(request.folder + "frame", 0).c_str(),
                numbered("frame", request.frames - 1).c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    const Request request = requestOf(argc, argv);
    if (request.make)
        makeFrames(request);
    else
        track(request);
    return 0;
}
