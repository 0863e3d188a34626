// The application's log: one plain text file for each way the program runs, five generations of it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/Format.h"
#include "base/Text.h"
#include "services/log/LogFile.h"

namespace vantory {

// Entries are written one at a time, in the order they were handed over: by the caller while nobody else writes and it
// would wait anyway, otherwise by a background thread that is started when it is first needed. A short entry is in the
// file when appendLog() returns, a long one or one behind a backlog soon after. Control characters and bytes that are
// no UTF-8 are escaped, so that an entry stays one line of text. The log reports its own failures to the system log
// only and never stops the program.
class QWLog {
 public:
  QWLog();
  ~QWLog();  // waits for the writer
  QWLog(const QWLog&) = delete;
  QWLog& operator=(const QWLog&) = delete;

  static QWLog& sharedController();

  // Starts a new file under that name (the first name given stays for good) and moves older ones one generation on.
  static void createNewLog(const std::optional<std::string>& name = std::nullopt);

  // Formats the message, trims it and writes it with date and time. Any thread.
  template <class... Arguments>
  static void appendLog(std::string_view format, const Arguments&... arguments) {
    sharedController().append(formatted(format, arguments...));
  }

  // The same, and to the system log. The finished text serves as a format once more on its way to the log, so that "%%"
  // in an argument comes out as "%".
  template <class... Arguments>
  static void appendLogAndPrint(std::string_view format, const Arguments&... arguments) {
    sharedController().appendAndPrint(formatted(trimmed(format), arguments...));
  }

  // For what may happen before the log has a name: the message becomes one of the first entries of the file that
  // createNewLog() starts. Written at once when it has been called already.
  static void holdUntilNewLog(std::string message);

  // From now on nothing is written, and what is to be printed is printed only.
  static void keepSilent();

  // Returns when everything handed over so far is written.
  static void finishWriting();

  std::string appName() const;
  // The file that entries go to; none where there is no folder for it, logging is switched off, or one could not be
  // written since the log was begun.
  std::optional<std::string> path() const;
  std::uint64_t bytesWritten() const { return bytesWritten_; }  // entries in the current file, without its header
  // UTF-16 units handed over and not yet written.
  std::size_t bytesInQueue() const { return bytesInQueue_; }

 private:
  using Lock = std::unique_lock<std::mutex>;

  void append(std::string_view message);
  void appendAndPrint(const std::string& text);
  void hold(std::string message);
  void startNewLog(const std::optional<std::string>& name);
  void drain(Lock& lock);
  void waitUntilFinished(Lock& lock, std::uint64_t number);

  bool insideWriter() const { return writing_ == std::this_thread::get_id(); }
  bool nobodyWrites() const { return writing_ == std::thread::id(); }
  void endTurn();
  void writeInTurn(Lock& lock, std::span<const std::string> entries);
  void writeQueued(Lock& lock);
  void wakeWriter(Lock& lock);
  void runWriter();

  // The rest belongs to the thread whose turn it is to write, and is called without the lock.
  void startFile(const std::optional<std::string>& name);
  bool write(const std::string& entry);
  void addToFile(const std::string& entry);
  bool flush();
  bool fail(std::string_view reason);

  Platform& platform_;
  LogFile file_;               // only in turn
  std::size_t unflushed_ = 0;  // only in turn: UTF-16 units of entries that were queued and are in `file_` only
  std::atomic<std::uint64_t> bytesWritten_ = 0;
  std::atomic<std::size_t> bytesInQueue_ = 0;
  std::atomic<bool> loggingDisabled_ = false;
  std::atomic<bool> hasToldFailure_ = false;  // since the log was begun

  mutable std::mutex mutex_;  // for all below
  std::condition_variable queued_;
  std::condition_variable turnEnded_;
  std::optional<std::string> appName_;
  std::vector<std::string> queue_;
  std::uint64_t handedOver_ = 0;  // entries, ever
  std::uint64_t finished_ = 0;    // entries, ever: written or given up
  std::thread::id writing_;       // the thread whose turn it is
  bool logStarted_ = false;
  std::vector<std::string> held_;
  std::size_t waiters_ = 0;  // threads that wait for an entry to be finished
  bool gathering_ = false;   // the writer is awake and waits for more
  bool stopping_ = false;
  std::thread writer_;
};

}  // namespace vantory
