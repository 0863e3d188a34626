// Reads, changes and writes the file under a lock.
#include "services/settings/SettingsFile.h"

#include <chrono>
#include <utility>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "base/Text.h"
#include "base/Timestamp.h"
#include "platform/Clock.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

FileSystem& files() {
  return Runtime::current().platform().files;
}

bool isSameFile(const FileInfo& left, const FileInfo& right) {
  return left.identity == right.identity && left.size == right.size && left.modified == right.modified;
}

// Settings are read before the log is started.
template <class... Arguments>
void report(std::string_view format, const Arguments&... arguments) {
  QWLog::holdUntilNewLog(formatted(format, arguments...));
}

// A folder hold keeps other processes out; this keeps out the threads of this one.
std::mutex& changing() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

SettingsFile::SettingsFile(std::string path) : path_(std::move(path)) {}

// What the file holds now; what is wrong with it becomes the content's state.
SettingsFile::Content SettingsFile::load() const {
  Content content;
  // The look comes before the reading: a change between them is noticed at the next look.
  if (const auto info = files().info(path_, Links::Follow)) content.info = *info;
  const auto bytes = files().read(path_);
  if (!bytes) {
    content.state = meansMissing(bytes.error()) ? State::Missing : State::Unreadable;
    content.reason = bytes.error().text;
    return content;
  }
  const auto value = parsePropertyList(*bytes);
  const auto* values = value ? value->asDictionary() : nullptr;
  content.state = values ? State::Sound : State::Damaged;
  if (values) content.values = *values;
  return content;
}

// The content that was read last, as long as the file looks the same.
std::shared_ptr<const SettingsFile::Content> SettingsFile::current() const {
  const std::lock_guard lock(mutex_);
  const auto info = files().info(path_, Links::Follow);
  // A file that could not be read is tried again each time.
  const bool isKnown =
      cached_ && cached_->state != State::Unreadable &&
      (info ? cached_->info && isSameFile(*info, *cached_->info) : !cached_->info && meansMissing(info.error()));
  if (!isKnown) {
    cached_ = std::make_shared<const Content>(load());
    tell(*cached_);
  }
  return cached_;
}

// Once for each change of the state.
void SettingsFile::tell(const Content& content) const {
  if (!isNews(content.state)) return;
  // A task that goes on without the settings may work in another library: its caller must know.
  const auto tellBoth = [](const std::string& message) {
    report("%@", message);
    Runtime::current().platform().systemLog.write(printable(message));
  };
  if (content.state == State::Damaged) tellBoth(formatted("The settings in %@ are damaged and are not used.", path_));
  if (content.state == State::Unreadable) tellBoth(formatted("Unable to read the settings: %@", content.reason));
}

// Several parts of the program read the same file.
bool SettingsFile::isNews(State state) const {
  Told& told = Runtime::current().shared<Told>();
  const std::lock_guard lock(told.mutex);
  return std::exchange(told.states[path_], state) != state;
}

bool SettingsFile::isUsable() const {
  const State state = current()->state;
  return state == State::Sound || state == State::Missing;
}

PropertyListDictionary SettingsFile::read() const {
  return current()->values;
}

std::optional<PropertyList> SettingsFile::find(const std::string& key) const {
  const auto content = current();
  const PropertyList* value = content->values.find(key);
  if (!value) return std::nullopt;
  return *value;
}

Status SettingsFile::change(const std::function<void(PropertyListDictionary&)>& change, Durability durability) {
  const std::lock_guard lock(changing());
  Status replaced = replace(change, durability);
  if (!replaced) report("Unable to save the settings: %@", replaced.error().text);
  forget();
  return replaced;
}

// Two changes in a moment may leave a file that looks like the one before them.
void SettingsFile::forget() const {
  const std::lock_guard lock(mutex_);
  cached_ = nullptr;
}

// One that cannot be read is left alone: all that it holds would be lost.
Status SettingsFile::replace(const std::function<void(PropertyListDictionary&)>& change, Durability durability) {
  const std::string folder = paths::parent(path_);
  if (Status made = files().makeFolder(folder); !made) return made;
  const auto hold = files().holdFolder(folder, std::chrono::seconds(2));
  if (!hold) return hold.error();

  Content content = load();
  if (content.state == State::Unreadable) return Error{std::errc::io_error, content.reason};
  if (content.state == State::Damaged)
    if (Status aside = setAside(); !aside) return aside;
  change(content.values);
  const std::string bytes = writeXmlPropertyList(content.values);
  return files().write(path_, bytes, {.durable = durability == Durability::Lasting});
}

// Keeps a damaged file under a name with the time in it.
Status SettingsFile::setAside() const {
  const Timestamp now = Runtime::current().platform().clock.now();
  const std::string place = QWFileManager::uniqueFilename(path_ + ".damaged-" + localTimeText(now, "%Y%m%d%H%M%S"));
  if (Status moved = files().move(path_, place).status(); !moved) return moved;
  report("The settings in %@ were damaged and now lie at %@.", path_, place);
  return {};
}

}  // namespace vantory
