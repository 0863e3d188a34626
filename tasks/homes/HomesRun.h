// One command line for many homes.
#pragma once

#include <iosfwd>
#include <string>

namespace vantory {

class HomeWorkers;
struct HomeOptions;

// Where the homes are named and told of.
struct HomesStreams {
  std::istream& input;
  std::ostream& output;    // a table of all homes at the end, or in JSON an object on a line for each as it ends
  std::ostream& errors;    // what is wrong as a whole
  std::ostream* progress;  // a line for each home as it ends; null for none
};

// Works in all homes that the options name, so many at once; relative paths begin at `folder`. By the
// run's name it can be taken back. Answers the exit code: 0
// when all was done everywhere, 1 when nothing was begun, 4 when there was nothing to do anywhere, else 3.
int runHomes(const HomeOptions& options, const std::string& name, const std::string& folder, HomeWorkers& workers,
             const HomesStreams& streams);

}  // namespace vantory
