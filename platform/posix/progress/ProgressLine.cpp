// Draws the line when something takes long, and takes it away.
#include "platform/posix/progress/ProgressLine.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/Paths.h"
#include "base/Text.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kBetweenDrawings = 100ms;
constexpr std::string_view kErase = "\r\x1b[K";

// The terminal on which a line stands now; -1 for none. For a signal's handler.
std::atomic<int> drawnOn = -1;

// A signal's handler: a line left behind would get into the shell's prompt.
void eraseAndEnd(int signal) {
  const int terminal = drawnOn;
  if (terminal >= 0) (void)!write(terminal, kErase.data(), kErase.size());
  raise(signal);  // ends the program, as the handler is called but once
}

// Signals that are handled or ignored already stay so.
void leaveNoLineBehind() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler != SIG_DFL) continue;
    struct sigaction action {};
    action.sa_handler = eraseAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

std::size_t widthOf(int terminal) {
  constexpr std::size_t kUsualWidth = 80;
  winsize size{};
  return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

// The superuser's process takes nothing from its environment.
bool isDumb() {
  const char* terminal = getuid() == 0 ? nullptr : std::getenv("TERM");
  return terminal && std::string_view(terminal) == "dumb";
}

// As much of the text as fits, with nothing that a terminal could take for a command. Characters of three bytes and
// more may be two columns wide.
std::string fitting(std::string_view text, std::size_t columns) {
  std::string line;
  while (!text.empty()) {
    const std::size_t length = utf8CharacterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    const std::size_t width = length > 2 ? 2 : 1;
    if (width > columns) break;
    columns -= width;
    line += length == 0 || isControlCharacter(character) ? "?" : character;
    text.remove_prefix(character.size());
  }
  return line;
}

std::string sizeText(std::int64_t bytes) {
  constexpr double kMegabyte = 1024.0 * 1024.0;
  char text[32];
  std::snprintf(text, sizeof text, ", %.1f MB", static_cast<double>(bytes) / kMegabyte);
  return text;
}

}  // namespace

std::unique_ptr<ProgressLine> ProgressLine::onStandardError() {
  if (!isatty(STDERR_FILENO) || isDumb()) return nullptr;
  Descriptor terminal(open("/dev/tty", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!terminal.valid() || tcgetpgrp(STDERR_FILENO) < 0) return nullptr;
  std::unique_ptr<ProgressLine> line(new ProgressLine(std::move(terminal)));
  line->nextDrawing_ = std::chrono::steady_clock::now() + kPatience;
  try {
    line->thread_ = std::thread([&line = *line] { line.run(); });
  } catch (const std::system_error&) {
    return nullptr;
  }
  leaveNoLineBehind();
  return line;
}

ProgressLine::~ProgressLine() {
  end();
  if (thread_.joinable()) thread_.join();
}

void ProgressLine::show(const char* deed, const std::string& path) {
  const std::lock_guard lock(mutex_);
  deed_ = deed;
  path_ = path;
}

void ProgressLine::advance(std::int64_t bytes, int objects) {
  const std::lock_guard lock(mutex_);
  bytes_ += bytes;
  objects_ += objects;
}

// Whoever writes next begins an empty line.
void ProgressLine::clear() {
  const std::lock_guard lock(mutex_);
  erase();
  nextDrawing_ = std::chrono::steady_clock::now() + kPatience;
}

void ProgressLine::end() {
  const std::lock_guard lock(mutex_);
  erase();
  ended_ = true;
  changed_.notify_all();
}

// In between deeds are only noted, so that thousands of small files cost nothing.
void ProgressLine::run() {
  std::unique_lock lock(mutex_);
  while (!ended_) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextDrawing_) {
      changed_.wait_until(lock, nextDrawing_);
      continue;
    }
    draw();
    nextDrawing_ = now + kBetweenDrawings;
  }
}

std::string ProgressLine::text() const {
  std::string text = deed_;
  text.append(" ").append(paths::lastComponent(path_));
  if (objects_ > 0) text.append(" - ").append(std::to_string(objects_)).append(" done");
  if (objects_ > 0 && bytes_ > 0) text += sizeText(bytes_);
  return text;
}

// A program in the background would be stopped for writing.
bool ProgressLine::isInForeground() const {
  return tcgetpgrp(terminal_.get()) == getpgrp();
}

// The last column stays free: there some terminals begin a new line.
void ProgressLine::draw() {
  if (!*deed_ || !isInForeground()) return;
  const std::string line = fitting(text(), widthOf(terminal_.get()) - 1);
  if (line == drawn_) return;
  drawnOn = terminal_.get();
  write(std::string(kErase).append(line));
  drawn_ = line;
}

// In the background the line has to stay.
void ProgressLine::erase() {
  if (drawn_.empty()) return;
  drawn_.clear();
  if (isInForeground()) write(kErase);
  drawnOn = -1;
}

// A terminal that takes nothing now loses it.
void ProgressLine::write(std::string_view text) const {
  (void)!::write(terminal_.get(), text.data(), text.size());
}

BeforeOutput::BeforeOutput(std::ostream& stream, std::function<void()> action)
    : stream_(stream), action_(std::move(action)), tied_(this), previous_(stream.tie(&tied_)) {}

BeforeOutput::~BeforeOutput() {
  stream_.tie(previous_);
}

// A stream flushes the one that it is tied to before it writes.
int BeforeOutput::sync() {
  action_();
  return 0;
}

}  // namespace vantory
