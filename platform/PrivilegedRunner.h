// File tools run with administrator rights.
#pragma once

#include <string>
#include <vector>

namespace vantory {

class PrivilegedRunner {
 public:
  virtual ~PrivilegedRunner() = default;

  // Obtains the administrator right, asking the user when it must. False when it was not granted. The superuser has it
  // always.
  virtual bool authorize() = 0;
  // Gives the right up.
  virtual void release() = 0;
  // True while the right is held.
  virtual bool isAuthorized() const = 0;
  // Performs what the tool would do with these arguments, to its end, and answers 0 when it succeeded. Only "/bin/cp",
  // "/bin/mv", "/bin/rm", "/bin/mkdir", "/usr/bin/touch" and "/usr/bin/chattr" are known, in the argument shapes that
  // QWAuthorization and the locks of QWFileManager use; all else is refused.
  virtual int run(const std::string& tool, const std::vector<std::string>& arguments) = 0;
};

}  // namespace vantory
