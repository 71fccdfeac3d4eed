/// @file
/// Develops a raw frame: a mosaic of one colour a pixel becomes a colour picture. See `usage`.

#include <cstdio>
#include <string>
#include <vector>

#include "../program.h"
#include "../raw.h"

namespace {

constexpr char usage[] =
    "develop RAW PICTURE [--layout LAYOUT] [--bits BITS]\n"
    "develop --mosaic PHOTO RAW [--layout LAYOUT]\n"
    "\n"
    "Makes a colour picture (PNG) from the raw frame of a sensor behind a Bayer mosaic: one channel of 8 or 16 bits\n"
    "in a PNG, PGM or TIFF file. With --mosaic it makes a raw frame from a photograph instead.\n"
    "\n"
    "  LAYOUT  the first two pixels of the first two rows: rggb (the default), bggr, grbg or gbrg\n"
    "  BITS    how many bits of a pixel carry data; by default all. The picture is scaled to its full range\n";

const Program program("develop");

struct Layout {
    const char* name;
    VexaBayerSeq sequence;
};
const Layout layouts[] = {
    {"rggb", VEXA_BAYER_RGGB},
    {"bggr", VEXA_BAYER_BGGR},
    {"grbg", VEXA_BAYER_GRBG},
    {"gbrg", VEXA_BAYER_GBRG},
};

/// What the command line asks for.
struct Request {
    std::vector<std::string> files;
    VexaBayerSeq layout = VEXA_BAYER_RGGB;
    int bits = 0;  ///< 0 for all
    bool mosaic = false;
};

VexaBayerSeq layoutOf(const std::string& name)
{
    for (const Layout& layout : layouts)
        if (name == layout.name) return layout.sequence;
    program.refuse("there is no layout '" + name + "'; it is rggb, bggr, grbg or gbrg");
}

Request requestOf(int argc, char** argv)
{
    Request request;
    const auto flag = [&](const std::string& option) {
        if (option == "--mosaic") request.mosaic = true;
        return option == "--mosaic";
    };
    const auto take = [&](const std::string& option, const std::string& value) {
        if (option == "--layout")
            request.layout = layoutOf(value);
        else if (option == "--bits")
            request.bits = program.number(option, value, 1, 16);
        else
            return false;
        return true;
    };
    request.files = program.files(argc, argv, usage, flag, take);
    if (request.files.size() != 2) program.refuse("name two files, one to read and one to write; --help tells more");
    return request;
}

/// A frame that can be developed: one channel of 8 or 16 bits.
VexaImage loadRaw(const std::string& file, int bits)
{
    VexaImage raw = program.load(file, VEXA_LOAD_IMAGE_DEFAULT);
    if (raw.channels() != 1)
        program.refuse(file + " has " + std::to_string(raw.channels()) + " channels; a raw frame has one");
    if (raw.type() != VEXA_8UC1 && raw.type() != VEXA_16UC1)
        program.refuse(file + " has pixels of " + std::to_string(raw.depth()) +
                       " bits; a raw frame has 8 or 16, unsigned");
    if (bits > raw.depth())
        program.refuse(file + " has pixels of " + std::to_string(raw.depth()) + " bits, fewer than " +
                       std::to_string(bits));
    program.require(raw.setDataBits(bits == 0 ? raw.depth() : bits), "setDataBits");
    return raw;
}

void develop(const Request& request)
{
    const VexaImage raw = loadRaw(request.files[0], request.bits);
    const VexaStream stream;
    VexaImage picture;
    VexaTimer timer;
    timer.Start();
    program.require(vexa::colorOperations::demosaicDFPD(raw, picture, request.layout, false), "demosaicDFPD");
    stream.sync();
    timer.Stop();
    std::printf("developed    %5d x %-5d %2d-bit, %d data bits %12.3f ms\n", raw.width(), raw.height(), raw.depth(),
                raw.dataBits(), 1000 * timer.GetElapsedTime());
    if (raw.dataBits() < raw.depth()) {
        const auto largest = [](int bits) { return static_cast<float>((1 << bits) - 1); };
        program.require(
            vexa::dataExchange::convertScale(picture, picture, largest(raw.depth()) / largest(raw.dataBits()), 0.5F),
            "convertScale");
    }
    program.save(picture, request.files[1]);
}

void makeRaw(const Request& request)
{
    const VexaImage photo = program.load(request.files[0], VEXA_LOAD_IMAGE_COLOR);
    VexaImage raw;
    program.require(mosaic(photo, request.layout, raw), "mosaic");
    program.save(raw, request.files[1]);
}

}  // namespace

int main(int argc, char** argv)
{
    const Request request = requestOf(argc, argv);
    if (request.mosaic)
        makeRaw(request);
    else
        develop(request);
    return 0;
}
