// The same work on many things at once.
#pragma once

#include <cstddef>
#include <functional>

namespace vantory {

// Calls work(0) to work(count - 1), in any order, on this thread and a few more where they are to be had; returns when
// all have run. The work must not throw.
void forEachInParallel(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace vantory
