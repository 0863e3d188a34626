// Asks the service manager for the session's variables.
#include "programs/vantory-desktop/SessionEnvironment.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/session/DesktopSession.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

namespace {

constexpr std::chrono::seconds kPatience{1};

// Programs are looked for where the session does, not where whoever started this process would.
constexpr std::string_view kReplaced = "PATH";

void adopt(const std::string& assignment) {
  const std::size_t end = assignment.find('=');
  if (end == std::string::npos || end == 0) return;
  const std::string name = assignment.substr(0, end);
  setenv(name.c_str(), assignment.c_str() + end + 1, name == kReplaced ? 1 : 0);
}

}  // namespace

bool hasBus() {
  static const bool found = hasSessionBus();
  return found;
}

// Only a bus that hangs is an error: without one, applications start by their commands.
Status checkBus() {
  if (!hasBus()) return {};
  const Result<GDBusConnection*> bus = sessionBus();
  if (!bus && bus.error().code == std::errc::timed_out) return bus.error();
  return {};
}

// Tried once: without an answer the variables stay as they are.
void adoptSessionEnvironment() {
  static bool adopted = false;
  if (std::exchange(adopted, true) || !hasBus()) return;
  BusCall question{.service = "org.freedesktop.systemd1",
                   .path = "/org/freedesktop/systemd1",
                   .interface = "org.freedesktop.DBus.Properties",
                   .member = "Get",
                   .arguments = owned(g_variant_new("(ss)", "org.freedesktop.systemd1.Manager", "Environment")),
                   .reply = "(v)",
                   .startService = false};
  const Result<VariantPointer> reply = callBus(question, Deadline(kPatience));
  if (!reply) return;
  GVariant* value = nullptr;
  g_variant_get(reply->get(), "(v)", &value);
  const VariantPointer list(value);
  if (!g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY)) return;
  GVariantIter iterator;
  const char* assignment = nullptr;
  g_variant_iter_init(&iterator, value);
  while (g_variant_iter_next(&iterator, "&s", &assignment)) adopt(assignment);
}

}  // namespace vantory::desktop
