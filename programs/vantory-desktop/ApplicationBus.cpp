// Quits and activates applications by their bus names.
#include "programs/vantory-desktop/ApplicationBus.h"

#include <algorithm>
#include <chrono>
#include <string_view>

#include "programs/vantory-desktop/SessionEnvironment.h"

namespace vantory::desktop {

namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::seconds kPatienceForStart{20};

// As the standard of desktop entries derives it from the name.
std::string objectPath(std::string identifier) {
  std::replace(identifier.begin(), identifier.end(), '.', '/');
  std::replace(identifier.begin(), identifier.end(), '-', '_');
  return "/" + identifier;
}

// One that did not answer lately is asked all the same: it may only have been busy.
BusCall applicationCall(const std::string& identifier, const char* member) {
  return {.service = identifier,
          .path = objectPath(identifier),
          .interface = "org.freedesktop.Application",
          .member = member,
          .insist = true};
}

Status outcome(const BusCall& call) {
  const Result<VariantPointer> reply = callBus(call, Deadline(call.startService ? kPatienceForStart : kPatience));
  if (!reply) return reply.error();
  return {};
}

BusCall busQuestion(const char* member, const char* reply) {
  return {.service = kBus, .path = "/org/freedesktop/DBus", .interface = kBus, .member = member, .reply = reply};
}

// 0 for a name that nobody owns.
pid_t processOf(const std::string& name) {
  BusCall question = busQuestion("GetConnectionUnixProcessID", "(u)");
  question.arguments = owned(g_variant_new("(s)", name.c_str()));
  const Result<VariantPointer> reply = callBus(question, Deadline(kPatience));
  guint32 number = 0;
  if (reply) g_variant_get(reply->get(), "(u)", &number);
  return static_cast<pid_t>(number);
}

// The texts of a reply "(as)".
std::vector<std::string> textsIn(const VariantPointer& reply) {
  const VariantPointer list(g_variant_get_child_value(reply.get(), 0));
  std::vector<std::string> texts;
  GVariantIter iterator;
  const char* text = nullptr;
  g_variant_iter_init(&iterator, list.get());
  while (g_variant_iter_next(&iterator, "&s", &text)) texts.emplace_back(text);
  return texts;
}

// What the desktop adds to a request, such as a start-up notice; nothing here.
GVariant* noPlatformData() {
  return g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0);
}

GVariant* textArray(const std::vector<std::string>& texts) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string& text : texts) g_variant_builder_add(&builder, "s", text.c_str());
  return g_variant_builder_end(&builder);
}

}  // namespace

// A unique name such as ":1.7" is that of a connection.
bool isBusName(const std::string& identifier) {
  return g_dbus_is_name(identifier.c_str()) && !g_dbus_is_unique_name(identifier.c_str());
}

pid_t busOwner(const std::string& identifier) {
  return isBusName(identifier) && hasBus() ? processOf(identifier) : 0;
}

std::vector<BusConnection> busConnections() {
  if (!hasBus()) return {};
  const Result<VariantPointer> reply = callBus(busQuestion("ListNames", "(as)"), Deadline(kPatience));
  std::vector<BusConnection> connections;
  if (!reply) return connections;
  for (const std::string& name : textsIn(*reply))
    if (g_dbus_is_unique_name(name.c_str())) connections.push_back({name, processOf(name)});
  return connections;
}

// The interface itself tells of no actions; that of GTK, which most applications with actions have, does.
bool offersAction(const std::string& identifier, const std::string& action) {
  const BusCall question{.service = identifier,
                         .path = objectPath(identifier),
                         .interface = "org.gtk.Actions",
                         .member = "List",
                         .reply = "(as)",
                         .startService = false,
                         .insist = true};
  const Result<VariantPointer> reply = callBus(question, Deadline(kPatience));
  if (!reply) return false;
  const std::vector<std::string> names = textsIn(*reply);
  return std::find(names.begin(), names.end(), action) != names.end();
}

// An application that does not run is not started for it.
Status activateAction(const std::string& identifier, const std::string& action) {
  BusCall call = applicationCall(identifier, "ActivateAction");
  call.arguments = owned(g_variant_new("(s@av@a{sv})", action.c_str(),
                                       g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0), noPlatformData()));
  call.startService = false;
  return outcome(call);
}

Status activate(const std::string& identifier, bool start) {
  BusCall call = applicationCall(identifier, "Activate");
  call.arguments = owned(g_variant_new("(@a{sv})", noPlatformData()));
  call.startService = start;
  return outcome(call);
}

Status openOnBus(const std::string& identifier, const std::vector<std::string>& addresses) {
  BusCall call = applicationCall(identifier, "Open");
  call.arguments = owned(g_variant_new("(@as@a{sv})", textArray(addresses), noPlatformData()));
  return outcome(call);
}

}  // namespace vantory::desktop
