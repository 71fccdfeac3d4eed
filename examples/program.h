/// @file
/// What the example programs on image files share: options, loading, saving, and one line for what goes wrong.

#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vexaCore.h"

class Program {
public:
    explicit Program(const char* name) : _name(name) {}

    /// Ends the program because of what it was given.
    [[noreturn]] void refuse(const std::string& why) const
    {
        std::fprintf(stderr, "%s: %s\n", _name, why.c_str());
        std::exit(2);
    }

    /// Ends the program if a step failed.
    void require(VexaStatus status, const char* step) const
    {
        if (status == VEXA_SUCCESS) return;
        std::fprintf(stderr, "%s: %s failed: %s (%d)\n", _name, step, vexaStatusString(status), status);
        std::exit(1);
    }

    VexaImage load(const std::string& file, VexaLoadType as) const
    {
        try {
            return vexa::io::loadImage(file, as);
        } catch (const char*) {
            refuse(file + " can't be read as an image");
        }
    }

    void save(VexaImage& image, const std::string& file) const
    {
        if (vexa::io::saveImage(image, file) != VEXA_SUCCESS) refuse(file + " can't be written");
        std::printf("wrote %s, %d x %d\n", file.c_str(), image.width(), image.height());
    }

    /// Saves the absolute difference of two images, four times as bright as it is.
    void saveDifference(const VexaImage& a, const VexaImage& b, const std::string& file) const
    {
        constexpr double brighter = 4.0;
        VexaImage difference;
        require(vexa::arithmeticLogical::absDiff(a, b, difference), "absDiff");
        difference *= brighter;
        save(difference, file);
    }

    /// A whole number from `lowest` to `highest`.
    int number(const std::string& option, const std::string& text, int lowest, int highest) const
    {
        char* end = nullptr;
        const long value = std::strtol(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || value < lowest || value > highest)
            refuse(option + " takes a number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                   ", not '" + text + "'");
        return static_cast<int>(value);
    }

    /// The arguments that are no options. An option that is known, with a dash in front, takes the next argument, if
    /// take(option, value) wants it; --help tells the usage and ends the program.
    template <typename Flag, typename Take>
    std::vector<std::string> files(int argc, char** argv, const char* usage, const Flag& flag, const Take& take) const
    {
        std::vector<std::string> files;
        for (int i = 1; i < argc; ++i) {
            const std::string argument = argv[i];
            if (argument == "--help") {
                std::fputs(usage, stdout);
                std::exit(0);
            }
            if (argument.size() < 2 || argument[0] != '-') {
                files.push_back(argument);
            } else if (!flag(argument)) {
                if (i + 1 == argc || !take(argument, argv[i + 1]))
                    refuse("there is no option " + argument + ", or it needs a value; --help tells more");
                ++i;
            }
        }
        return files;
    }

private:
    const char* _name;
};
