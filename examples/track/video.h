/// @file
/// The frames of a video file, one after the other.

#pragma once

#include <memory>
#include <string>

#include "vexaCore.h"

class Video {
public:
    virtual ~Video() = default;

    /// How many frames there are, or 0 if the file doesn't tell.
    virtual int frames() const = 0;

    /// The next frame, 8 bits in blue, green, red; false at the end.
    virtual bool read(VexaImage& frame) = 0;
};

/// Null if the file can't be read as a video, or nothing was built in that could.
std::unique_ptr<Video> openVideo(const std::string& file);
