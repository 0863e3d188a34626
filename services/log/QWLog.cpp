// Decides which thread writes an entry, and when.
#include "services/log/QWLog.h"

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

#include "platform/SystemLog.h"
#include "services/GlobalSettings.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

constexpr std::size_t kLargestPromptLength = 99;  // UTF-16 units
constexpr std::uint64_t kLargestFile = 499'999;   // bytes of entries

}  // namespace

QWLog::QWLog() : platform_(Runtime::current().platform()), file_(platform_) {}

QWLog::~QWLog() {
  {
    Lock lock(mutex_);
    drain(lock);
    stopping_ = true;
    queued_.notify_all();
  }
  if (writer_.joinable()) writer_.join();
}

QWLog& QWLog::sharedController() {
  return Runtime::current().shared<QWLog>();
}

void QWLog::createNewLog(const std::optional<std::string>& name) {
  sharedController().startNewLog(name);
}

void QWLog::holdUntilNewLog(std::string message) {
  sharedController().hold(std::move(message));
}

void QWLog::keepSilent() {
  sharedController().loggingDisabled_ = true;
}

void QWLog::finishWriting() {
  QWLog& log = sharedController();
  Lock lock(log.mutex_);
  log.drain(lock);
}

std::string QWLog::appName() const {
  const std::lock_guard lock(mutex_);
  return appName_.value_or("Vantory");
}

std::optional<std::string> QWLog::path() const {
  return loggingDisabled_ || hasToldFailure_ ? std::nullopt : LogFile::currentPath(platform_, appName());
}

// A short entry is in the file at the end: written here where nobody else writes, else waited for.
void QWLog::append(std::string_view message) {
  std::string entry(trimmed(message));
  const std::size_t length = utf16Length(entry);
  Lock lock(mutex_);
  bytesInQueue_ += length;
  if (loggingDisabled_) return;
  const std::uint64_t number = ++handedOver_;
  const bool waits =
      !insideWriter() && length >= 1 && length <= kLargestPromptLength && bytesInQueue_ <= kLargestPromptLength;
  if (waits && queue_.empty() && nobodyWrites()) {
    writeInTurn(lock, std::span(&entry, 1));
    if (!queue_.empty()) wakeWriter(lock);
    return;
  }
  queue_.push_back(std::move(entry));
  if (insideWriter()) return;
  wakeWriter(lock);
  if (waits) waitUntilFinished(lock, number);
}

void QWLog::appendAndPrint(const std::string& text) {
  append(formatted(text));
  platform_.systemLog.write(printable(text));
}

// Before the log has begun it is kept in memory.
void QWLog::hold(std::string message) {
  {
    const std::lock_guard lock(mutex_);
    if (!logStarted_) {
      held_.push_back(std::move(message));
      return;
    }
  }
  append(message);
}

// A turn like any other, so that nobody writes while files are renamed.
void QWLog::startNewLog(const std::optional<std::string>& name) {
  Lock lock(mutex_);
  drain(lock);
  turnEnded_.wait(lock, [this] { return nobodyWrites(); });
  writing_ = std::this_thread::get_id();
  logStarted_ = true;
  const std::vector<std::string> held = std::exchange(held_, {});
  lock.unlock();
  hasToldFailure_ = false;
  startFile(name);
  for (const std::string& message : held) write(std::string(trimmed(message)));
  flush();
  lock.lock();
  endTurn();
  if (!queue_.empty()) wakeWriter(lock);
}

// Inside the writer it would wait for itself.
void QWLog::drain(Lock& lock) {
  if (!insideWriter()) waitUntilFinished(lock, handedOver_);
}

// The writer stops gathering as soon as somebody waits.
void QWLog::waitUntilFinished(Lock& lock, std::uint64_t number) {
  ++waiters_;
  if (gathering_) queued_.notify_one();
  turnEnded_.wait(lock, [this, number] { return finished_ >= number; });
  --waiters_;
}

void QWLog::endTurn() {
  writing_ = {};
  turnEnded_.notify_all();
  if (!queue_.empty()) queued_.notify_one();
}

// The lock is given up for the disk; the turn keeps others from writing.
void QWLog::writeInTurn(Lock& lock, std::span<const std::string> entries) {
  writing_ = std::this_thread::get_id();
  lock.unlock();
  for (const std::string& entry : entries)
    if (write(entry)) unflushed_ += utf16Length(entry);
  flush();
  lock.lock();
  finished_ += entries.size();
  endTurn();
}

void QWLog::writeQueued(Lock& lock) {
  while (!queue_.empty()) {
    const std::vector<std::string> entries = std::exchange(queue_, {});
    writeInTurn(lock, entries);
  }
}

// The thread is started for the first entry that needs it.
void QWLog::wakeWriter(Lock& lock) {
  if (!writer_.joinable()) {
    try {
      writer_ = std::thread([this] { runWriter(); });
    } catch (const std::system_error&) {
      // No thread is to be had, so this one writes.
      turnEnded_.wait(lock, [this] { return nobodyWrites(); });
      writeQueued(lock);
    }
  }
  if (!gathering_) queued_.notify_one();
}

// Waking a sleeping thread costs more than writing an entry, so the writer lets entries gather for a moment that nobody
// has to wait for.
void QWLog::runWriter() {
  constexpr std::chrono::milliseconds kGatheringTime{1};
  Lock lock(mutex_);
  for (;;) {
    queued_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    gathering_ = true;
    queued_.wait_for(lock, kGatheringTime, [this] { return stopping_ || waiters_ > 0; });
    gathering_ = false;
    turnEnded_.wait(lock, [this] { return nobodyWrites(); });
    if (stopping_ && queue_.empty()) return;
    const std::vector<std::string> entries = std::exchange(queue_, {});
    writeInTurn(lock, entries);
  }
}

// The person may have switched logging off for all of the maker's programs.
void QWLog::startFile(const std::optional<std::string>& name) {
  file_.close();
  if (globalSwitch("disable-logging")) {
    platform_.systemLog.write("Logging is disabled");
    loggingDisabled_ = true;
    return;
  }
  if (name) {
    const std::lock_guard lock(mutex_);
    if (!appName_) appName_ = name;
  }
  bytesWritten_ = 0;
  file_.create(appName());
}

// True when the entry counts as written: it will be, or no file could be opened for it.
bool QWLog::write(const std::string& entry) {
  if (loggingDisabled_) return false;
  try {
    addToFile(entry);
    return true;
  } catch (const std::exception& exception) {
    return fail(exception.what());
  }
}

// A full file is moved on, and the next one begins by saying so.
void QWLog::addToFile(const std::string& entry) {
  if (!file_.isOpen() && !file_.open(appName())) {
    if (hasToldFailure_.exchange(true)) return;
    platform_.systemLog.write(printable(formatted("Unable to log the following information: %@", entry)));
    platform_.systemLog.write("Unable to open log for output");
    return;
  }
  file_.add(entry);
  if (bytesWritten_ + file_.pending() > kLargestFile && flush()) {
    startFile(appName());
    append("Log truncated at 500KB");
  }
}

// What is in the file no longer counts as waiting.
bool QWLog::flush() {
  const Status written = file_.flush();
  bytesWritten_ = file_.written();
  if (!written) return fail(written.error().text);
  bytesInQueue_ -= std::exchange(unflushed_, 0);
  return true;
}

// Always false. A disk stays full for long: the person is told once.
bool QWLog::fail(std::string_view reason) {
  if (!loggingDisabled_ && !hasToldFailure_.exchange(true))
    platform_.systemLog.write(printable(formatted("Exception writing to log: %@", reason)));
  return false;
}

}  // namespace vantory
