// What the program's exit status says, beside 0 for what was done.
#pragma once

namespace vantory {

inline constexpr int kNotBegun = 1;
// With "--strict".
inline constexpr int kDoneInPart = 3;
inline constexpr int kNothingMatched = 4;  // or an operand was unknown

}  // namespace vantory
