// The processes of an application on the user's desktop.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/session/EntryCommand.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

// The unit that a process belongs to, such as "app-gnome-org.example.Editor-4711.scope", from the text of its
// /proc/PID/cgroup; empty when it tells of none.
std::string unitOfProcess(std::string_view controlGroups);

// Whether the unit was made for the application with that desktop-entry id (without ".desktop"): a scope
// "app[-LAUNCHER]-ID-RANDOM.scope" or a service "app[-LAUNCHER]-ID[@RANDOM].service".
bool isUnitOfApplication(std::string_view unit, std::string_view identifier);

// Whether the unit was made for an application of a snap, named "INSTANCE.APP".
bool isUnitOfSnap(std::string_view unit, std::string_view snapApplication);

class ProcessView;

// What tells an application from others.
struct ApplicationTraits {
  std::string identifier;  // its desktop-entry id without ".desktop"
  EntryCommand command;    // of its desktop entry
  std::string snap = {};   // "INSTANCE.APP" when it comes as a snap
  pid_t busOwner = 0;      // the process that has its name on the session bus; 0 when none has
};

// Looks among the user's own processes, never at this one and its parent. A process is the application's when it is in
// a unit or a sandbox made for it, was started as it, runs the command of its desktop entry, or has its name on the
// bus.
class ApplicationProcesses {
 public:
  // `folder` is /proc, or what a test has made for it.
  explicit ApplicationProcesses(uid_t user, const std::string& folder = "/proc");

  // The first process of each running copy: those whose ancestors are not the application's.
  std::vector<pid_t> copies(const ApplicationTraits& application) const;
  // Whether a process is the other one or descends from it.
  bool descends(pid_t number, pid_t ancestor) const;

 private:
  std::vector<pid_t> numbers() const;
  bool anyAncestor(pid_t number, const std::function<bool(pid_t)>& condition) const;
  bool isOf(const ApplicationTraits& application, const ProcessView& process) const;
  bool isInUnitOf(const ApplicationTraits& application, const ProcessView& process) const;
  bool wasStartedAs(const ApplicationTraits& application, const ProcessView& process) const;
  bool wasStartedAsAnother(const ApplicationTraits& application, const ProcessView& process) const;

  const uid_t user_;
  const Descriptor folder_;
};

}  // namespace vantory
