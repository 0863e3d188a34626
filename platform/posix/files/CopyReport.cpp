// Collects what the threads tell.
#include "platform/posix/files/CopyReport.h"

#include <algorithm>
#include <cerrno>

#include "platform/posix/files/Moving.h"

namespace vantory {

void CopyReport::note(std::string sentence) {
  const std::lock_guard lock(mutex_);
  notes_.push_back(std::move(sentence));
}

void CopyReport::noteOnce(const std::string& kind, std::string sentence) {
  const std::lock_guard lock(mutex_);
  if (std::find(told_.begin(), told_.end(), kind) != told_.end()) return;
  told_.push_back(kind);
  notes_.push_back(std::move(sentence));
}

Notes CopyReport::takeNotes() {
  const std::lock_guard lock(mutex_);
  return std::move(notes_);
}

bool CopyReport::advance(std::int64_t bytes, int objects) const {
  if (!observer_ || observer_(bytes, objects)) return true;
  errno = ECANCELED;
  return false;
}

void CopyReport::copied(const std::string& path, const ItemLook& look) {
  if (!items_) return;
  const std::lock_guard lock(mutex_);
  items_->add(path, look);
}

}  // namespace vantory
