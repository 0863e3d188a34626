// Copies that run in the background and tell a delegate how far they are.
#pragma once

#include <any>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/Result.h"
#include "base/Timestamp.h"

namespace vantory {

class FileOperation;
struct FileOperationInfo;

// Called on the main thread. Of each pair the form with the operation is what is called; by default it calls the other.
class FileOperationDelegate {
 public:
  virtual ~FileOperationDelegate() = default;

  // Once a second of the copy.
  virtual void fileOperationProgress(const FileOperationInfo& info, FileOperation& operation);
  virtual void fileOperationProgress(const FileOperationInfo& info);
  // The last call, also for a copy that failed or was cancelled: it is known by its missing destination.
  virtual void fileOperationFinished(const FileOperationInfo& info, FileOperation& operation);
  virtual void fileOperationFinished(const FileOperationInfo& info);
};

// What is copied where, and for whom.
struct FileOperationContext {
  std::string source;
  std::string destination;
  std::shared_ptr<FileOperationDelegate> delegate;  // may be null
  std::any object;                                  // the caller's own
  std::any object2;
};

struct FileOperationInfo : FileOperationContext {
  enum class Stage { Preflighting = 1, Running = 2, Complete = 3 };

  std::string operationType = "copy";
  Stage stage = Stage::Preflighting;
  std::uint64_t bytesCompleted = 0;
  std::uint64_t bytesTotal = 0;
  std::uint64_t objectsCompleted = 0;  // files and links; folders do not count
  std::uint64_t objectsTotal = 0;
  double throughput = 0;  // bytes a second since the last report
};

// One such copy, from its start to its last report.
class FileOperation : public std::enable_shared_from_this<FileOperation> {
 public:
  explicit FileOperation(FileOperationContext context);
  FileOperation(const FileOperation&) = delete;
  FileOperation& operator=(const FileOperation&) = delete;

  // Fails when no thread is to be had.
  Status start();
  // Ends the copy soon; one that is complete stays. Any thread.
  void cancel() { cancelled_ = true; }

 private:
  class Running;

  void run();
  void measure();
  Status copy();
  bool advance(std::int64_t bytes, int objects);
  void report(double seconds);
  void finish();
  void join();

  std::atomic<bool> cancelled_ = false;
  std::mutex mutex_;  // for all below: several threads copy
  std::thread thread_;
  FileOperationInfo info_;  // as of now
  Timestamp lastReport_;
  std::uint64_t bytesAtLastReport_ = 0;
};

}  // namespace vantory
