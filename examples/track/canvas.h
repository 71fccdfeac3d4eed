/// @file
/// A picture to draw on, and the tracks of features.

#pragma once

#include <vector>

#include "../wheel.h"
#include "vexaCore.h"

struct Point {
    float x;
    float y;
};

/// Where a feature was, frame by frame.
struct Track {
    std::vector<Point> points;
    bool isLost = false;
};

class Canvas {
public:
    /// A copy of the pixels of an 8UC3 image, darkened, so that what is drawn stands out.
    explicit Canvas(const VexaImage& image);

    void line(Point from, Point to, Color color);
    void square(Point center, int radius, Color color);
    void draw(const Track& track);

    /// @return the status of the upload
    VexaStatus copyTo(VexaImage& image) const;

private:
    void dot(int x, int y, Color color);

    int _width;
    int _height;
    std::vector<Color> _pixels;
};

/// An image of these pixels, row by row.
VexaStatus imageOf(const std::vector<Color>& pixels, int width, int height, VexaImage& image);
