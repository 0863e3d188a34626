// Compares files by their bytes, then property lists by keys and short texts by lines.
#include "backups/comparison/FileContent.h"

#include <string_view>

#include "base/Format.h"
#include "base/PropertyListBytes.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

constexpr std::size_t kLongestText = 256 * 1024;  // bytes
constexpr std::size_t kMostLines = 200;           // that differ

void unreadable(FileComparison& file, const Error& error) {
  file.difference = Difference::Unreadable;
  file.remark = error.text;
}

bool isDictionary(const std::optional<PropertyList>& value) {
  return value && value->asDictionary();
}

// False where they are no property lists. Where only one is, the other is most likely cut off.
bool compareKeys(FileComparison& file, std::string_view before, std::string_view after) {
  const auto old = parsePropertyList(before);
  const auto young = parsePropertyList(after);
  if (isDictionary(young) && !old)
    file.remark =
        formatted("The %@ file is no readable property list.", file.before == file.path ? "present" : "earlier");
  if (isDictionary(old) && !young) file.remark = "The copy is no readable property list.";
  if (!old || !young) return false;
  file.keys = changesBetween(*old, *young);
  if (file.keys.empty()) file.remark = "All values are the same, in another order or form.";
  return true;
}

bool isShortText(std::string_view bytes) {
  return bytes.size() <= kLongestText && bytes.find('\0') == std::string_view::npos && isUtf8(bytes);
}

}  // namespace

// What is too large to be read as a whole is neither a property list nor a short text.
void compareContent(FileComparison& file, bool haveSameSize) {
  const FileSystem& files = Runtime::current().platform().files;
  if (haveSameSize) {
    const auto same = files.haveSameContent(file.before, file.after);
    if (!same) return unreadable(file, same.error());
    file.difference = *same ? Difference::Same : Difference::Different;
    if (*same) return;
  }
  file.difference = Difference::Different;
  const auto before = files.read(file.before);
  const auto after = files.read(file.after);
  for (const auto* bytes : {&before, &after}) {
    if (*bytes) continue;
    if (bytes->error().code != std::errc::file_too_large) return unreadable(file, bytes->error());
    file.remark = formatted("It is too large for its keys or lines to be compared: the limit is %@.",
                            QWFileManager::formatFileSize(static_cast<double>(kLargestReadBytes)));
    return;
  }
  if (compareKeys(file, *before, *after) || !isShortText(*before) || !isShortText(*after)) return;
  if (auto lines = lineChanges(*before, *after, kMostLines))
    file.lines = std::move(*lines);
  else
    file.remark = "More lines differ than can be shown.";
}

}  // namespace vantory
