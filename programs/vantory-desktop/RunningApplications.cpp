// Which applications run, and asking them to quit.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/session/ApplicationProcesses.h"
#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/ApplicationBus.h"
#include "programs/vantory-desktop/DesktopEntry.h"
#include "programs/vantory-desktop/Services.h"

namespace vantory::desktop {

namespace {

constexpr const char* kQuitAction = "quit";
// For a process to end, so that those it leaves behind can be asked.
constexpr std::chrono::milliseconds kEndPatience{500};
constexpr std::chrono::milliseconds kPause{25};

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

// Asks every copy but the spared ones, each once; then whoever a copy has left behind.
void endCopies(const ApplicationProcesses& processes, const ApplicationTraits& application,
               const std::set<pid_t>& spared) {
  std::set<pid_t> asked;
  const auto end = std::chrono::steady_clock::now() + kEndPatience;
  do {
    const std::vector<pid_t> copies = processes.copies(application);
    if (std::all_of(copies.begin(), copies.end(), [&](pid_t copy) { return spared.contains(copy); })) return;
    for (const pid_t copy : copies)
      if (!spared.contains(copy))
        for (const pid_t process : processes.toBeAsked(copy))
          if (asked.insert(process).second) (void)processes.terminate(process, application);
    std::this_thread::sleep_for(kPause);
  } while (std::chrono::steady_clock::now() < end);
}

// Arguments: identifier. Values: how many copies run.
Result<Message> countCopies(const Message& arguments) {
  const ApplicationTraits application = traitsOf(arguments[0]);
  const std::size_t copies = ApplicationProcesses(getuid()).copies(application).size();
  const std::size_t onBus = application.busOwner != 0 ? 1 : 0;
  return Message{std::to_string(std::max(copies, onBus))};
}

// One that has not answered yet may be asking the user about unsaved work; it must not be ended meanwhile.
bool quitsOnBus(const ApplicationTraits& application) {
  if (application.busOwner == 0 || !offersAction(application.identifier, kQuitAction)) return false;
  const Status asked = activateAction(application.identifier, kQuitAction);
  return asked || asked.error().code == std::errc::timed_out;
}

// Arguments: identifier. No values. The copy that has the application's name on the bus is asked there when it offers
// that, all others by a signal.
Result<Message> quit(const Message& arguments) {
  const ApplicationTraits application = traitsOf(arguments[0]);
  const ApplicationProcesses processes(getuid());
  const std::vector<pid_t> copies = processes.copies(application);
  // Found before it is asked, since it may be gone right after.
  std::set<pid_t> onBus;
  for (const pid_t copy : copies)
    if (processes.descends(application.busOwner, copy)) onBus.insert(copy);
  if (quitsOnBus(application)) {
    // Behind a sandbox's proxy any of them may be the one that was asked.
    if (!onBus.empty()) endCopies(processes, application, onBus);
    return Message{};
  }
  if (application.busOwner != 0 && copies.empty())
    return errorWithText(std::errc::operation_not_supported, application.identifier,
                         "It runs out of reach and offers no way to quit.");
  endCopies(processes, application, {});
  return Message{};
}

}  // namespace

Verbs runningApplicationVerbs() {
  return {{"count-copies", 1, countCopies}, {"quit", 1, quit}};
}

}  // namespace vantory::desktop
