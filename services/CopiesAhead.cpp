#include "services/CopiesAhead.h"

#include <algorithm>
#include <system_error>

#include "services/Runtime.h"

namespace vantory {

namespace {

constexpr std::size_t kFewestRequests = 8;
// Each holds a file open.
constexpr std::size_t kMostCopies = 64;
constexpr std::uint64_t kLargestBytes = 1 << 20;

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
    taken_ = requests_.size();
  }
  if (thread_.joinable()) thread_.join();
}

std::unique_ptr<StagedCopy> CopiesAhead::take(std::size_t index) {
  std::unique_lock lock(mutex_);
  taken_ = std::max(taken_, index + 1);
  if (index < begun_) return nullptr;
  made_.wait(lock, [&] { return index >= finished_; });
  return std::move(copies_[index]);
}

void CopiesAhead::run() {
  const std::size_t last = requests_.size() - std::min(requests_.size(), kMostCopies);
  std::unique_lock lock(mutex_);
  while (begun_ > std::max(taken_, last)) {
    const std::size_t index = --begun_;
    lock.unlock();
    auto copy = copyOf(requests_[index]);
    lock.lock();
    copies_[index] = std::move(copy);
    finished_ = index;
    made_.notify_one();
  }
}

std::unique_ptr<StagedCopy> CopiesAhead::copyOf(const CopyRequest& request) {
  FileSystem& files = Runtime::current().platform().files;
  const auto info = files.info(request.source, Links::DoNotFollow);
  if (!info || info->type != FileType::File || info->size > kLargestBytes) return nullptr;
  auto copy = files.stageCopy(request);
  return copy ? std::move(*copy) : nullptr;
}

}  // namespace vantory
