#include "platform/linux/ProgressLine.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kBetweenDrawings = 100ms;

std::size_t terminalWidth() {
  constexpr std::size_t kUsualWidth = 80;
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

// The superuser's process takes nothing from its environment.
bool isDumb() {
  const char* terminal = getuid() == 0 ? nullptr : std::getenv("TERM");
  return terminal && std::string_view(terminal) == "dumb";
}

// A program in the background would be stopped, and one whose terminal takes nothing would wait.
bool mayWrite() {
  pollfd terminal{STDERR_FILENO, POLLOUT, 0};
  return tcgetpgrp(STDERR_FILENO) == getpgrp() && poll(&terminal, 1, 0) == 1 && terminal.revents == POLLOUT;
}

void writeToTerminal(const std::string& text) {
  (void)!::write(STDERR_FILENO, text.data(), text.size());
}

bool continues(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The text in exactly that many columns: cut, or with blanks behind it. Characters of three bytes and more may be two
// columns wide.
std::string filling(std::string_view text, std::size_t width) {
  std::size_t columns = 0;
  std::size_t length = 0;
  while (length < text.size()) {
    std::size_t end = length + 1;
    while (end < text.size() && continues(text[end])) ++end;
    const std::size_t wide = end - length > 2 ? 2 : 1;
    if (columns + wide > width) break;
    columns += wide;
    length = end;
  }
  return std::string(text.substr(0, length)).append(width - columns, ' ');
}

std::string lastComponent(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') + 1);
  for (char& byte : name)
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f) byte = '?';
  return name;
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
  std::unique_ptr<ProgressLine> line(new ProgressLine);
  line->nextDrawing_ = std::chrono::steady_clock::now() + kPatience;
  try {
    line->thread_ = std::thread([&line = *line] { line.run(); });
  } catch (const std::system_error&) {
    return nullptr;
  }
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
  text.append(" ").append(lastComponent(path_));
  if (objects_ > 0) text.append(" - ").append(std::to_string(objects_)).append(" done");
  if (objects_ > 0 && bytes_ > 0) text += sizeText(bytes_);
  return text;
}

// The last column stays free: there some terminals begin a new line.
void ProgressLine::draw() {
  if (!*deed_ || !mayWrite()) return;
  const std::string line = filling(text(), terminalWidth() - 1);
  if (line == drawn_) return;
  writeToTerminal('\r' + line);
  drawn_ = line;
}

void ProgressLine::erase() {
  if (drawn_.empty()) return;
  drawn_.clear();
  std::string blank(terminalWidth() + 1, ' ');
  blank.front() = blank.back() = '\r';
  if (mayWrite()) writeToTerminal(blank);
}

BeforeOutput::BeforeOutput(std::ostream& stream, std::function<void()> action)
    : stream_(stream), action_(std::move(action)), tied_(this), previous_(stream.tie(&tied_)) {}

BeforeOutput::~BeforeOutput() {
  stream_.tie(previous_);
}

int BeforeOutput::sync() {
  action_();
  return 0;
}

}  // namespace vantory
