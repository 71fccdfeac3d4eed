/// @file
/// An image as the filters read it: rows of elements, whose ends repeat on all sides. On three channels the first and
/// the last element repeat, not the first and the last pixel.

#pragma once

#include <algorithm>
#include <vector>

#include "images.h"

template <typename T>
class FlatRows {
public:
    explicit FlatRows(const VexaImage& image)
        : channels(image.channels()),
          elements(image.width() * channels),
          height(image.height()),
          _elements(kit::download<T>(image))
    {}

    T operator()(int x, int y) const
    {
        const int column = std::clamp(x, 0, elements - 1);
        const int row = std::clamp(y, 0, height - 1);
        return _elements[static_cast<std::size_t>(row * elements + column)];
    }

    /// The element of an index into all of them.
    int column(std::size_t index) const { return static_cast<int>(index) % elements; }
    int row(std::size_t index) const { return static_cast<int>(index) / elements; }

    int channels;
    int elements;  ///< of a row
    int height;

private:
    std::vector<T> _elements;
};
