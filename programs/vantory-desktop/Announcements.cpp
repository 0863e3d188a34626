// Names that are called out to all programs of the session, as signals.
//
//   object     /com/quarrywell/Announcements
//   interface  com.quarrywell.Announcements
//   signal     the name, without arguments

#include <string>

#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

namespace {

// Arguments: the name. No values.
Result<Message> announce(const Message& request) {
  const std::string& name = request[0];
  if (!g_dbus_is_member_name(name.c_str())) return errorWithText(std::errc::invalid_argument, name, "no signal");
  const Result<GDBusConnection*> bus = sessionBus();
  if (!bus) return bus.error();
  GError* error = nullptr;
  g_dbus_connection_emit_signal(*bus, nullptr, "/com/quarrywell/Announcements", "com.quarrywell.Announcements",
                                name.c_str(), nullptr, &error);
  if (!error) return Message{};
  const ErrorPointer owner(error);
  return errorWithText(std::errc::io_error, name, error->message);
}

}  // namespace

Verbs announcementVerbs() {
  return {{"announce", 1, announce}};
}

}  // namespace vantory::desktop
