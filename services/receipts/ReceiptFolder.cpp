// Names, lists and prunes receipts.
#include "services/receipts/ReceiptFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "base/Paths.h"
#include "base/UtcText.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/receipts/ReceiptText.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr const char* kFolder = "Quarrywell/Vantory/Receipts";
constexpr const char* kExtension = "plist";

FileSystem& files() {
  return Runtime::current().platform().files;
}

Result<std::vector<std::string>> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  const auto entries = files().list(folder, Detail::Names);
  if (!entries && !meansMissing(entries.error())) return entries.error();
  if (!entries && files().info(folder, Links::DoNotFollow))
    return Error{std::errc::not_a_directory, folder + " is no folder. Move it away, and tasks leave receipts again."};
  if (!entries) return names;
  for (const DirectoryEntry& entry : *entries)
    if (entry.type == FileType::File && paths::extension(entry.name) == kExtension)
      names.push_back(paths::withoutExtension(entry.name));
  std::ranges::sort(names, std::ranges::greater());
  return names;
}

std::string nameFor(Timestamp moment) {
  std::string text = utcText(moment.seconds);
  std::erase_if(text, [](char character) { return character == '-' || character == ':'; });
  std::ranges::replace(text, ' ', '-');
  char thousandths[16];
  std::snprintf(thousandths, sizeof thousandths, "-%03d", moment.nanoseconds / 1'000'000);
  return text + thousandths;
}

// The reverse; none for a name of another form.
std::optional<Timestamp> momentNamed(const std::string& name) {
  if (name.size() != 19) return std::nullopt;
  const auto part = [&](std::size_t at, std::size_t length) { return name.substr(at, length); };
  const auto moment = receipt::momentIn(part(0, 4) + "-" + part(4, 2) + "-" + part(6, 2) + "T" + part(9, 2) + ":" +
                                        part(11, 2) + ":" + part(13, 2) + "." + part(16, 3) + "000000Z");
  return moment && nameFor(*moment) == name ? moment : std::nullopt;
}

}  // namespace

std::optional<std::string> receiptFolder() {
  const auto support = QWLocalPaths::appSupportDirectory(true);
  if (!support) return std::nullopt;
  return paths::join(*support, kFolder);
}

std::string receiptPath(const std::string& folder, const std::string& name) {
  return paths::join(folder, name + "." + kExtension);
}

Result<std::vector<std::string>> receiptNames() {
  const auto folder = receiptFolder();
  if (!folder) return std::vector<std::string>();
  return namesIn(*folder);
}

// What is named otherwise, by whomever, counts for nothing.
std::string newReceiptName(const std::string& folder, Timestamp begun) {
  const std::string name = nameFor(begun);
  const auto names = namesIn(folder);
  if (!names) return name;
  const auto newest = std::ranges::find_if(*names, [](const auto& each) { return momentNamed(each).has_value(); });
  if (newest == names->end() || *newest < name) return name;
  Timestamp next = *momentNamed(*newest);
  next.nanoseconds += 1'000'000;
  if (next.nanoseconds >= 1'000'000'000) next = {next.seconds + 1, next.nanoseconds - 1'000'000'000};
  return nameFor(next);
}

bool isReceiptHeld(const std::string& path) {
  const auto hold = files().holdFolder(path, 0ms);
  return !hold && hold.error().code == std::errc::timed_out;
}

Result<std::unique_ptr<FolderHold>> holdForUndo() {
  const auto folder = receiptFolder();
  if (!folder) return Error{std::errc::no_such_file_or_directory, "There is no home folder."};
  auto hold = files().holdFolder(paths::parent(*folder), 2s);
  if (!hold && hold.error().code == std::errc::timed_out)
    return Error{std::errc::timed_out, "Another task is being taken back right now. Try again when that is through."};
  return hold;
}

void pruneReceipts(const std::string& folder) {
  const auto names = namesIn(folder);
  if (!names) return;
  for (std::size_t i = kMostReceipts - 1; i < names->size(); ++i)
    if (const std::string path = receiptPath(folder, (*names)[i]); !isReceiptHeld(path)) (void)files().remove(path);
}

}  // namespace vantory
