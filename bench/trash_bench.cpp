// "-trash" against "gio trash" of the same files.

#include <filesystem>
#include <string>
#include <vector>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;

namespace {

using MakeFiles = std::vector<std::string> (*)(const std::string& home, int count);

Run trashing(const std::string& home, const Command& command, int count) {
  return {[=] { runCommands({command}, home); }, [=] { return entriesIn(trashFolder(home)) == count; }};
}

Run ours(const std::string& home, MakeFiles makeFiles, int count, const char* key) {
  makeFiles(home, count);
  return trashing(home, {builtProgram("vantory"), "-trash", key}, count);
}

Run peer(const std::string& home, MakeFiles makeFiles, int count) {
  Command command{"gio", "trash"};
  for (const std::string& file : makeFiles(home, count)) command.push_back(file);
  return trashing(home, command, count);
}

}  // namespace

int main() {
  ScratchHomes homes;
  compare({.name = "trash, 3,000 files",
           .goal = 0.45,
           .rounds = 5,
           .ours = [&] { return ours(homes.create(), makeLayouts, 3000, kLayoutsKey); },
           .peer = [&] { return peer(homes.create(), makeLayouts, 3000); }});
  compare({.name = "trash, 500 files of one name",
           .goal = 0.10,
           .rounds = 5,
           .ours = [&] { return ours(homes.create(), makeEquallyNamed, 500, kEquallyNamedKey); },
           .peer = [&] { return peer(homes.create(), makeEquallyNamed, 500); }});
}
