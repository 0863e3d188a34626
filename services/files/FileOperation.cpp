// Measures, copies, reports each second, and ends with a last call.
#include "services/files/FileOperation.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Format.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"
#include "services/files/Items.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr double kSecondsBetweenReports = 1.0;

double secondsBetween(Timestamp earlier, Timestamp later) {
  return static_cast<double>(later.seconds - earlier.seconds) + (later.nanoseconds - earlier.nanoseconds) / 1e9;
}

}  // namespace

// The operations that have not made their last report. They end with the Runtime.
class FileOperation::Running {
 public:
  ~Running() {
    for (const auto& operation : operations_) operation->cancel();
    for (const auto& operation : operations_) operation->join();
  }

  void add(std::shared_ptr<FileOperation> operation) {
    const std::lock_guard lock(mutex_);
    operations_.push_back(std::move(operation));
  }
  void remove(const std::shared_ptr<FileOperation>& operation) {
    const std::lock_guard lock(mutex_);
    std::erase(operations_, operation);
  }

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<FileOperation>> operations_;
};

void FileOperationDelegate::fileOperationProgress(const FileOperationInfo& info, FileOperation&) {
  fileOperationProgress(info);
}

void FileOperationDelegate::fileOperationProgress(const FileOperationInfo&) {}

void FileOperationDelegate::fileOperationFinished(const FileOperationInfo& info, FileOperation&) {
  fileOperationFinished(info);
}

void FileOperationDelegate::fileOperationFinished(const FileOperationInfo&) {}

FileOperation::FileOperation(FileOperationContext context) : info_{std::move(context)} {}

Status FileOperation::start() {
  // What the thread needs must be there before Running, so that it is there until the thread has ended.
  MainThread::shared();
  QWLog::sharedController();
  auto& running = Runtime::current().shared<Running>();
  running.add(shared_from_this());
  try {
    const std::lock_guard lock(mutex_);
    thread_ = std::thread([this] { run(); });
    return {};
  } catch (const std::system_error& error) {
    running.remove(shared_from_this());
    return Error{static_cast<std::errc>(error.code().value()), error.what()};
  }
}

// The thread. A failure is logged here; the delegate knows it by the missing destination.
void FileOperation::run() {
  measure();
  if (const Status copied = copy(); !copied && !cancelled_)
    QWLog::appendLog("Error copying file: %@", copied.error().text);
  finish();
}

void FileOperation::measure() {
  const std::lock_guard lock(mutex_);
  const auto source = Runtime::current().platform().files.info(info_.source, Links::Follow);
  if (source && source->type == FileType::File) {
    info_.bytesTotal = source->size;
    info_.objectsTotal = 1;
  } else if (source) {
    walkFolder(info_.source, Detail::Sizes, Links::DoNotFollow,
               [this](const std::string&, const DirectoryEntry& entry) {
                 if (entry.type == FileType::File) info_.bytesTotal += entry.size;
                 if (entry.type != FileType::Other) ++info_.objectsTotal;
                 return !cancelled_;
               });
  }
  lastReport_ = Runtime::current().platform().clock.now();
}

// Never over an item: looked for before anything is copied, and once more by the last step.
Status FileOperation::copy() {
  if (itemExists(info_.destination))
    return Error{std::errc::file_exists, formatted("%@ exists already", info_.destination)};
  auto copy = Runtime::current().platform().files.stageCopy(
      {.source = info_.source, .destination = info_.destination, .observer = [this](std::int64_t bytes, int objects) {
         return advance(bytes, objects);
       }});
  if (!copy) return copy.error();
  for (const std::string& note : (*copy)->notes()) QWLog::appendLog("%@", note);
  if (cancelled_) return Error{std::errc::operation_canceled, info_.destination};
  return (*copy)->commit(StagedCopy::Existing::Keep);
}

// Heard from all threads that copy; false ends them.
bool FileOperation::advance(std::int64_t bytes, int objects) {
  if (cancelled_) return false;
  const std::lock_guard lock(mutex_);
  info_.bytesCompleted += static_cast<std::uint64_t>(bytes);
  info_.objectsCompleted += static_cast<std::uint64_t>(objects);
  // What has grown since it was measured.
  info_.bytesTotal = std::max(info_.bytesTotal, info_.bytesCompleted);
  info_.objectsTotal = std::max(info_.objectsTotal, info_.objectsCompleted);
  const Timestamp now = Runtime::current().platform().clock.now();
  const double seconds = secondsBetween(lastReport_, now);
  if (seconds >= kSecondsBetweenReports) report(seconds);
  if (seconds >= kSecondsBetweenReports || seconds < 0) lastReport_ = now;  // the clock may be set back
  return true;
}

// Under the lock. The delegate gets the numbers as they are now, on the main thread.
void FileOperation::report(double seconds) {
  info_.stage = FileOperationInfo::Stage::Running;
  // Fewer than before when a file is copied again.
  const auto bytes = static_cast<double>(info_.bytesCompleted) - static_cast<double>(bytesAtLastReport_);
  info_.throughput = std::max(bytes, 0.0) / seconds;
  bytesAtLastReport_ = info_.bytesCompleted;
  if (!info_.delegate) return;
  MainThread::shared().post(
      [self = shared_from_this(), info = info_] { info.delegate->fileOperationProgress(info, *self); });
}

// The main thread tells the delegate only once this thread has ended.
void FileOperation::finish() {
  const std::lock_guard lock(mutex_);
  info_.stage = FileOperationInfo::Stage::Complete;
  // Lets go of the delegate, which may hold this operation.
  MainThread::shared().post([self = shared_from_this(), info = std::exchange(info_, {})] {
    self->join();
    Runtime::current().shared<Running>().remove(self);
    if (info.delegate) info.delegate->fileOperationFinished(info, *self);
  });
}

// Waits without the lock, which the thread takes for its last step.
void FileOperation::join() {
  std::thread ended;
  {
    const std::lock_guard lock(mutex_);
    ended.swap(thread_);
  }
  if (ended.joinable()) ended.join();
}

}  // namespace vantory
