// Runs external tools under one set of rules.
#pragma once

#include <any>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vantory {

class Process;
enum class Streams;

// A tool is an executable file that is no package; anything else is logged as "Error: %@ is not executable" and
// answered with the form's failure value, as is a tool that the system refuses to start.
//
// A time limit asks the tool to end when it is over. It acts only for runs that were started off the main thread,
// because the expiry runs on it; a timed run on the main thread is a plain one and makes no thread.
class QWTask {
 public:
  using Arguments = std::vector<std::string>;
  enum class Encoding { Ascii, Utf8 };

  QWTask() = default;
  ~QWTask();  // as terminateAsyncTask()
  QWTask(const QWTask&) = delete;
  QWTask& operator=(const QWTask&) = delete;

  // Waits for the tool to end. False when it could not be started. `task`, where given, is the process before it is
  // waited for.
  static bool runTask(const std::string& tool, const Arguments& arguments);
  static bool runTask(const std::string& tool, const Arguments& arguments, std::shared_ptr<Process>& task);
  static bool runTask(const std::string& tool, const Arguments& arguments, std::chrono::seconds timeout);

  // Starts the tool and returns.
  static bool runTaskAndReturn(const std::string& tool, const Arguments& arguments);

  // The tool's exit status; -1 when it could not be started.
  static int terminationCodeFromTask(const std::string& tool, const Arguments& arguments);
  static int terminationCodeFromTask(const std::string& tool, const Arguments& arguments,
                                     std::shared_ptr<Process>& task);
  static int terminationCodeFromTask(const std::string& tool, const Arguments& arguments, std::chrono::seconds timeout);

  // What the tool wrote to standard error when it wrote anything there, else its standard output. None when it could
  // not be started.
  static std::optional<std::string> dataFromTask(const std::string& tool, const Arguments& arguments,
                                                 std::shared_ptr<Process>& task);
  static std::optional<std::string> dataFromTask(const std::string& tool, const Arguments& arguments,
                                                 std::chrono::seconds timeout);

  // The same as text: none when the bytes are not of that encoding, empty when the tool could not be started.
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments,
                                                   Encoding encoding, std::chrono::seconds timeout);

  static constexpr const char* kPieceKey = "NSFileHandleNotificationDataItem";
  // Gets a piece of a tool's standard output, and at its end an empty one. It may end the run, begin another or destroy
  // the task, and in the last two cases must not use the task again.
  using AsyncDelegate = std::function<void(const std::string& data, QWTask& task, const std::any& object)>;

  // Starts the tool and returns; what it writes to standard output goes to the delegate as it comes, on a thread that
  // reads it, after a notification "QWAsyncTaskDataNotification" that carries it as data under kPieceKey. At the end of
  // the output, also of a tool that could not be started, the tool is asked to end and delegate and object are let go
  // of. An earlier run is ended first.
  void asyncDataFromTask(const std::string& tool, const Arguments& arguments, AsyncDelegate delegate,
                         std::any object = {});
  // Ends the run without a last piece: asks the tool to end and stops reading, whoever still writes. Unless the
  // delegate itself called this, it is not running when this returns and never will again; so it must not wait for the
  // thread that may call this.
  void terminateAsyncTask();

  // The running process; null when idle.
  std::shared_ptr<Process> theTask() const;
  void setTheTask(std::shared_ptr<Process> task);

 private:
  class TimedRun;
  struct AsyncRun;

  // Null when the tool could not be started.
  static std::shared_ptr<Process> launch(const std::string& tool, const Arguments& arguments, Streams streams);

  // What happens when the time is over: asks the running process, if there is one still, to end.
  void timeout(const std::string& tool);

  void launchAsyncTask(AsyncRun& run);
  void asyncTaskReturnData(const AsyncRun& run, const std::string& data);

  mutable std::mutex mutex_;  // for all below
  std::shared_ptr<Process> theTask_;
  std::shared_ptr<AsyncRun> asyncRun_;  // the newest
  std::thread asyncReader_;             // its thread
};

}  // namespace vantory
