// Connects to the bus and calls with a limit of time.
#include "programs/vantory-desktop/SessionBus.h"

#include <algorithm>
#include <cerrno>
#include <future>
#include <map>
#include <thread>
#include <utility>

#include "platform/posix/files/Errors.h"

namespace vantory::desktop {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kConnectPatience{1};
// How long a service that did not answer is left alone.
constexpr std::chrono::seconds kSilence{30};

// The errors that callers tell apart; all others are one.
int numberOf(const GError& error) {
  if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) return ETIMEDOUT;
  if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CLOSED)) return ENXIO;
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
    case G_DBUS_ERROR_NO_REPLY:
      return ECONNRESET;
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

Result<GDBusConnection*> connect() {
  GError* error = nullptr;
  if (GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error)) return connection;
  const ErrorPointer owner(error);
  return errorWithText(std::errc::no_such_device_or_address, "the session bus", error->message);
}

// On a thread of its own, because GIO waits without end for a bus that hangs.
std::future<Result<GDBusConnection*>> beginToConnect() {
  std::promise<Result<GDBusConnection*>> promise;
  auto outcome = promise.get_future();
  std::thread([promise = std::move(promise)]() mutable { promise.set_value(connect()); }).detach();
  return outcome;
}

// Until when the services that did not answer are left alone.
std::map<std::string, steady_clock::time_point>& silences() {
  static std::map<std::string, steady_clock::time_point> moments;
  return moments;
}

bool isSilent(const std::string& service) {
  const auto known = silences().find(service);
  return known != silences().end() && steady_clock::now() < known->second;
}

}  // namespace

// At least one millisecond, because GIO takes a negative limit for one of its own.
int Deadline::remaining() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 1));
}

// The first call waits for the connection; later ones only look whether it stands by now.
Result<GDBusConnection*> sessionBus() {
  static GDBusConnection* connection = nullptr;
  static std::future<Result<GDBusConnection*>> attempt;
  if (connection) return connection;
  std::chrono::seconds patience{0};
  if (!attempt.valid()) {
    attempt = beginToConnect();
    patience = kConnectPatience;
  }
  if (attempt.wait_for(patience) != std::future_status::ready)
    return errorWithText(std::errc::timed_out, "the session bus", "It does not answer.");
  Result<GDBusConnection*> outcome = attempt.get();
  if (outcome) connection = *outcome;
  return outcome;
}

Result<VariantPointer> callBus(const BusCall& call, const Deadline& deadline) {
  if (!call.insist && isSilent(call.service)) return systemError(call.service, ETIMEDOUT);
  const Result<GDBusConnection*> bus = sessionBus();
  if (!bus) return bus.error();
  GError* error = nullptr;
  VariantPointer reply(g_dbus_connection_call_sync(
      *bus, call.service.c_str(), call.path.c_str(), call.interface.c_str(), call.member.c_str(), call.arguments.get(),
      call.reply ? G_VARIANT_TYPE(call.reply) : nullptr,
      call.startService ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START, deadline.remaining(), nullptr,
      &error));
  if (reply) return reply;
  Error failure = errorFrom(call.service, error);
  if (failure.code == std::errc::timed_out) silences()[call.service] = steady_clock::now() + kSilence;
  return failure;
}

TextPointer busText(const std::string& text) {
  return TextPointer(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

}  // namespace vantory::desktop
