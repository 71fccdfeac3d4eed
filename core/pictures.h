/// @file
/// Pictures in host memory: decoding and encoding files, and showing pictures in windows. core/pictures_opencv.cpp
/// does it with OpenCV; core/pictures_none.cpp stands in where OpenCV is left out, and everything fails there. Nothing
/// here throws.

#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "vexaDefs.h"

namespace vexa {

/// Interleaved pixels, in the format that depth (negative for signed integers) and channels name.
struct Picture {
    int width = 0;
    int height = 0;
    int depth = 0;
    int channels = 0;
    std::size_t pitch = 0;  ///< bytes
    void* pixels = nullptr;
    std::shared_ptr<void> owner;
};

/// False if the file can't be read or decoded.
bool decode(const std::string& file, VexaLoadType load, Picture& picture);

/// False if the format has no encoder or the file can't be written.
bool encode(const std::string& file, const Picture& picture);

void openWindow(const std::string& name, bool resizable);

/// False without a display.
bool showPicture(const std::string& name, const Picture& picture);

/// The key, -1 for none.
int waitKey(int delay);

}  // namespace vexa
