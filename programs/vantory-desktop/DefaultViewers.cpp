// Which application opens files of a type, by the user's list of default applications.
#include <gio/gdesktopappinfo.h>

#include <cerrno>
#include <memory>
#include <string>

#include "platform/posix/files/Errors.h"
#include "platform/posix/files/SmallFiles.h"
#include "programs/vantory-desktop/DesktopEntry.h"
#include "programs/vantory-desktop/FileTypes.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionEnvironment.h"
#include "programs/vantory-desktop/WholeFile.h"

namespace vantory::desktop {

namespace {

constexpr const char* kDefaults = "Default Applications";
constexpr const char* kSuffix = ".desktop";
constexpr std::size_t kLargestList = 1024 * 1024;
constexpr int kPrivateFile = 0600;

// Arguments: an extension. Values: its type.
Result<Message> findType(const Message& arguments) {
  const Result<std::string> type = typeOfExtension(arguments[0]);
  if (!type) return type.error();
  return Message{*type};
}

// With everything that stands there, comments included; empty where there is no list yet.
Result<KeyFilePointer> readList(const std::string& path) {
  KeyFilePointer list(g_key_file_new());
  const Result<std::string> text = readSmallFile(path, kLargestList);
  if (!text && text.error().code == std::errc::no_such_file_or_directory) return list;
  if (!text) return text.error();
  constexpr auto kFlags = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  GError* error = nullptr;
  if (text->empty() || g_key_file_load_from_data(list.get(), text->data(), text->size(), kFlags, &error)) return list;
  const ErrorPointer owner(error);
  return errorWithText(std::errc::bad_message, path, error->message);
}

std::string userList() {
  return std::string(g_get_user_config_dir()) + "/mimeapps.list";
}

// Whether the user chose applications of which none is installed; GIO passes over them as if nothing were chosen.
bool isChoiceMissing(const std::string& type) {
  const Result<KeyFilePointer> list = readList(userList());
  if (!list) return false;
  gsize count = 0;
  char** const entries = g_key_file_get_string_list(list->get(), kDefaults, type.c_str(), &count, nullptr);
  const std::unique_ptr<char*, decltype(&g_strfreev)> owner(entries, g_strfreev);
  for (gsize i = 0; i < count; ++i)
    if (const ObjectPointer<GDesktopAppInfo> entry(g_desktop_app_info_new(entries[i])); entry) return false;
  return count > 0;
}

// By hand, because GIO drops the comments of the list, replaces a link by a file, and begins anew where it cannot read.
Status recordDefault(const std::string& type, const std::string& entry) {
  const std::string path = userList();
  g_mkdir_with_parents(g_get_user_config_dir(), 0700);
  const Result<KeyFilePointer> list = readList(path);
  if (!list) return list.error();
  g_key_file_set_string(list->get(), kDefaults, type.c_str(), entry.c_str());
  gsize size = 0;
  const TextPointer text(g_key_file_to_data(list->get(), &size, nullptr));
  return writeWhole(path, {text.get(), size}, kPrivateFile);
}

// Arguments: a type, an identifier in any case. No values. An application that is not installed is recorded too, and
// will be the default once it is.
Result<Message> setDefaultViewer(const Message& arguments) {
  const Result<DesktopEntry> entry = DesktopEntry::find(arguments[1], Case::Any);
  if (!entry && entry.error().code == std::errc::invalid_argument) return entry.error();
  const std::string identifier = entry ? entry->identifier() : arguments[1];
  if (const Status recorded = recordDefault(arguments[0], identifier + kSuffix); !recorded) return recorded.error();
  if (const Status declared = declareType(arguments[0]); !declared) return declared.error();
  return Message{};
}

// Arguments: a type. Values: the identifier of the application that opens it; none when none does or the user's choice
// is not installed.
Result<Message> defaultViewer(const Message& arguments) {
  adoptSessionEnvironment();
  if (isChoiceMissing(arguments[0])) return Message{};
  const ObjectPointer<GAppInfo> application(g_app_info_get_default_for_type(arguments[0].c_str(), FALSE));
  const char* name = application ? g_app_info_get_id(application.get()) : nullptr;
  if (!name) return Message{};
  std::string identifier = name;
  if (identifier.ends_with(kSuffix)) identifier.resize(identifier.size() - std::string_view(kSuffix).size());
  return Message{identifier};
}

}  // namespace

Verbs defaultViewerVerbs() {
  return {
      {"find-type", 1, findType}, {"set-default-viewer", 2, setDefaultViewer}, {"default-viewer", 1, defaultViewer}};
}

}  // namespace vantory::desktop
