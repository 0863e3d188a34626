// Finds the action that quits an application of KDE's, and triggers it.
#include "programs/vantory-desktop/KdeActions.h"

#include <memory>
#include <string_view>
#include <vector>

namespace vantory::desktop {

namespace {

constexpr const char* kAction = "org.qtproject.Qt.QAction";

using NodePointer = std::unique_ptr<GDBusNodeInfo, Releaser<g_dbus_node_info_unref>>;

// The paths of the objects right below one.
std::vector<std::string> objectsBelow(const std::string& connection, const std::string& path,
                                      const Deadline& deadline) {
  const BusCall question{.service = connection,
                         .path = path.empty() ? "/" : path,
                         .interface = "org.freedesktop.DBus.Introspectable",
                         .member = "Introspect",
                         .reply = "(s)",
                         .insist = true};
  const Result<VariantPointer> reply = callBus(question, deadline);
  if (!reply) return {};
  const char* description = nullptr;
  g_variant_get(reply->get(), "(&s)", &description);
  const NodePointer node(g_dbus_node_info_new_for_xml(description, nullptr));
  std::vector<std::string> paths;
  for (GDBusNodeInfo** below = node ? node->nodes : nullptr; below && *below; ++below)
    if (const std::string each = path + "/" + ((*below)->path ? (*below)->path : "");
        g_variant_is_object_path(each.c_str()))
      paths.push_back(each);
  return paths;
}

// An action that is not there, or does not answer in time, counts as one that is not enabled.
bool isEnabled(const KdeAction& action, const Deadline& deadline) {
  const BusCall question{.service = action.connection,
                         .path = action.path,
                         .interface = "org.freedesktop.DBus.Properties",
                         .member = "Get",
                         .arguments = owned(g_variant_new("(ss)", kAction, "enabled")),
                         .reply = "(v)",
                         .insist = true};
  const Result<VariantPointer> reply = callBus(question, deadline);
  if (!reply) return false;
  GVariant* value = nullptr;
  g_variant_get(reply->get(), "(v)", &value);
  const VariantPointer owner(value);
  return g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(value) != FALSE;
}

}  // namespace

// They lie in "/APPLICATION/MainWindow_NUMBER/actions". Any window's quits all of the application.
std::optional<KdeAction> quitActionOf(const std::string& connection, const Deadline& deadline) {
  for (const std::string& application : objectsBelow(connection, "", deadline))
    for (const std::string& window : objectsBelow(connection, application, deadline)) {
      if (!window.starts_with(application + "/MainWindow_")) continue;
      KdeAction action{connection, window + "/actions/file_quit"};
      if (isEnabled(action, deadline)) return action;
    }
  return std::nullopt;
}

Status trigger(const KdeAction& action, const Deadline& deadline) {
  const BusCall call{.service = action.connection,
                     .path = action.path,
                     .interface = kAction,
                     .member = "trigger",
                     .startService = false,
                     .insist = true};
  const Result<VariantPointer> reply = callBus(call, deadline);
  if (!reply) return reply.error();
  return {};
}

}  // namespace vantory::desktop
