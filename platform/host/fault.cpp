/// @file
/// Fault injection: a countdown for each kind of call. Zero, where they rest, costs a call one relaxed load.

#include "fault.h"

#include <array>
#include <atomic>

namespace vexa::platform::fault {
namespace {

std::array<std::atomic<int>, static_cast<std::size_t>(Call::count)> callsToFault{};

std::atomic<int>& countdown(Call call)
{
    return callsToFault[static_cast<std::size_t>(call)];
}

}  // namespace

void arm(Call call, int n)
{
    countdown(call) = n;
}

void disarm()
{
    for (std::atomic<int>& calls : callsToFault) calls = 0;
}

bool strikes(Call call)
{
    std::atomic<int>& calls = countdown(call);
    if (calls.load(std::memory_order_relaxed) == 0) return false;
    return calls.fetch_sub(1) == 1;
}

}  // namespace vexa::platform::fault
