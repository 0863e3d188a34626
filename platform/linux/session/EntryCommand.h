// The command line of a desktop entry, and which processes run it.
#pragma once

#include <string>
#include <vector>

namespace vantory {

class ProcessView;

// A program that many applications share, such as an interpreter, tells nothing by itself: then a process must have
// been given the same first operands too, above all the same script. An "env" before the program, with its assignments,
// is left out, and a script counts as its interpreter with the script as first operand.
class EntryCommand {
 public:
  // The words of the command line, without placeholders for files. `searchPath` is a list of folders like PATH.
  EntryCommand(std::vector<std::string> words, const std::string& searchPath);

  bool isRunBy(const ProcessView& process) const;

 private:
  bool wasStarted(const ProcessView& process) const;
  bool operandsMatch(const ProcessView& process, const std::vector<std::string>& arguments) const;

  std::string name_;                   // that the program is called by
  std::string program_;                // absolute; empty when it cannot be told
  std::vector<std::string> operands_;  // the first arguments that are no options
  std::vector<std::string> settings_;  // options with a value, "--NAME=VALUE"
};

}  // namespace vantory
