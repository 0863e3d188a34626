// Files in the hands of the user's other programs: shown, opened, mailed.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ChildProgram.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "programs/vantory-desktop/Launch.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionBus.h"
#include "programs/vantory-desktop/SessionEnvironment.h"

namespace vantory::desktop {

namespace {

constexpr std::chrono::seconds kRevealPatience{10};
constexpr std::chrono::seconds kMailPatience{10};
// The program hands on what it cannot open: to itself, that would go on forever.
constexpr const char* kOwnEntry = "com.quarrywell.Vantory.desktop";
constexpr const char* kMailTool = "xdg-email";

using Application = ObjectPointer<GAppInfo>;

Error noApplication(const std::string& address, const char* reason) {
  return errorWithText(std::errc::no_such_file_or_directory, address, reason);
}

// What is no file goes by its scheme as it is written: a virtual file system may have another idea of it.
Result<Application> usualApplication(const std::string& address) {
  const TextPointer scheme(g_uri_parse_scheme(address.c_str()));
  if (scheme && !g_str_equal(scheme.get(), "file")) {
    Application application(g_app_info_get_default_for_uri_scheme(scheme.get()));
    if (!application) return noApplication(address, "No application is installed for such addresses.");
    return application;
  }
  const ObjectPointer<GFile> file(g_file_new_for_uri(address.c_str()));
  GError* error = nullptr;
  Application application(g_file_query_default_handler(file.get(), nullptr, &error));
  const ErrorPointer owner(error);
  if (!application) return noApplication(address, error->message);
  return application;
}

// With the application that is usual for what the address, a URI, names.
Status openUsually(const std::string& address) {
  if (Status usable = checkBus(); !usable) return usable;
  adoptSessionEnvironment();
  const Result<Application> application = usualApplication(address);
  if (!application) return application.error();
  if (g_str_equal(g_app_info_get_id(application->get()), kOwnEntry))
    return noApplication(address, "Vantory itself is to open it.");
  return launch(G_DESKTOP_APP_INFO(application->get()), {address});
}

// Arguments: a path or an address with a scheme. No values.
Result<Message> open(const Message& arguments) {
  const bool isPath = arguments[0].starts_with('/');
  const Result<std::string> address = isPath ? addressOf(arguments[0]) : arguments[0];
  if (!address) return address.error();
  if (const Status opened = openUsually(*address); !opened) return opened.error();
  return Message{};
}

Status showItems(const std::vector<std::string>& addresses) {
  if (!hasBus()) return systemError("the session bus", ENXIO);
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string& address : addresses) g_variant_builder_add(&list, "s", address.c_str());
  const BusCall call{.service = "org.freedesktop.FileManager1",
                     .path = "/org/freedesktop/FileManager1",
                     .interface = "org.freedesktop.FileManager1",
                     .member = "ShowItems",
                     .arguments = owned(g_variant_new("(ass)", &list, ""))};
  const Result<VariantPointer> reply = callBus(call, Deadline(kRevealPatience));
  if (!reply) return reply.error();
  return {};
}

// The folders that hold the files, each once.
std::vector<std::string> foldersOf(const Message& paths) {
  std::vector<std::string> folders;
  for (const std::string& path : paths) {
    std::string folder = std::filesystem::path(path).parent_path();
    if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.push_back(std::move(folder));
  }
  return folders;
}

// Arguments: paths of files. No values. Without a file manager that can select files, their folders are opened.
Result<Message> reveal(const Message& paths) {
  std::vector<std::string> addresses;
  for (const std::string& path : paths) {
    const Result<std::string> address = addressOf(path);
    if (!address) return address.error();
    addresses.push_back(*address);
  }
  if (showItems(addresses)) return Message{};
  // One that cannot be opened does not keep the others from it.
  Result<Message> outcome = Message{};
  for (const std::string& folder : foldersOf(paths)) {
    const Result<std::string> address = addressOf(folder);
    const Status opened = address ? openUsually(*address) : Status(address.error());
    if (!opened && outcome) outcome = opened.error();
  }
  return outcome;
}

// What the tool's exit status says, as its manual has it.
Status mailOutcome(int status) {
  constexpr int kFileMissing = 2;
  constexpr int kProgramMissing = 3;
  if (status == 0) return {};
  if (status == kFileMissing) return systemError(kMailTool, ENOENT);
  return errorWithText(
      std::errc::io_error, kMailTool,
      status == kProgramMissing ? "No mail program is installed." : "The mail program could not be started.");
}

// Arguments: the path of the file to attach to a new message. No values.
Result<Message> mail(const Message& arguments) {
  adoptSessionEnvironment();
  const TextPointer tool(g_find_program_in_path(kMailTool));
  if (!tool)
    return errorWithText(std::errc::no_such_file_or_directory, kMailTool,
                         "This tool, which hands files to the mail program, is not installed.");
  const Result<pid_t> process = startChild(
      {.path = tool.get(), .arguments = {"--utf8", "--attach", arguments[0]}, .environment = ownEnvironment()});
  if (!process) return process.error();
  const std::optional<int> status = waitForChild(*process, kMailPatience);
  // A tool that goes on for longer has become the mail program, or waits for it.
  if (!status)
    g_child_watch_add(
        *process, [](GPid, int, void*) {}, nullptr);
  if (const Status mailed = mailOutcome(status.value_or(0)); !mailed) return mailed.error();
  return Message{};
}

}  // namespace

Verbs documentVerbs() {
  return {{"open", 1, open}, {"reveal", 1, reveal}, {"mail", 1, mail}};
}

}  // namespace vantory::desktop
