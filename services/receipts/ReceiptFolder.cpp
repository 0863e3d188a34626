// Names, lists and prunes receipts.
#include "services/receipts/ReceiptFolder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"

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
  if (!entries) return names;
  for (const DirectoryEntry& entry : *entries)
    if (entry.type == FileType::File && paths::extension(entry.name) == kExtension)
      names.push_back(paths::withoutExtension(entry.name));
  std::ranges::sort(names, std::ranges::greater());
  return names;
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

std::string receiptName(Timestamp begun) {
  using namespace std::chrono;
  const sys_seconds moment{seconds(begun.seconds)};
  const auto day = floor<days>(moment);
  const year_month_day date(day);
  const hh_mm_ss time(moment - day);
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d%02u%02u-%02d%02d%02d-%03d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()), begun.nanoseconds / 1'000'000);
  return text.data();
}

bool isReceiptHeld(const std::string& path) {
  const auto hold = files().holdFolder(path, 0ms);
  return !hold && hold.error().code == std::errc::timed_out;
}

void pruneReceipts(const std::string& folder) {
  const auto names = namesIn(folder);
  if (!names) return;
  for (std::size_t i = kMostReceipts - 1; i < names->size(); ++i)
    if (const std::string path = receiptPath(folder, (*names)[i]); !isReceiptHeld(path)) (void)files().remove(path);
}

}  // namespace vantory
