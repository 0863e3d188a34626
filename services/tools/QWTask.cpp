// Starts tools, gathers their output, and ends those that take too long.
#include "services/tools/QWTask.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "base/Format.h"
#include "base/Text.h"
#include "platform/FileMetadata.h"
#include "platform/Processes.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using ProcessPointer = std::shared_ptr<Process>;
using Text = std::optional<std::string>;

template <class... Arguments>
void logToSystem(std::string_view format, const Arguments&... arguments) {
  Runtime::current().platform().systemLog.write(printable(formatted(format, arguments...)));
}

// What is none is told in both logs.
bool isTool(const std::string& path) {
  const FileMetadata& metadata = Runtime::current().platform().metadata;
  if (metadata.isExecutable(path) && !metadata.isPackage(path)) return true;
  logToSystem("Error: %@ is not executable", path);
  QWLog::appendLog("Error: %@ is not executable", path);
  return false;
}

// Error text takes precedence over output.
std::string outputOf(Process& process) {
  Process::Output streams = process.readAll();
  process.wait();
  return std::move(streams.errors.empty() ? streams.output : streams.errors);
}

bool isAscii(std::string_view bytes) {
  return std::none_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte > 127; });
}

// Without output the text is empty; with bytes of another encoding there is none.
Text decoded(Text output, QWTask::Encoding encoding) {
  if (!output) return "";
  const bool fits = encoding == QWTask::Encoding::Ascii ? isAscii(*output) : isUtf8(*output);
  return fits ? std::move(output) : std::nullopt;
}

// On the reader's thread, whoever observes.
void postPiece(const std::string& data) {
  UserInfo piece;
  piece.set(QWTask::kPieceKey, PropertyListData{data});
  NotificationCenter::shared().post("QWAsyncTaskDataNotification", piece);
}

}  // namespace

// One run of a tool with a limit to its time, which is counted from here to the destructor.
class QWTask::TimedRun {
 public:
  TimedRun(ProcessPointer process, std::string tool, std::chrono::seconds limit)
      : tool_(std::move(tool)), limit_(limit) {
    task_.setTheTask(std::move(process));
    if (MainThread::shared().isCurrent()) return;
    try {
      timer_ = std::thread([this] { waitForLimit(); });
    } catch (const std::system_error&) {
      // No thread is to be had: the run has no limit.
      logToSystem("Error: the time of %@ cannot be limited", tool_);
    }
  }

  ~TimedRun() {
    task_.setTheTask(nullptr);
    if (!timer_.joinable()) return;
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    changed_.notify_one();
    timer_.join();
  }

  TimedRun(const TimedRun&) = delete;
  TimedRun& operator=(const TimedRun&) = delete;

 private:
  // On a thread of its own, until the run has ended or its time is over.
  void waitForLimit() {
    {
      std::unique_lock lock(mutex_);
      if (changed_.wait_for(lock, limit_, [this] { return ended_; })) return;
    }
    MainThread::shared().runAndWait([this] { task_.timeout(tool_); });
  }

  QWTask task_;
  const std::string tool_;
  const std::chrono::seconds limit_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  std::thread timer_;
};

// Both logs hear of a tool that does not start.
ProcessPointer QWTask::launch(const std::string& tool, const Arguments& arguments, Streams streams) {
  if (!isTool(tool)) return nullptr;
  auto process = Runtime::current().platform().processes.start(tool, arguments, streams);
  if (process) return std::move(*process);
  logToSystem("Error: %@", process.error().text);
  QWLog::appendLog("Error: %@", process.error().text);
  return nullptr;
}

bool QWTask::runTask(const std::string& tool, const Arguments& arguments) {
  ProcessPointer task;
  return runTask(tool, arguments, task);
}

bool QWTask::runTask(const std::string& tool, const Arguments& arguments, ProcessPointer& task) {
  task = launch(tool, arguments, Streams::Discarded);
  if (!task) return false;
  task->wait();
  return true;
}

bool QWTask::runTask(const std::string& tool, const Arguments& arguments, std::chrono::seconds timeout) {
  const ProcessPointer process = launch(tool, arguments, Streams::Discarded);
  if (!process) return false;
  const TimedRun run(process, tool, timeout);
  process->wait();
  return true;
}

bool QWTask::runTaskAndReturn(const std::string& tool, const Arguments& arguments) {
  return launch(tool, arguments, Streams::Discarded) != nullptr;
}

int QWTask::terminationCodeFromTask(const std::string& tool, const Arguments& arguments) {
  ProcessPointer task;
  return terminationCodeFromTask(tool, arguments, task);
}

int QWTask::terminationCodeFromTask(const std::string& tool, const Arguments& arguments, ProcessPointer& task) {
  task = launch(tool, arguments, Streams::Discarded);
  return task ? task->wait() : -1;
}

int QWTask::terminationCodeFromTask(const std::string& tool, const Arguments& arguments, std::chrono::seconds timeout) {
  const ProcessPointer process = launch(tool, arguments, Streams::Discarded);
  if (!process) return -1;
  const TimedRun run(process, tool, timeout);
  return process->wait();
}

Text QWTask::dataFromTask(const std::string& tool, const Arguments& arguments, ProcessPointer& task) {
  task = launch(tool, arguments, Streams::Captured);
  if (!task) return std::nullopt;
  return outputOf(*task);
}

Text QWTask::dataFromTask(const std::string& tool, const Arguments& arguments, std::chrono::seconds timeout) {
  const ProcessPointer process = launch(tool, arguments, Streams::Captured);
  if (!process) return std::nullopt;
  const TimedRun run(process, tool, timeout);
  return outputOf(*process);
}

Text QWTask::stringFromTask(const std::string& tool, const Arguments& arguments, Encoding encoding,
                            std::chrono::seconds timeout) {
  return decoded(dataFromTask(tool, arguments, timeout), encoding);
}

ProcessPointer QWTask::theTask() const {
  const std::lock_guard lock(mutex_);
  return theTask_;
}

void QWTask::setTheTask(ProcessPointer task) {
  const std::lock_guard lock(mutex_);
  theTask_ = std::move(task);
}

// A tool that has ended meanwhile is left alone.
void QWTask::timeout(const std::string& tool) {
  const ProcessPointer task = theTask();
  if (!task || !task->isRunning()) return;
  logToSystem("Task timed out. Terminating...");
  QWLog::appendLog("Task %@ timed out. Terminating...", tool);
  task->terminate();
  task->stopReading();  // what the tool started may hold its output open
}

// One asynchronous run, shared by the task and the thread that reads. Only that thread uses delegate and object, and
// lets go of them. While the run has not ended the task is there: whoever destroys it ends the run and, unless it is
// that thread, waits for it.
struct QWTask::AsyncRun {
  const std::shared_ptr<Process> process;  // null when it could not be started
  AsyncDelegate delegate;
  std::any object;
  std::atomic<bool> ended = false;

  void end() {
    ended = true;
    if (!process) return;
    process->stopReading();
    process->terminate();
  }
};

QWTask::~QWTask() {
  terminateAsyncTask();
  if (asyncReader_.joinable()) asyncReader_.detach();  // it is this thread: the delegate destroys the task
}

// The thread is made under the lock, so that an end from elsewhere finds it.
void QWTask::asyncDataFromTask(const std::string& tool, const Arguments& arguments, AsyncDelegate delegate,
                               std::any object) {
  terminateAsyncTask();
  setTheTask(launch(tool, arguments, Streams::OutputCaptured));
  const auto run = std::shared_ptr<AsyncRun>(new AsyncRun{theTask(), std::move(delegate), std::move(object)});
  try {
    const std::lock_guard lock(mutex_);
    if (asyncReader_.joinable()) asyncReader_.detach();  // it is this thread: the delegate begins another run
    asyncRun_ = run;
    asyncReader_ = std::thread([this, run] { launchAsyncTask(*run); });
  } catch (const std::system_error&) {
    terminateAsyncTask();
    QWLog::appendLog("Unable to launch async task - no thread to read it");
    asyncTaskReturnData(*run, "");
  }
}

// The reader's thread: each piece is posted, then given to the delegate. An end from elsewhere is heeded in between.
void QWTask::launchAsyncTask(AsyncRun& run) {
  if (!run.process) QWLog::appendLog("Unable to launch async task - no task set");
  for (bool atEnd = false; !atEnd && !run.ended;) {
    const std::string data = run.process ? run.process->readSome() : "";
    atEnd = data.empty();
    if (!run.ended) postPiece(data);
    if (!run.ended) asyncTaskReturnData(run, data);
  }
  if (!run.ended.exchange(true)) {
    if (run.process) run.process->terminate();
    setTheTask(nullptr);
  }
  run.object.reset();
  run.delegate = nullptr;
}

void QWTask::asyncTaskReturnData(const AsyncRun& run, const std::string& data) {
  try {
    if (run.delegate) run.delegate(data, *this, run.object);
  } catch (const std::exception& exception) {
    QWException::logException(exception, "asyncTaskReturnData:");
  }
}

// The reader is waited for without the lock, and never by itself.
void QWTask::terminateAsyncTask() {
  std::thread reader;
  {
    const std::lock_guard lock(mutex_);
    if (asyncRun_) {
      asyncRun_->end();
      asyncRun_ = nullptr;
      theTask_ = nullptr;
    }
    if (asyncReader_.get_id() != std::this_thread::get_id()) reader.swap(asyncReader_);
  }
  if (reader.joinable()) reader.join();
}

}  // namespace vantory
