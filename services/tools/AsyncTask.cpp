#include <atomic>
#include <exception>
#include <system_error>
#include <utility>

#include "platform/Processes.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"
#include "services/tools/QWTask.h"

namespace vantory {

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

void QWTask::launchAsyncTask(AsyncRun& run) {
  if (!run.process) QWLog::appendLog("Unable to launch async task - no task set");
  for (bool atEnd = false; !atEnd && !run.ended;) {
    const std::string data = run.process ? run.process->readSome() : "";
    atEnd = data.empty();
    if (!run.ended) NotificationCenter::shared().post("QWAsyncTaskDataNotification");
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
