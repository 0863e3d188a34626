#include "tests/support/FaultyFileSystem.h"

#include <utility>

namespace vantory::test {

class FaultyFileSystem::FaultyCopy : public StagedCopy {
 public:
  FaultyCopy(FaultyFileSystem& files, std::string path, std::unique_ptr<StagedCopy> copy)
      : files_(files), path_(std::move(path)), copy_(std::move(copy)) {}
  Status commit(Existing existing) override {
    return files_.run(Operation::Commit, path_, [&] { return copy_->commit(existing); });
  }
  const std::vector<std::string>& notes() const override { return copy_->notes(); }

 private:
  FaultyFileSystem& files_;
  std::string path_;
  std::unique_ptr<StagedCopy> copy_;
};

void FaultyFileSystem::set(Operation operation, Plan plan) {
  const std::lock_guard lock(mutex_);
  plans_.insert_or_assign(operation, plan);
}

std::optional<FaultyFileSystem::Plan> FaultyFileSystem::next(Operation operation) const {
  const std::lock_guard lock(mutex_);
  const int call = ++calls_[operation];
  const auto plan = plans_.find(operation);
  if (plan == plans_.end() || (plan->second.call != kEveryCall && plan->second.call != call)) return std::nullopt;
  return plan->second;
}

void FaultyFileSystem::refuseWrites(std::errc code) {
  for (const Operation operation :
       {Operation::Write, Operation::OpenForAppending, Operation::StageCopy, Operation::Commit, Operation::Move,
        Operation::Remove, Operation::MakeFolder, Operation::Trash})
    fail(operation, code, kEveryCall);
}

void FaultyFileSystem::heal() {
  const std::lock_guard lock(mutex_);
  plans_.clear();
  calls_.clear();
}

int FaultyFileSystem::calls(Operation operation) const {
  const std::lock_guard lock(mutex_);
  const auto count = calls_.find(operation);
  return count == calls_.end() ? 0 : count->second;
}

Result<std::unique_ptr<StagedCopy>> FaultyFileSystem::stageCopy(const CopyRequest& request) {
  auto copy = run(Operation::StageCopy, request.source, [&] { return disk_.stageCopy(request); });
  if (!copy) return copy.error();
  return std::unique_ptr<StagedCopy>(std::make_unique<FaultyCopy>(*this, request.destination, std::move(*copy)));
}

}  // namespace vantory::test
