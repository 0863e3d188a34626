// vantory-activation PROGRAM: started by the session bus when a desktop opens Vantory by its name on the bus. Takes
// that request and becomes PROGRAM, the windowed program, which alone knows whether a window is open already.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SingleInstance.h"
#include "platform/linux/session/GLibPointers.h"

namespace vantory::desktop {
namespace {

constexpr const char* kName = "com.quarrywell.Vantory";
constexpr const char* kPath = "/com/quarrywell/Vantory";
constexpr const char* kInterface =
    "<node><interface name='org.freedesktop.Application'>"
    "<method name='Activate'><arg type='a{sv}'/></method>"
    "<method name='Open'><arg type='as'/><arg type='a{sv}'/></method>"
    "<method name='ActivateAction'><arg type='s'/><arg type='av'/><arg type='a{sv}'/></method>"
    "</interface></node>";
// Whoever has the program started asks at once.
constexpr guint kPatienceSeconds = 10;

std::string textIn(GVariant* dictionary, const char* key) {
  const char* text = "";
  g_variant_lookup(dictionary, key, "&s", &text);
  return text;
}

// Wayland's word for it, else that of X11.
std::string activationToken(GVariant* platformData) {
  const std::string token = textIn(platformData, "activation-token");
  return token.empty() ? textIn(platformData, "desktop-startup-id") : token;
}

// Owns the program's name on the bus from its first request on until nobody asks any more.
class Activation {
 public:
  // The bus that started this process; an error ends the program.
  bool listen() {
    static const GDBusInterfaceVTable kTable{&Activation::called, nullptr, nullptr, {}};
    GError* error = nullptr;
    bus_.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    if (!bus_) return failed(error);
    g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kInterface, nullptr);
    const guint object =
        g_dbus_connection_register_object(bus_.get(), kPath, node->interfaces[0], &kTable, this, nullptr, &error);
    g_dbus_node_info_unref(node);
    if (object == 0) return failed(error);
    // Where another process has the name, this one does not wait for it.
    constexpr guint kDoNotQueue = 4;
    return call("RequestName", g_variant_new("(su)", kName, kDoNotQueue));
  }

  // False when nobody asks in time. Takes all requests that have arrived until others get a process of their own.
  bool receive() {
    loop_ = g_main_loop_new(nullptr, FALSE);
    g_timeout_add_seconds(kPatienceSeconds, &Activation::giveUp, this);
    g_main_loop_run(loop_);
    if (!call("ReleaseName", g_variant_new("(s)", kName))) return false;
    while (g_main_context_iteration(nullptr, FALSE)) continue;
    g_dbus_connection_flush_sync(bus_.get(), nullptr, nullptr);
    return isAsked_;
  }

  const OpenRequest& request() const { return request_; }

 private:
  static bool failed(GError* error) {
    const ErrorPointer owner(error);
    std::fprintf(stderr, "Vantory: The session bus cannot be used: %s\n", error->message);
    return false;
  }

  bool call(const char* method, GVariant* arguments) {
    GError* error = nullptr;
    const VariantPointer answer(g_dbus_connection_call_sync(
        bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments,
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error));
    return answer || failed(error);
  }

  static gboolean giveUp(void* self) {
    g_main_loop_quit(static_cast<Activation*>(self)->loop_);
    return G_SOURCE_REMOVE;
  }

  // The last argument of each method is what the desktop adds, such as the activation token.
  static void called(GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* arguments,
                     GDBusMethodInvocation* invocation, void* self) {
    const std::string_view name = method;
    if (name == "ActivateAction") {
      g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                            "Vantory has no such action");
      return;
    }
    const VariantPointer last(g_variant_get_child_value(arguments, g_variant_n_children(arguments) - 1));
    static_cast<Activation*>(self)->take(name == "Open" ? arguments : nullptr, last.get());
    g_dbus_method_invocation_return_value(invocation, nullptr);
  }

  // The files of all requests come together; of the tokens the last one counts.
  void take(GVariant* files, GVariant* platformData) {
    if (files) {
      const VariantPointer addresses(g_variant_get_child_value(files, 0));
      for (gsize i = 0; i < g_variant_n_children(addresses.get()); ++i) {
        const VariantPointer child(g_variant_get_child_value(addresses.get(), i));
        const std::string_view address = g_variant_get_string(child.get(), nullptr);
        // No address. The toolkit would take it for an option of its own, even behind "--".
        if (!address.starts_with('-')) request_.files.emplace_back(address);
      }
    }
    request_.activationToken = activationToken(platformData);
    isAsked_ = true;
    g_main_loop_quit(loop_);
  }

  ObjectPointer<GDBusConnection> bus_;
  GMainLoop* loop_ = nullptr;
  bool isAsked_ = false;
  OpenRequest request_;
};

// Returns only where the program cannot be started.
int become(const char* program, const OpenRequest& request) {
  std::vector<char*> arguments{const_cast<char*>(program), const_cast<char*>("--")};
  for (const std::string& file : request.files) arguments.push_back(const_cast<char*>(file.c_str()));
  arguments.push_back(nullptr);
  if (!request.activationToken.empty()) {
    setenv("XDG_ACTIVATION_TOKEN", request.activationToken.c_str(), 1);
    setenv("DESKTOP_STARTUP_ID", request.activationToken.c_str(), 1);
  }
  execv(program, arguments.data());
  std::fprintf(stderr, "Vantory: %s cannot be started: %s\n", program, std::strerror(errno));
  return 1;
}

}  // namespace
}  // namespace vantory::desktop

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) return 2;
  vantory::desktop::Activation activation;
  if (!activation.listen()) return 1;
  return activation.receive() ? vantory::desktop::become(arguments[1], activation.request()) : 0;
}
