// A line at the bottom of a terminal that says what is being done.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/posix/files/Descriptor.h"

namespace vantory {

// Appears after a second, is rewritten in place, and is gone when it is cleared or destroyed. Drawn by a thread of its
// own, so that work which hangs shows too. Any thread.
class ProgressLine {
 public:
  // On standard error; null unless that is the process's terminal and one on which a line can be rewritten. A signal
  // that ends the program takes the line away first.
  static std::unique_ptr<ProgressLine> onStandardError();
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // What is done now, such as "Copying", and to which item.
  void show(const char* deed, const std::string& path);
  // Adds to what is done already; the bytes may be fewer than none.
  void advance(std::int64_t bytes, int objects);

  // Called before anything else is written to the terminal. The line comes back after a second.
  void clear();
  // The same, and it does not come back.
  void end();

 private:
  explicit ProgressLine(Descriptor terminal) : terminal_(std::move(terminal)) {}

  void run();
  bool isInForeground() const;
  void draw();
  void erase();
  void write(std::string_view text) const;
  std::string text() const;

  // Opened for the line alone, so that writing to it never waits, whoever else writes there.
  const Descriptor terminal_;

  std::mutex mutex_;  // for all below
  std::condition_variable changed_;
  const char* deed_ = "";
  std::string path_;
  std::int64_t bytes_ = 0;
  std::int64_t objects_ = 0;
  std::chrono::steady_clock::time_point nextDrawing_;
  std::string drawn_;  // what stands there
  bool ended_ = false;
  std::thread thread_;
};

// While it exists, something is done before each output on a stream.
class BeforeOutput : private std::streambuf {
 public:
  BeforeOutput(std::ostream& stream, std::function<void()> action);
  ~BeforeOutput() override;

 private:
  int sync() override;

  std::ostream& stream_;
  const std::function<void()> action_;
  std::ostream tied_;
  std::ostream* const previous_;
};

}  // namespace vantory
