// The two clocks: a steady one for delays, a wall clock for dates. Code asks the Scheduler for both.
#pragma once

#include <chrono>

namespace quillmark {

using Duration = std::chrono::nanoseconds;
using SteadyTime = std::chrono::time_point<std::chrono::steady_clock, Duration>;
using WallTime = std::chrono::time_point<std::chrono::system_clock, Duration>;

/// The earliest time that a WallTime can hold: stands for "no time known".
inline constexpr WallTime distantPast = WallTime::min();

} // namespace quillmark
