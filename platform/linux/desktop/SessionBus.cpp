#include "platform/linux/desktop/SessionBus.h"

#include <algorithm>
#include <cerrno>

#include "platform/linux/Errors.h"

namespace vantory::desktop {

namespace {

int numberOf(const GError& error) {
  if (error.domain == G_IO_ERROR) return error.code == G_IO_ERROR_TIMED_OUT ? ETIMEDOUT : EIO;
  if (error.domain != G_DBUS_ERROR) return EIO;
  switch (error.code) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
      return ENXIO;
    case G_DBUS_ERROR_UNKNOWN_METHOD:
    case G_DBUS_ERROR_UNKNOWN_INTERFACE:
    case G_DBUS_ERROR_UNKNOWN_OBJECT:
      return ENOSYS;
    case G_DBUS_ERROR_TIMEOUT:
    case G_DBUS_ERROR_TIMED_OUT:
      return ETIMEDOUT;
    case G_DBUS_ERROR_ACCESS_DENIED:
      return EACCES;
    default:
      return EIO;
  }
}

Error errorFrom(const std::string& about, GError* error) {
  const ErrorPointer owner(error);
  g_dbus_error_strip_remote_error(error);
  return errorWithText(static_cast<std::errc>(numberOf(*error)), about, error->message);
}

}  // namespace

int Deadline::remaining() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 1));
}

Result<GDBusConnection*> sessionBus() {
  static GDBusConnection* connection = nullptr;
  if (connection) return connection;
  GError* error = nullptr;
  connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  if (connection) return connection;
  const ErrorPointer owner(error);
  return errorWithText(std::errc::no_such_device_or_address, "the session bus", error->message);
}

Result<VariantPointer> callBus(const BusCall& call, const Deadline& deadline) {
  const Result<GDBusConnection*> bus = sessionBus();
  if (!bus) return bus.error();
  GError* error = nullptr;
  VariantPointer reply(g_dbus_connection_call_sync(
      *bus, call.service.c_str(), call.path.c_str(), call.interface.c_str(), call.member.c_str(), call.arguments.get(),
      call.reply ? G_VARIANT_TYPE(call.reply) : nullptr,
      call.startService ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START, deadline.remaining(), nullptr,
      &error));
  if (!reply) return errorFrom(call.service, error);
  return reply;
}

TextPointer busText(const std::string& text) {
  return TextPointer(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

}  // namespace vantory::desktop
