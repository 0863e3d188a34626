// A second thread that works from the end of the list.
#include "services/files/CopiesAhead.h"

#include <algorithm>
#include <exception>
#include <system_error>

#include "services/Runtime.h"

namespace vantory {

namespace {

// Fewer are copied sooner than a thread has started.
constexpr std::size_t kFewestRequests = 8;
// Each holds a file open.
constexpr std::size_t kMostCopies = 64;
constexpr std::uint64_t kLargestBytes = 1 << 20;

using Staged = Result<std::unique_ptr<StagedCopy>>;

// Null for what is no small file.
Staged stage(const CopyRequest& request) {
  FileSystem& files = Runtime::current().platform().files;
  const auto info = files.info(request.source, Links::DoNotFollow);
  if (!info) return info.error();
  if (info->type != FileType::File || info->size > kLargestBytes) return std::unique_ptr<StagedCopy>();
  return files.stageCopy(request);
}

// An exception that left the thread would end the program.
Staged stageCaught(const CopyRequest& request) {
  try {
    return stage(request);
  } catch (const std::exception& exception) {
    return Error{std::errc::not_enough_memory, exception.what()};
  }
}

// By the limit of the process, or by that of the machine.
bool tooManyFilesOpen(const Staged& copy) {
  return !copy && (copy.error().code == std::errc::too_many_files_open ||
                   copy.error().code == std::errc::too_many_files_open_in_system);
}

}  // namespace

CopiesAhead::CopiesAhead(std::vector<CopyRequest> requests, std::size_t taken)
    : requests_(std::move(requests)),
      copies_(requests_.size()),
      taken_(taken),
      begun_(requests_.size()),
      finished_(requests_.size()) {
  if (requests_.size() < taken + kFewestRequests) return;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // The owner makes them all.
  }
}

CopiesAhead::~CopiesAhead() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  if (thread_.joinable()) thread_.join();
}

// The second thread has the request already, or there is no such thread, or it has not come so far yet.
std::unique_ptr<StagedCopy> CopiesAhead::take(std::size_t index) {
  std::unique_lock lock(mutex_);
  taken_ = std::max(taken_, index + 1);
  if (index >= begun_) {
    made_.wait(lock, [&] { return index >= finished_; });
    return std::move(copies_[index]);
  }
  if (!thread_.joinable()) return nullptr;
  lock.unlock();
  Staged copy = stage(requests_[index]);
  if (copy) return std::move(*copy);
  lock.lock();
  if (tooManyFilesOpen(copy)) {
    letGo();
    made_.wait(lock, [&] { return begun_ == finished_; });
  }
  return nullptr;
}

void CopiesAhead::letGo() {
  ended_ = true;
  for (auto& copy : copies_) copy.reset();
}

// From the end towards the owner, until they meet or enough copies wait to be taken.
void CopiesAhead::run() {
  const std::size_t last = requests_.size() - std::min(requests_.size(), kMostCopies);
  std::unique_lock lock(mutex_);
  while (!ended_ && begun_ > std::max(taken_, last)) {
    const std::size_t index = --begun_;
    lock.unlock();
    Staged copy = stageCaught(requests_[index]);
    lock.lock();
    // Those that are open here could be the ones that the owner needs.
    if (tooManyFilesOpen(copy)) letGo();
    if (copy && !ended_) copies_[index] = std::move(*copy);
    finished_ = index;
    made_.notify_one();
  }
}

}  // namespace vantory
