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

template <class Work>
auto FaultyFileSystem::run(Operation operation, const std::string& path, Work work) const -> decltype(work()) {
  const auto plan = next(operation);
  if (plan && plan->fault == Fault::CrashBefore) throw SimulatedCrash();
  if (plan && plan->fault == Fault::Error)
    return Error{plan->code, path + ": " + std::make_error_code(plan->code).message()};
  auto result = work();
  if (plan && plan->fault == Fault::CrashAfter) throw SimulatedCrash();
  return result;
}

Result<FileInfo> FaultyFileSystem::info(const std::string& path, Links links) const {
  return run(Operation::Info, path, [&] { return disk_.info(path, links); });
}

Result<std::vector<DirectoryEntry>> FaultyFileSystem::list(const std::string& path, Detail detail) const {
  return run(Operation::List, path, [&] { return disk_.list(path, detail); });
}

Result<std::string> FaultyFileSystem::read(const std::string& path) const {
  return run(Operation::Read, path, [&] { return disk_.read(path); });
}

Status FaultyFileSystem::write(const std::string& path, std::string_view bytes, WriteOptions options) {
  return run(Operation::Write, path, [&] { return disk_.write(path, bytes, options); });
}

Result<std::unique_ptr<AppendFile>> FaultyFileSystem::openForAppending(const std::string& path) {
  return run(Operation::OpenForAppending, path, [&] { return disk_.openForAppending(path); });
}

Result<std::unique_ptr<StagedCopy>> FaultyFileSystem::stageCopy(const CopyRequest& request) {
  auto copy = run(Operation::StageCopy, request.source, [&] { return disk_.stageCopy(request); });
  if (!copy) return copy.error();
  return std::unique_ptr<StagedCopy>(std::make_unique<FaultyCopy>(*this, request.destination, std::move(*copy)));
}

Status FaultyFileSystem::move(const std::string& source, const std::string& destination) {
  return run(Operation::Move, source, [&] { return disk_.move(source, destination); });
}

Status FaultyFileSystem::remove(const std::string& path) {
  return run(Operation::Remove, path, [&] { return disk_.remove(path); });
}

Status FaultyFileSystem::makeFolder(const std::string& path) {
  return run(Operation::MakeFolder, path, [&] { return disk_.makeFolder(path); });
}

Result<std::string> FaultyFileSystem::trash(const std::string& path, const std::string& trashFolder) {
  return run(Operation::Trash, path, [&] { return disk_.trash(path, trashFolder); });
}

Status FaultyFileSystem::sync(const std::string& path) {
  return run(Operation::Sync, path, [&] { return disk_.sync(path); });
}

Result<std::unique_ptr<FolderHold>> FaultyFileSystem::holdFolder(const std::string& path,
                                                                 std::chrono::milliseconds wait) {
  return run(Operation::HoldFolder, path, [&] { return disk_.holdFolder(path, wait); });
}

}  // namespace vantory::test
