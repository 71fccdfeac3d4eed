/// @file
/// Develops a raw frame: a mosaic of one colour a pixel becomes a colour picture. See `usage`.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "../raw.h"
#include "vexaCore.h"

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

constexpr int brokenInput = 2;

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

[[noreturn]] void refuse(const std::string& why)
{
    std::fprintf(stderr, "develop: %s\n", why.c_str());
    std::exit(brokenInput);
}

VexaBayerSeq layoutOf(const std::string& name)
{
    for (const Layout& layout : layouts)
        if (name == layout.name) return layout.sequence;
    refuse("there is no layout '" + name + "'; it is rggb, bggr, grbg or gbrg");
}

int bitsOf(const std::string& text)
{
    char* end = nullptr;
    const long bits = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || bits < 1 || bits > 16)
        refuse("bits are a number from 1 to 16, not '" + text + "'");
    return static_cast<int>(bits);
}

Request requestOf(int argc, char** argv)
{
    Request request;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&] {
            if (i + 1 == argc) refuse(argument + " needs a value; --help tells more");
            return std::string(argv[++i]);
        };
        if (argument == "--layout")
            request.layout = layoutOf(value());
        else if (argument == "--bits")
            request.bits = bitsOf(value());
        else if (argument == "--mosaic")
            request.mosaic = true;
        else if (argument.size() > 1 && argument[0] == '-')
            refuse("there is no option " + argument + "; --help tells more");
        else
            request.files.push_back(argument);
    }
    if (request.files.size() != 2) refuse("name two files, one to read and one to write; --help tells more");
    return request;
}

VexaImage load(const std::string& file, VexaLoadType as)
{
    try {
        return vexa::io::loadImage(file, as);
    } catch (const char*) {
        refuse(file + " can't be read as an image");
    }
}

/// Ends the program if a step failed.
void require(VexaStatus status, const char* step)
{
    if (status == VEXA_SUCCESS) return;
    std::fprintf(stderr, "develop: %s failed: %s (%d)\n", step, vexaStatusString(status), status);
    std::exit(1);
}

void save(VexaImage& image, const std::string& file)
{
    if (vexa::io::saveImage(image, file) != VEXA_SUCCESS) refuse(file + " can't be written");
    std::printf("wrote %s\n", file.c_str());
}

/// A frame that can be developed: one channel of 8 or 16 bits.
VexaImage loadRaw(const std::string& file, int bits)
{
    VexaImage raw = load(file, VEXA_LOAD_IMAGE_DEFAULT);
    if (raw.channels() != 1) refuse(file + " has " + std::to_string(raw.channels()) + " channels; a raw frame has one");
    if (raw.type() != VEXA_8UC1 && raw.type() != VEXA_16UC1)
        refuse(file + " has pixels of " + std::to_string(raw.depth()) + " bits; a raw frame has 8 or 16, unsigned");
    if (bits > raw.depth())
        refuse(file + " has pixels of " + std::to_string(raw.depth()) + " bits, fewer than " + std::to_string(bits));
    require(raw.setDataBits(bits == 0 ? raw.depth() : bits), "setDataBits");
    return raw;
}

void develop(const Request& request)
{
    const VexaImage raw = loadRaw(request.files[0], request.bits);
    const VexaStream stream;
    VexaImage picture;
    VexaTimer timer;
    timer.Start();
    require(vexa::colorOperations::demosaicDFPD(raw, picture, request.layout, false), "demosaicDFPD");
    stream.sync();
    timer.Stop();
    std::printf("developed    %5d x %-5d %2d-bit, %d data bits %12.3f ms\n", raw.width(), raw.height(), raw.depth(),
                raw.dataBits(), 1000 * timer.GetElapsedTime());
    if (raw.dataBits() < raw.depth()) {
        const auto largest = [](int bits) { return static_cast<float>((1 << bits) - 1); };
        require(
            vexa::dataExchange::convertScale(picture, picture, largest(raw.depth()) / largest(raw.dataBits()), 0.5F),
            "convertScale");
    }
    save(picture, request.files[1]);
}

void makeRaw(const Request& request)
{
    const VexaImage photo = load(request.files[0], VEXA_LOAD_IMAGE_COLOR);
    VexaImage raw;
    require(mosaic(photo, request.layout, raw), "mosaic");
    save(raw, request.files[1]);
}

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--help") == 0) {
            std::fputs(usage, stdout);
            return 0;
        }
    const Request request = requestOf(argc, argv);
    if (request.mosaic)
        makeRaw(request);
    else
        develop(request);
    return 0;
}
