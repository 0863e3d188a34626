// Messages that the desktop shows for a while.

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kApplication = "Vantory";
constexpr const char* kClickAction = "default";  // what a click on the message itself is called
constexpr std::uint32_t kExpired = 1;            // the reason of a message that nobody closed
constexpr guchar kNormalUrgency = 1;
constexpr gint32 kServersOwnTime = -1;
constexpr std::chrono::seconds kPatience{2};

// What the program that shows the messages can do.
struct Capabilities {
  bool markup = false;   // the text is read as markup
  bool actions = false;  // a click is told
};

// Keeps what each message hands back for as long as it is shown.
class Notifications {
 public:
  explicit Notifications(EventSink tell) : tell_(std::move(tell)) {}

  // Arguments: title, text, and what is handed back when the message is clicked or expires. No values.
  Result<Message> post(const Message& arguments) {
    const Deadline deadline(kPatience);
    const Result<Capabilities> server = capabilities(deadline);
    if (!server && server.error().code == std::errc::no_such_device_or_address)
      return Error{server.error().code, "Nothing on this desktop shows notifications."};
    if (!server) return server.error();
    listen();
    const Result<VariantPointer> reply = callBus(message(*server, arguments[0], arguments[1]), deadline);
    if (!reply) return reply.error();
    std::uint32_t id = 0;
    g_variant_get(reply->get(), "(u)", &id);
    contexts_[id] = arguments[2];
    return Message{};
  }

 private:
  static BusCall call(const char* member) {
    return {.service = kService, .path = kPath, .interface = kService, .member = member};
  }

  // Asked for each message, because another program may show them by now.
  static Result<Capabilities> capabilities(const Deadline& deadline) {
    BusCall question = call("GetCapabilities");
    question.reply = "(as)";
    const Result<VariantPointer> reply = callBus(question, deadline);
    if (!reply) return reply.error();
    const VariantPointer names(g_variant_get_child_value(reply->get(), 0));
    Capabilities found;
    GVariantIter iterator;
    const char* name = nullptr;
    g_variant_iter_init(&iterator, names.get());
    while (g_variant_iter_next(&iterator, "&s", &name)) {
      if (std::string_view(name) == "body-markup") found.markup = true;
      if (std::string_view(name) == "actions") found.actions = true;
    }
    return found;
  }

  // Where the text is read as markup, its own "<" and "&" are escaped.
  static BusCall message(const Capabilities& server, const std::string& title, const std::string& text) {
    TextPointer body = busText(text);
    if (server.markup) body.reset(g_markup_escape_text(body.get(), -1));
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    if (server.actions) g_variant_builder_add(&actions, "s", kClickAction);
    if (server.actions) g_variant_builder_add(&actions, "s", "Show");
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(kNormalUrgency));
    // By which a desktop can tell the program's messages from others'.
    g_variant_builder_add(&hints, "{sv}", "x-quarrywell-name", g_variant_new_string("QWInfoNotification"));
    BusCall notify = call("Notify");
    notify.arguments = owned(g_variant_new("(susssasa{sv}i)", kApplication, std::uint32_t{0}, "", busText(title).get(),
                                           body.get(), &actions, &hints, kServersOwnTime));
    notify.reply = "(u)";
    return notify;
  }

  // Before the first message, so that no click is missed.
  void listen() {
    if (listening_) return;
    listening_ = true;
    for (const char* signal : {"ActionInvoked", "NotificationClosed"})
      g_dbus_connection_signal_subscribe(*sessionBus(), kService, kService, signal, kPath, nullptr,
                                         G_DBUS_SIGNAL_FLAGS_NONE, &Notifications::hear, this, nullptr);
  }

  static void hear(GDBusConnection*, const char*, const char*, const char*, const char* signal, GVariant* values,
                   void* self) {
    static_cast<Notifications*>(self)->heard(signal, values);
  }

  // What a message hands back is forgotten when the message has gone.
  void heard(std::string_view signal, GVariant* values) {
    std::uint32_t id = 0;
    const char* action = nullptr;
    std::uint32_t reason = 0;
    if (signal == "ActionInvoked" && g_variant_is_of_type(values, G_VARIANT_TYPE("(us)"))) {
      g_variant_get(values, "(u&s)", &id, &action);
      if (std::string_view(action) == kClickAction) tell("clicked", id);
    } else if (signal == "NotificationClosed" && g_variant_is_of_type(values, G_VARIANT_TYPE("(uu)"))) {
      g_variant_get(values, "(uu)", &id, &reason);
      if (reason == kExpired) tell("expired", id);
      contexts_.erase(id);
    }
  }

  // Servers tell everybody about everybody's messages.
  void tell(const char* event, std::uint32_t id) const {
    const auto known = contexts_.find(id);
    if (known != contexts_.end()) tell_({event, known->second});
  }

  EventSink tell_;
  bool listening_ = false;
  std::map<std::uint32_t, std::string> contexts_;  // of the messages that are shown
};

}  // namespace

Verbs notificationVerbs(EventSink tell) {
  const auto notifications = std::make_shared<Notifications>(std::move(tell));
  return {{"notify", 3, [notifications](const Message& arguments) { return notifications->post(arguments); }}};
}

}  // namespace vantory::desktop
