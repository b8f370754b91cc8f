#pragma once

#include <chrono>
#include <functional>

namespace zemrak::soak {

/// Somebody asked the program to end, or going on makes no sense.
struct Ended
{
};

/// Makes every wait from now on throw Ended.
void askToEnd();

/// Turns the event loop until `holds`, for at most `patience`; whether it held in the end. Throws Ended.
bool waitUntil(const std::function<bool()> &holds, std::chrono::milliseconds patience);
/// Turns the event loop for that long. Throws Ended.
void pass(std::chrono::milliseconds time);

} // namespace zemrak::soak
