// What a copy tells while it is made.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/posix/files/ItemLook.h"

namespace vantory {

class CopiedItems;

// What the threads of a copy tell: sentences about what was left out, to an observer how far they are, and what was
// copied where the originals are to go.
class CopyReport {
 public:
  CopyReport() = default;
  explicit CopyReport(CopyObserver observer) : observer_(std::move(observer)) {}
  explicit CopyReport(CopiedItems& items) : items_(&items) {}

  void note(std::string sentence);
  // Only the first of its kind: what a whole file system cannot hold is told once.
  void noteOnce(const std::string& kind, std::string sentence);
  Notes takeNotes();

  bool isObserved() const { return observer_ != nullptr; }
  // False, with errno, when the observer wants the copy to end.
  bool advance(std::int64_t bytes, int objects) const;
  // Whether files may share the blocks of what they are copied from, until a file system says that it cannot do that.
  bool mayShareBlocks() const { return sharesBlocks_; }
  void cannotShareBlocks() { sharesBlocks_ = false; }

  // The item at this path is copied as it was at this look.
  void copied(const std::string& path, const ItemLook& look);

 private:
  const CopyObserver observer_;
  CopiedItems* const items_ = nullptr;
  std::atomic<bool> sharesBlocks_ = true;
  std::mutex mutex_;
  Notes notes_;
  std::vector<std::string> told_;
};

}  // namespace vantory
