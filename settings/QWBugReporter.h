// Records starts and orderly ends, so that a crash is noticed at the next start.
#pragma once

#include <optional>
#include <string>

namespace vantory {

class BugReporterDelegate {
 public:
  virtual ~BugReporterDelegate() = default;
  // The program crashed the last time, and left this report: its full path. Main thread.
  virtual void applicationDidCrashWithLog(const std::string& log) = 0;
};

// The record is the two dates "launch" and "exit" in the property list at `plistPath`, beside whatever else it holds:
// the program's settings where no path is given. It belongs to the user in whose home it lies, also when the superuser
// writes it. Reports are known by the program's name, "Vantory" where none is given.
class QWBugReporter {
 public:
  // Looks for a crash since the last start, then records this one. The delegate, which may be null, is told once the
  // main thread is free, and must live until the main thread is shut down. What a start without a delegate finds is
  // told to the delegate of the next one that has one.
  static void startBugReporter();
  static void startBugReporterWithDelegate(BugReporterDelegate* delegate);
  static void startBugReporter(const std::string& appName, const std::string& plistPath,
                               BugReporterDelegate* delegate = nullptr);

  // Records an orderly end.
  static void stopBugReporter();
  static void stopBugReporter(const std::string& plistPath);

  // The path of the program's crash report that is newer than the last start, where that start had no orderly end.
  // Found, it is opened with the maker's bug reporter, where that is installed and not switched off.
  static std::optional<std::string> checkForCrashes(const std::string& appName, const std::string& plistPath);

  // Tells a person what the report is for and how to get help, unless the bug reporter does that or is switched off.
  // Blocks until it is read.
  static void showCrashNotice(const std::string& log);
};

}  // namespace vantory
