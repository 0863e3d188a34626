// Stands in for tools of the system.
#pragma once

#include <sys/stat.h>

#include <string>

#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

class StandInTools {
 public:
  // The tool at this path notes what it is started with, one call a line, then does what the shell script says.
  void put(const std::string& tool, const std::string& script, const std::string& before = "") {
    const std::string path = folder_.path() + tool;
    writeFile(path,
              "#!/bin/sh\ncd " + folder_.path() + "\n" + before + "\necho \"${0##*/} $*\" >> calls\n" + script + "\n");
    chmod(path.c_str(), 0755);
  }
  // The desktop's script, which goes before a question, must come as it is expected.
  void answer(const std::string& script) {
    put("/usr/bin/osascript", script, "[ \"$1 $2 $3\" = '-l JavaScript -e' ] || exit 9\nshift 4");
  }
  std::string calls() const { return exists(folder_ / "calls") ? readFile(folder_ / "calls") : ""; }
  std::string operator/(std::string_view name) const { return folder_ / name; }

 private:
  const ScratchFolder folder_;
  const EnvironmentChange tools_{"VANTORY_TEST_TOOLS", folder_.path()};
};

}  // namespace vantory::test
