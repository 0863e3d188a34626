// Jobs that the operating system runs for the program: their files, and the loading of them.
#pragma once

#include <optional>
#include <string>

#include "base/PropertyList.h"

namespace vantory {

// A job is described by a property list named after its label, in "LaunchAgents" or, without launchAgent,
// "LaunchDaemons", of the user's Library folder or, without user, of the machine's. A job that could not be loaded or
// unloaded gets a log line; the file stays.
class QWLaunchd {
 public:
  struct StartJob {
    std::string job;  // the label
    PropertyListDictionary settings;
    bool user = true;
    bool launchAgent = true;
    bool shouldAuth = false;                          // with administrator rights
    std::optional<std::string> killProcessName = {};  // a program that ends for the new job
  };
  // Replaces the job's file, and loads it. A job with the interval that the old one had keeps the date of its last run.
  // False, told at the window where there is one, when the file could not be written, not even with administrator
  // rights.
  static bool startJob(const StartJob& start);
  static bool startLaunchAgent(const std::string& label, const PropertyListDictionary& settings, bool user);

  // shouldAuth plays no part.
  static void stopJob(const std::string& label, bool user, bool launchAgent, bool shouldAuth);
  // Stops the job and deletes its file.
  static void removeJob(const std::string& label, bool user, bool launchAgent, bool shouldAuth);
  // Always the user's, with administrator rights where they are needed, whatever `user` says.
  static void removeLaunchAgent(const std::string& label, bool user);
};

}  // namespace vantory
