/// @file
/// Elements in device memory for kernels that take raw pointers, and their way there and back. Kernels under test run
/// on either platform, so tests look at their results on the host only.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "images.h"
#include "platform.h"

template <typename T>
class DeviceArray {
public:
    explicit DeviceArray(const std::vector<T>& elements) : _count(elements.size())
    {
        EXPECT_EQ(vexa::platform::allocate(_block, _count * sizeof(T)), VEXA_SUCCESS);
        EXPECT_EQ(vexa::platform::copyToDevice(_block, elements.data(), _count * sizeof(T)), VEXA_SUCCESS);
    }
    DeviceArray(std::size_t count, T value) : DeviceArray(std::vector<T>(count, value)) {}
    DeviceArray(const DeviceArray&) = delete;
    DeviceArray& operator=(const DeviceArray&) = delete;
    ~DeviceArray() { EXPECT_EQ(vexa::platform::release(_block), VEXA_SUCCESS); }

    T* ptr() const { return static_cast<T*>(_block); }

    std::vector<T> download() const
    {
        std::vector<T> elements(_count);
        EXPECT_EQ(vexa::platform::copyToHost(elements.data(), _block, _count * sizeof(T)), VEXA_SUCCESS);
        return elements;
    }

private:
    void* _block = nullptr;
    std::size_t _count;
};

/// Rows of elements that start off the alignment of their block and have gaps between them: `width` elements from
/// `shift` on, `width + gap` apart.
struct Layout {
    int width;
    int height;
    int shift;
    int gap;

    int pitch() const { return width + gap; }
    std::size_t count() const { return static_cast<std::size_t>(shift + pitch() * height + shift); }

    /// Whether an index of the block is an element of a row; x and y are only set then.
    bool contains(std::size_t index, int& x, int& y) const
    {
        const int offset = static_cast<int>(index) - shift;
        if (offset < 0 || offset >= pitch() * height || offset % pitch() >= width) return false;
        x = offset % pitch();
        y = offset / pitch();
        return true;
    }
};
