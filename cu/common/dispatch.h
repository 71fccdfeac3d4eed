/// @file
/// Tables of supported types. An operation lists its rows once, in the order in which they are tried; dispatch finds
/// the row that the types of the images make and hands it to the operation's work as a type.

#pragma once

#include <type_traits>

#include "elements.h"
#include "vexaCore.h"

namespace vexa {

/// The element types of the images of one supported combination.
template <typename... T>
struct Row {};

template <typename... Rows>
struct Table {};

/// The channel counts that each row exists for; all images have the same.
template <int... C>
struct Channels {};

template <int C>
using ChannelCount = std::integral_constant<int, C>;

namespace detail {

/// Does the work if row and channel count are those of the images; its status is that of the work, where it has one.
template <int C, typename... T, typename Work, typename... Image>
bool tryRow(Row<T...> row, ChannelCount<C> channels, VexaStatus& status, const Work& work, const Image&... images)
{
    if (!((images.type() == formatOf<T, C>)&&...)) return false;
    if constexpr (std::is_void_v<decltype(work(channels, row))>) {
        work(channels, row);
        status = VEXA_SUCCESS;
    } else {
        status = work(channels, row);
    }
    return true;
}

template <typename RowType, int... C, typename Work, typename... Image>
bool tryChannels(RowType row, Channels<C...>, VexaStatus& status, const Work& work, const Image&... images)
{
    return (tryRow(row, ChannelCount<C>{}, status, work, images...) || ...);
}

}  // namespace detail

/// Calls work(ChannelCount, Row) for the first row that matches the types of the images, and gives its status, or
/// VEXA_SUCCESS where it returns none. `otherwise` if there is no such row.
template <typename... Rows, int... C, typename Work, typename... Image>
VexaStatus dispatch(Table<Rows...>, Channels<C...> channels, VexaStatus otherwise, const Work& work,
                    const Image&... images)
{
    VexaStatus status = otherwise;
    (void)(detail::tryChannels(Rows{}, channels, status, work, images...) || ...);
    return status;
}

}  // namespace vexa
