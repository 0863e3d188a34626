// Which applications run, and asking them to quit.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/session/ApplicationProcesses.h"
#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/ApplicationBus.h"
#include "programs/vantory-desktop/DesktopEntry.h"
#include "programs/vantory-desktop/KdeActions.h"
#include "programs/vantory-desktop/Services.h"
#include "programs/vantory-desktop/SessionEnvironment.h"
#include "programs/vantory-desktop/Windows.h"

namespace vantory::desktop {

namespace {

constexpr const char* kQuitAction = "quit";
constexpr std::chrono::seconds kPatience{2};

// Empty for an application that is no snap.
std::string snapOf(const DesktopEntry& entry) {
  const std::string instance = entry.text("X-SnapInstanceName");
  const std::string application = entry.text("X-SnapAppName");
  return instance.empty() || application.empty() ? "" : instance + "." + application;
}

// An application without a desktop entry, or with a damaged one, can still be told by other things.
ApplicationTraits traitsOf(const std::string& identifier) {
  const Result<DesktopEntry> entry = DesktopEntry::find(identifier, Case::Exact);
  const char* path = std::getenv("PATH");
  return {.identifier = identifier,
          .command = EntryCommand(entry ? entry->command() : std::vector<std::string>(), path ? path : ""),
          .snap = entry ? snapOf(*entry) : "",
          .busOwner = busOwner(identifier)};
}

// Arguments: identifier. Values: how many copies run.
Result<Message> countCopies(const Message& arguments) {
  const ApplicationTraits application = traitsOf(arguments[0]);
  const std::size_t copies = ApplicationProcesses(getuid()).copies(application).size();
  const std::size_t onBus = application.busOwner != 0 ? 1 : 0;
  return Message{std::to_string(std::max(copies, onBus))};
}

// How the running copies of an application can be asked to quit, so that each can ask about unsaved work.
struct WaysToQuit {
  bool action = false;                // of the application on the bus
  std::vector<KdeAction> kdeActions;  // of copies that the action does not reach
  std::vector<Window> windows;        // to be closed, of copies that no action reaches
  bool reachAll = true;               // whether no copy is left out
};

// What a copy offers on the bus without having the application's name there.
std::optional<KdeAction> kdeActionOf(pid_t copy, const std::vector<BusConnection>& connections,
                                     const ApplicationProcesses& processes, const Deadline& deadline) {
  for (const BusConnection& connection : connections)
    if (connection.process != 0 && processes.descends(connection.process, copy))
      if (auto action = quitActionOf(connection.name, deadline)) return action;
  return std::nullopt;
}

// The windows that close a copy: its main ones, or whatever it shows where it has none. A program that was started from
// one that shows windows is another one, and its work is not to be touched.
std::vector<Window> windowsOf(pid_t copy, const std::vector<Window>& all, const ApplicationProcesses& processes) {
  std::vector<Window> windows;
  std::copy_if(all.begin(), all.end(), std::back_inserter(windows),
               [&](const Window& window) { return processes.descends(window.process, copy); });
  const auto isMain = [](const Window& window) { return window.isMain; };
  if (std::any_of(windows.begin(), windows.end(), isMain)) std::erase_if(windows, std::not_fn(isMain));
  std::vector<Window> own;
  std::copy_if(windows.begin(), windows.end(), std::back_inserter(own), [&](const Window& window) {
    return std::none_of(windows.begin(), windows.end(), [&](const Window& other) {
      return other.process != window.process && processes.descends(window.process, other.process);
    });
  });
  return own;
}

WaysToQuit waysToQuit(const ApplicationTraits& application, const Windows& display) {
  const ApplicationProcesses processes(getuid());
  WaysToQuit ways;
  ways.action = application.busOwner != 0 && offersAction(application.identifier, kQuitAction);
  std::vector<pid_t> copies = processes.copies(application);
  const auto isOnBus = [&](pid_t copy) { return processes.descends(application.busOwner, copy); };
  if (copies.empty()) ways.reachAll = ways.action || application.busOwner == 0;
  if (ways.action) {
    // Behind a sandbox's proxy any of them may be the one that is on the bus.
    if (std::none_of(copies.begin(), copies.end(), isOnBus)) copies.clear();
    std::erase_if(copies, isOnBus);
  }
  if (copies.empty()) return ways;
  const std::vector<BusConnection> connections = busConnections();
  const Deadline deadline(kPatience);
  const std::vector<Window> all = display.list();
  for (const pid_t copy : copies) {
    if (auto action = kdeActionOf(copy, connections, processes, deadline)) {
      ways.kdeActions.push_back(std::move(*action));
      continue;
    }
    const std::vector<Window> windows = windowsOf(copy, all, processes);
    ways.reachAll = ways.reachAll && !windows.empty();
    ways.windows.insert(ways.windows.end(), windows.begin(), windows.end());
  }
  return ways;
}

// Arguments: identifier. Values: "1" when every copy can be asked to quit, else "0".
Result<Message> canQuit(const Message& arguments) {
  adoptSessionEnvironment();
  return Message{waysToQuit(traitsOf(arguments[0]), Windows()).reachAll ? "1" : "0"};
}

// One that has not answered yet may be asking the user about unsaved work; one that never will has ended.
bool isUnderWay(const Status& asked) {
  return asked || asked.error().code == std::errc::timed_out || asked.error().code == std::errc::connection_reset;
}

// Arguments: identifier. No values. Copies are asked on the bus where they offer that there, all others by closing
// their windows; none is sent a signal, which most obey without saving anything.
Result<Message> quit(const Message& arguments) {
  adoptSessionEnvironment();
  Windows display;
  const ApplicationTraits application = traitsOf(arguments[0]);
  const WaysToQuit ways = waysToQuit(application, display);
  std::vector<Status> asked;
  if (ways.action) asked.push_back(activateAction(application.identifier, kQuitAction));
  const Deadline deadline(kPatience);
  for (const KdeAction& action : ways.kdeActions) asked.push_back(trigger(action, deadline));
  for (const Window& window : ways.windows) display.close(window);
  for (const Status& answer : asked)
    if (!isUnderWay(answer)) return answer.error();
  if (!ways.reachAll)
    return errorWithText(std::errc::operation_not_supported, application.identifier,
                         "It cannot be asked to quit. Please quit it yourself.");
  return Message{};
}

}  // namespace

Verbs runningApplicationVerbs() {
  return {{"count-copies", 1, countCopies}, {"can-quit", 1, canQuit}, {"quit", 1, quit}};
}

}  // namespace vantory::desktop
