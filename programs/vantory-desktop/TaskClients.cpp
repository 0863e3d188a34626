// Companion tools that want to hear of the tasks they started.
//
//   bus name   com.quarrywell.SERVICE
//   object     /com/quarrywell/SERVICE
//   interface  com.quarrywell.QWGearwrightErrorCallbackProtocol
//   members    postErrorStringuserInfo(s text, a{sv} with "appName"), postErrorString(s text),
//              postErrorforApp(s error, s name), postError(s error),
//              postFinishedTask(), incrementRemoteProgress(), postDisconnect()
//
// A tool answers UnknownMethod for what it does not have. No reply has values.

#include <algorithm>
#include <chrono>
#include <string>

#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

namespace {

constexpr const char* kInterface = "com.quarrywell.QWGearwrightErrorCallbackProtocol";
constexpr const char* kWithUserInfo = "postErrorString:userInfo:";
constexpr std::chrono::seconds kPatience{2};

std::string memberName(std::string message) {
  std::erase(message, ':');
  return message;
}

GVariant* userInfo(const std::string& applicationName) {
  GVariantBuilder entries;
  g_variant_builder_init(&entries, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&entries, "{sv}", "appName", g_variant_new_string(busText(applicationName).get()));
  return g_variant_builder_end(&entries);
}

// The arguments of the message, from the third text of the request on.
VariantPointer argumentsOf(const Message& request) {
  GVariantBuilder tuple;
  g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
  for (std::size_t i = 2; i < request.size(); ++i) {
    const bool second = i == 3;
    if (second && request[1] == kWithUserInfo)
      g_variant_builder_add_value(&tuple, userInfo(request[i]));
    else
      g_variant_builder_add(&tuple, "s", busText(request[i]).get());
  }
  return owned(g_variant_builder_end(&tuple));
}

// Arguments: service, message, and the message's own. No values.
Result<Message> tellClient(const Message& request) {
  const std::string& service = request[0];
  const std::string member = memberName(request[1]);
  if (!g_dbus_is_member_name(member.c_str()) || !g_dbus_is_interface_name(("com.quarrywell." + service).c_str()))
    return errorWithText(std::errc::invalid_argument, service, "no message");
  const Result<VariantPointer> reply = callBus({.service = "com.quarrywell." + service,
                                                .path = "/com/quarrywell/" + service,
                                                .interface = kInterface,
                                                .member = member,
                                                .arguments = argumentsOf(request),
                                                .startService = false},
                                               Deadline(kPatience));
  if (!reply) return reply.error();
  return Message{};
}

}  // namespace

Verbs taskClientVerbs() {
  return {{"tell-client", 2, tellClient}};
}

}  // namespace vantory::desktop
