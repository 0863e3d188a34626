// What the helper program with administrator rights says. A request is a tool and its arguments.
#pragma once

namespace vantory {

inline constexpr const char* kHelperReady = "ready";  // once, before the first request
inline constexpr const char* kHelperDone = "done";
inline constexpr const char* kHelperFailed = "failed";

}  // namespace vantory
