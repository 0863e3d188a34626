// Starts applications by the bus or by their commands, with their files.
#include "programs/vantory-desktop/Launch.h"

#include <unistd.h>

#include <chrono>
#include <csignal>

#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/ApplicationBus.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionEnvironment.h"

namespace vantory::desktop {

namespace {

constexpr std::chrono::seconds kPatience{1};

using ListPointer = std::unique_ptr<GList, Releaser<g_list_free>>;

// The file's name without its ending.
std::string identifierOf(GDesktopAppInfo* application) {
  const char* name = g_app_info_get_id(G_APP_INFO(application));
  std::string identifier = name ? name : "";
  constexpr std::string_view kSuffix = ".desktop";
  if (identifier.ends_with(kSuffix)) identifier.resize(identifier.size() - kSuffix.size());
  return identifier;
}

// As the service manager wants text in the names of units.
std::string unitText(const std::string& text) {
  std::string result;
  for (const char c : text) {
    char escaped[8];
    g_snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
    const bool isPlain = g_ascii_isalnum(c) || c == '_' || (c == '.' && !result.empty());
    result += isPlain ? std::string(1, c) : escaped;
  }
  return result;
}

// A unit that is not to be had is done without.
void giveUnit(GDesktopAppInfo* application, GPid process) {
  if (!hasBus()) return;
  const std::string name =
      "app-vantory-" + unitText(identifierOf(application)) + "-" + std::to_string(process) + ".scope";
  const guint32 number = static_cast<guint32>(process);
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
  g_variant_builder_add(&properties, "(sv)", "PIDs",
                        g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, &number, 1, sizeof number));
  g_variant_builder_add(&properties, "(sv)", "CollectMode", g_variant_new_string("inactive-or-failed"));
  const BusCall call{.service = "org.freedesktop.systemd1",
                     .path = "/org/freedesktop/systemd1",
                     .interface = "org.freedesktop.systemd1.Manager",
                     .member = "StartTransientUnit",
                     .arguments = owned(g_variant_new("(ssa(sv)@a(sa(sv)))", name.c_str(), "fail", &properties,
                                                      g_variant_new_array(G_VARIANT_TYPE("(sa(sv))"), nullptr, 0))),
                     .startService = false};
  (void)callBus(call, Deadline(kPatience));
}

// In the child.
void separate(void*) {
  setsid();
  std::signal(SIGPIPE, SIG_DFL);
}

void started(GDesktopAppInfo* application, GPid process, void*) {
  giveUnit(application, process);
}

// In the user's home, and not in the folder where Vantory was started.
Status spawn(GDesktopAppInfo* application, const std::vector<std::string>& addresses) {
  if (chdir(g_get_home_dir()) != 0) return systemError(g_get_home_dir());
  ListPointer list;
  for (auto address = addresses.rbegin(); address != addresses.rend(); ++address)
    list.reset(g_list_prepend(list.release(), const_cast<char*>(address->c_str())));
  const ObjectPointer<GAppLaunchContext> context(g_app_launch_context_new());
  GError* error = nullptr;
  if (g_desktop_app_info_launch_uris_as_manager(application, list.get(), context.get(), G_SPAWN_SEARCH_PATH, separate,
                                                nullptr, started, nullptr, &error))
    return {};
  const ErrorPointer owner(error);
  return errorWithText(std::errc::io_error, identifierOf(application), error->message);
}

// As its entry declares, and only under a name that the bus would take.
bool isOnBus(GDesktopAppInfo* application) {
  return hasBus() && isBusName(identifierOf(application)) &&
         g_desktop_app_info_get_boolean(application, "DBusActivatable");
}

Result<ApplicationPointer> applicationFor(const std::string& identifier) {
  const Result<DesktopEntry> entry = DesktopEntry::find(identifier, Case::Any);
  if (!entry) return entry.error();
  return entry->application();
}

Result<Message> nothingOr(const Status& status) {
  if (!status) return status.error();
  return Message{};
}

// Arguments: identifier. No values.
Result<Message> launchOne(const Message& arguments) {
  const Result<ApplicationPointer> application = applicationFor(arguments[0]);
  if (!application) return application.error();
  return nothingOr(launch(application->get(), {}));
}

// Arguments: identifier, path of a file. No values.
Result<Message> openFile(const Message& arguments) {
  const Result<ApplicationPointer> application = applicationFor(arguments[0]);
  if (!application) return application.error();
  const Result<std::string> address = addressOf(arguments[1]);
  if (!address) return address.error();
  return nothingOr(launch(application->get(), {*address}));
}

// Arguments: identifier. No values. Only an application on the bus can be asked to come to the front.
Result<Message> bringToFront(const Message& arguments) {
  const Result<DesktopEntry> entry = DesktopEntry::find(arguments[0], Case::Any);
  const std::string identifier = entry ? entry->identifier() : arguments[0];
  if (busOwner(identifier) == 0)
    return errorWithText(std::errc::not_supported, identifier, "It cannot be brought to the front from here.");
  return nothingOr(activate(identifier, false));
}

// Arguments: identifier. Values: the path of its desktop entry, when that can be used.
Result<Message> findApplication(const Message& arguments) {
  const Result<DesktopEntry> entry = DesktopEntry::find(arguments[0], Case::Any);
  if (!entry) return entry.error();
  if (const Result<ApplicationPointer> application = entry->application(); !application) return application.error();
  return Message{entry->path()};
}

}  // namespace

Status launch(GDesktopAppInfo* application, const std::vector<std::string>& addresses) {
  if (Status usable = checkBus(); !usable) return usable;
  if (!isOnBus(application)) return spawn(application, addresses);
  const std::string identifier = identifierOf(application);
  return addresses.empty() ? activate(identifier, true) : openOnBus(identifier, addresses);
}

Result<std::string> addressOf(const std::string& path) {
  GError* error = nullptr;
  const TextPointer address(g_filename_to_uri(path.c_str(), nullptr, &error));
  if (address) return std::string(address.get());
  const ErrorPointer owner(error);
  return errorWithText(std::errc::invalid_argument, path, error->message);
}

Verbs launchVerbs() {
  return {{"launch", 1, launchOne},
          {"open-with", 2, openFile},
          {"activate", 1, bringToFront},
          {"find-application", 1, findApplication}};
}

}  // namespace vantory::desktop
