// Small files of a list, copied by a second thread from the end while their owner works from the front.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/FileSystem.h"

namespace vantory {

// Only saves time: what could not be copied here, for whatever reason, is its owner's to copy. Used by one thread.
class CopiesAhead {
 public:
  // The first `taken` requests have been taken already. What is no small file, or has no folder to go to, is passed
  // over. A short list is not worth a thread.
  CopiesAhead(std::vector<CopyRequest> requests, std::size_t taken);
  // Copies that were not taken leave no trace.
  ~CopiesAhead();
  CopiesAhead(const CopiesAhead&) = delete;
  CopiesAhead& operator=(const CopiesAhead&) = delete;

  // The copy of a request, waited for if it is being made, and made now if a second thread has not come to it; null
  // when there is none. From then on that thread begins neither this one nor those before it. Indexes come in ascending
  // order.
  std::unique_ptr<StagedCopy> take(std::size_t index);

 private:
  void run();
  // Ends the work ahead, and closes what it holds open. Under the lock.
  void letGo();

  const std::vector<CopyRequest> requests_;
  std::vector<std::unique_ptr<StagedCopy>> copies_;
  std::mutex mutex_;
  std::condition_variable made_;
  std::size_t taken_;     // how many at the front are the owner's
  std::size_t begun_;     // from here on the second thread has begun
  std::size_t finished_;  // from here on it is done
  bool ended_ = false;    // nothing more is begun
  std::thread thread_;
};

}  // namespace vantory
