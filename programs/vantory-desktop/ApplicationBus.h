// Applications on the session bus: the interface org.freedesktop.Application of the Desktop Entry Specification.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/Result.h"
#include "programs/vantory-desktop/SessionBus.h"

namespace vantory::desktop {

// Whether an application can have the identifier as its name on the bus.
bool isBusName(const std::string& identifier);

// The process that has the identifier as its name on the bus; 0 when none has or there is no bus.
pid_t busOwner(const std::string& identifier);

// A program on the bus, by the name that the bus gave its connection, whatever others it has.
struct BusConnection {
  std::string name;
  pid_t process;
};
std::vector<BusConnection> busConnections();

// Whether the application, which must be on the bus, offers that action to the bus.
bool offersAction(const std::string& identifier, const std::string& action);
Status activateAction(const std::string& identifier, const std::string& action);

// Shows the application, or files in it. It is started when it is not running and `start` is given.
Status activate(const std::string& identifier, bool start);
Status openOnBus(const std::string& identifier, const std::vector<std::string>& addresses);

}  // namespace vantory::desktop
