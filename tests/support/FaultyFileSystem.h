// A disk that fails when a test wants it to.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/FileSystem.h"

namespace vantory::test {

enum class Operation {
  Info,
  List,
  Read,
  Write,
  OpenForAppending,
  StageCopy,
  Commit,
  Move,
  Remove,
  MakeFolder,
  Trash,
  Sync,
  HoldFolder
};

// Thrown where the process is to have died. What was not done then is never done.
struct SimulatedCrash {};

// Hands everything on to another file system but for the faults set. Calls are counted from 1 for each operation, from
// the start or the last heal(). Any thread.
class FaultyFileSystem : public FileSystem {
 public:
  static constexpr int kEveryCall = 0;

  explicit FaultyFileSystem(FileSystem& disk) : disk_(disk) {}

  void fail(Operation operation, std::errc code, int call = 1) { set(operation, {call, Fault::Error, code}); }
  void crashBefore(Operation operation, int call = 1) { set(operation, {call, Fault::CrashBefore, {}}); }
  void crashAfter(Operation operation, int call = 1) { set(operation, {call, Fault::CrashAfter, {}}); }
  // Every operation that changes the disk fails.
  void refuseWrites() {
    using enum Operation;
    for (const Operation operation : {Write, OpenForAppending, StageCopy, Commit, Move, Remove, MakeFolder, Trash})
      fail(operation, std::errc::read_only_file_system, kEveryCall);
  }
  void heal() {
    const std::lock_guard lock(mutex_);
    plans_.clear();
    calls_.clear();
  }
  int calls(Operation operation) const {
    const std::lock_guard lock(mutex_);
    return calls_[operation];
  }

  Result<FileInfo> info(const std::string& path, Links links) const override {
    return run(Operation::Info, path, [&] { return disk_.info(path, links); });
  }
  Result<std::vector<DirectoryEntry>> list(const std::string& path, Detail detail) const override {
    return run(Operation::List, path, [&] { return disk_.list(path, detail); });
  }
  Result<std::string> read(const std::string& path) const override {
    return run(Operation::Read, path, [&] { return disk_.read(path); });
  }
  Result<bool> haveSameContent(const std::string& path, const std::string& other) const override {
    return run(Operation::Read, path, [&] { return disk_.haveSameContent(path, other); });
  }
  Status write(const std::string& path, std::string_view bytes, WriteOptions options) override {
    return run(Operation::Write, path, [&] { return disk_.write(path, bytes, options); });
  }
  Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) override {
    return run(Operation::OpenForAppending, path, [&] { return disk_.openForAppending(path); });
  }
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override {
    auto copy = run(Operation::StageCopy, request.source, [&] { return disk_.stageCopy(request); });
    if (copy) *copy = std::make_unique<Copy>(*this, request.destination, std::move(*copy));
    return copy;
  }
  Result<Notes> move(const std::string& source, const std::string& destination) override {
    return run(Operation::Move, source, [&] { return disk_.move(source, destination); });
  }
  Status remove(const std::string& path) override {
    return run(Operation::Remove, path, [&] { return disk_.remove(path); });
  }
  Status makeFolder(const std::string& path) override {
    return run(Operation::MakeFolder, path, [&] { return disk_.makeFolder(path); });
  }
  Result<Trashed> trash(const std::string& path, const std::string& trashFolder) override {
    return run(Operation::Trash, path, [&] { return disk_.trash(path, trashFolder); });
  }
  Status sync(const std::string& path) override {
    if (beforeSync) beforeSync(path);
    return run(Operation::Sync, path, [&] { return disk_.sync(path); });
  }
  Result<std::unique_ptr<FolderHold>> holdFolder(const std::string& path, std::chrono::milliseconds wait) override {
    return run(Operation::HoldFolder, path, [&] { return disk_.holdFolder(path, wait); });
  }

  std::function<void(const std::string& path)> beforeSync;  // on the thread that syncs

 private:
  struct Copy : StagedCopy {
    Copy(FaultyFileSystem& all, std::string path, std::unique_ptr<StagedCopy> copy)
        : files(all), destination(std::move(path)), real(std::move(copy)) {}
    Status commit(Existing existing) override {
      return files.run(Operation::Commit, destination, [&] { return real->commit(existing); });
    }
    const Notes& notes() const override { return real->notes(); }

    FaultyFileSystem& files;
    const std::string destination;
    const std::unique_ptr<StagedCopy> real;
  };
  enum class Fault { Error, CrashBefore, CrashAfter };
  struct Plan {
    int call;
    Fault fault;
    std::errc code;
  };

  void set(Operation operation, Plan plan) {
    const std::lock_guard lock(mutex_);
    plans_.insert_or_assign(operation, plan);
  }
  // Counts the call; the plan that applies to it.
  std::optional<Plan> next(Operation operation) const {
    const std::lock_guard lock(mutex_);
    const int call = ++calls_[operation];
    const auto plan = plans_.find(operation);
    if (plan == plans_.end() || (plan->second.call != kEveryCall && plan->second.call != call)) return std::nullopt;
    return plan->second;
  }
  template <class Work>
  auto run(Operation operation, const std::string& path, Work work) const -> decltype(work()) {
    const auto plan = next(operation);
    if (plan && plan->fault == Fault::CrashBefore) throw SimulatedCrash();
    if (plan && plan->fault == Fault::Error)
      return Error{plan->code, path + ": " + std::make_error_code(plan->code).message()};
    auto result = work();
    if (plan && plan->fault == Fault::CrashAfter) throw SimulatedCrash();
    return result;
  }

  FileSystem& disk_;
  mutable std::mutex mutex_;
  mutable std::map<Operation, int> calls_;
  std::map<Operation, Plan> plans_;
};

}  // namespace vantory::test
