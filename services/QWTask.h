// Runs external tools under one set of rules.
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantory {

class Process;

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

  // The same as text, in ASCII where no encoding is given: none when the bytes are not of that encoding, empty when the
  // tool could not be started.
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments);
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments,
                                                   std::shared_ptr<Process>& task);
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments,
                                                   Encoding encoding, std::shared_ptr<Process>& task);
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments,
                                                   Encoding encoding, std::chrono::seconds timeout);
  static std::optional<std::string> stringFromTask(const std::string& tool, const Arguments& arguments,
                                                   std::chrono::seconds timeout);

  // The running process; null when idle.
  std::shared_ptr<Process> theTask() const;
  void setTheTask(std::shared_ptr<Process> task);

 private:
  class TimedRun;

  // What happens when the time is over: asks the running process, if there is one still, to end.
  void timeout(const std::string& tool);

  mutable std::mutex mutex_;
  std::shared_ptr<Process> theTask_;
};

}  // namespace vantory
