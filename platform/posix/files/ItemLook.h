// What is compared of an item between two looks at it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>

namespace vantory {

struct ItemLook {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  mode_t mode = 0;
  std::uint64_t size = 0;
  timespec modified{};
  timespec changed{};
  bool isLocked = false;  // against being removed; not every look says so
};

inline bool isSameTime(const timespec& left, const timespec& right) {
  return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

inline bool isSameItem(const ItemLook& left, const ItemLook& right) {
  return left.device == right.device && left.number == right.number;
}

// Whether an item was left alone between two looks. The change time tells even a writer that sets the modification time
// back.
inline bool isUnchanged(const ItemLook& before, const ItemLook& after) {
  return before.size == after.size && isSameTime(before.modified, after.modified) &&
         isSameTime(before.changed, after.changed);
}

}  // namespace vantory
