// Actions that the main windows of KDE's applications offer on the session bus, each as an object of its own.
#pragma once

#include <optional>
#include <string>

#include "base/Result.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

struct KdeAction {
  std::string connection;  // its program's, by the name that the bus gave it
  std::string path;
};

// The action that quits the application; none where it is no application of KDE's, or cannot be quit just now.
std::optional<KdeAction> quitActionOf(const std::string& connection, const Deadline& deadline);

// As if its user chose the action. An application that asks something first answers late (timed_out).
Status trigger(const KdeAction& action, const Deadline& deadline);

}  // namespace vantory::desktop
