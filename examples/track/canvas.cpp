#include "canvas.h"

#include <algorithm>
#include <cmath>

VexaStatus imageOf(const std::vector<Color>& pixels, int width, int height, VexaImage& image)
{
    if (const VexaStatus failed = image.create(width, height, VEXA_8UC3)) return failed;
    // Upload takes what it reads as not constant.
    return image.upload(const_cast<Color*>(pixels.data()), width * static_cast<int>(sizeof(Color)));
}

Canvas::Canvas(const VexaImage& image)
    : _width(image.width()),
      _height(image.height()),
      _pixels(static_cast<std::size_t>(_width) * static_cast<std::size_t>(_height))
{
    (void)image.download(_pixels.data(), _width * static_cast<int>(sizeof(Color)));
    for (Color& pixel : _pixels)
        for (unsigned char* channel : {&pixel.blue, &pixel.green, &pixel.red})
            *channel = static_cast<unsigned char>(*channel * 5 / 8);
}

void Canvas::dot(int x, int y, Color color)
{
    if (x < 0 || y < 0 || x >= _width || y >= _height) return;
    _pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(_width) + static_cast<std::size_t>(x)] = color;
}

void Canvas::line(Point from, Point to, Color color)
{
    const float dx = to.x - from.x;
    const float dy = to.y - from.y;
    const float steps = std::max({std::ceil(std::fabs(dx)), std::ceil(std::fabs(dy)), 1.0F});
    for (float step = 0; step <= steps; ++step)
        dot(static_cast<int>(std::lround(from.x + dx * step / steps)),
            static_cast<int>(std::lround(from.y + dy * step / steps)), color);
}

void Canvas::square(Point center, int radius, Color color)
{
    const auto x = static_cast<int>(std::lround(center.x));
    const auto y = static_cast<int>(std::lround(center.y));
    for (int i = -radius; i <= radius; ++i)
        for (int j = -radius; j <= radius; ++j) dot(x + j, y + i, color);
}

void Canvas::draw(const Track& track)
{
    constexpr Color green{80, 255, 80};
    constexpr Color yellow{0, 255, 255};
    constexpr Color red{60, 60, 255};
    for (std::size_t i = 1; i < track.points.size(); ++i)
        line(track.points[i - 1], track.points[i], track.isLost ? red : green);
    square(track.points.back(), 1, track.isLost ? red : yellow);
}

VexaStatus Canvas::copyTo(VexaImage& image) const
{
    return imageOf(_pixels, _width, _height, image);
}
