// Turns arguments and addresses into paths.
#include "tasks/ui/DocumentPaths.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "backups/BackupLibrary.h"
#include "backups/BackupNaming.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/ProjectKinds.h"

namespace vantory {

namespace {

// None where a percent sign is not followed by two digits, or by those of NUL.
std::optional<std::string> percentDecoded(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes.push_back(text[i]);
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned char byte = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (failure != std::errc() || digits.size() != 2 || end != digits.data() + 2 || byte == 0) return std::nullopt;
    bytes.push_back(static_cast<char>(byte));
    i += 2;
  }
  return bytes;
}

// The path that a "file:" address of this machine names; none for all other texts.
std::optional<std::string> pathOfAddress(std::string_view text) {
  constexpr std::string_view kScheme = "file:";
  if (lowerCased(text.substr(0, kScheme.size())) != kScheme) return std::nullopt;
  text.remove_prefix(kScheme.size());
  for (const std::string_view host : {"//localhost/", "///"})
    if (text.starts_with(host)) return percentDecoded(text.substr(host.size() - 1));
  if (!text.starts_with('/') || text.starts_with("//")) return std::nullopt;
  return percentDecoded(text);
}

}  // namespace

bool isKnownDocument(const std::string& path) {
  return isBackupName(path) || !applicationsOfProject(path, BackupLibrary::current().appArray()).empty();
}

std::vector<std::string> documentPaths(const std::vector<std::string>& arguments, const std::string& workingDirectory) {
  std::vector<std::string> found;
  bool optionsEnded = false;
  for (const std::string& argument : arguments) {
    const bool isOption = !optionsEnded && argument.starts_with('-');
    optionsEnded = optionsEnded || argument == "--";
    if (argument.empty() || isOption) continue;
    found.push_back(paths::absolute(pathOfAddress(argument).value_or(argument), workingDirectory));
  }
  return found;
}

}  // namespace vantory
