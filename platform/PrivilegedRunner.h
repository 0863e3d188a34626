// File tools run with administrator rights.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// No program but a tool like the others: with the name of the one machine-wide setting and "0" or "1" it writes that.
inline constexpr const char* kMachineSettingTool = "machine-setting";
inline constexpr const char* kSettingsFile = "com.quarrywell.Vantory.plist";  // the machine's, and each user's
inline constexpr const char* kAdministratorSetting = "requireAdminPassword";

// Any thread.
class PrivilegedRunner {
 public:
  enum Answer : int { kDone = 0, kFailed = 1 };

  virtual ~PrivilegedRunner() = default;

  // Obtains the administrator right, asking the user when it must, and waits for the answer. False when it was not
  // granted. The superuser has it always.
  virtual bool authorize() = 0;
  // Gives the right up.
  virtual void release() = 0;
  // True while the right is held.
  virtual bool isAuthorized() const = 0;
  // True for the tools whose work run() does, whether or not the machine has such programs: "/bin/cp", "/bin/mv",
  // "/bin/rm", "/bin/mkdir", "/bin/chmod", "/usr/bin/touch", "/usr/bin/chattr", "/usr/sbin/chown" and the one above.
  virtual bool knows(const std::string& tool) const = 0;
  // Performs what the tool would do with these arguments, to its end, and answers 0 when it succeeded. Only the
  // argument shapes that QWAuthorization, QWLaunchd and QWFileManager use are known; all else is refused.
  virtual int run(const std::string& tool, const std::vector<std::string>& arguments) = 0;
};

}  // namespace vantory
