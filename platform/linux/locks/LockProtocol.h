// What Vantory and its lock helper say to each other.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace vantory {

constexpr std::string_view kLockHelper = "vantory-lock-helper";

// A request is one of these and the absolute paths of the items, free of symbolic links. The answer has one number in
// decimal for each, in that order: 0 where the item is as wanted now, else the errno that says why not.
constexpr std::string_view kLock = "lock";
constexpr std::string_view kUnlock = "unlock";

// Errors that say why it must not be done, not why it cannot: the item has another name, which may lie anywhere; it
// lies outside of the folders that are served; others may write to its folder.
constexpr int kHasOtherName = EMLINK;
constexpr int kIsOutside = EXDEV;
constexpr int kIsAmongOthers = EUSERS;

constexpr std::size_t kMostPathsAtOnce = 4096;

}  // namespace vantory
