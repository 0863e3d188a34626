// The unit files that make systemd run a job.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/JobControl.h"

namespace vantory {

// How often the timer asks whether the job is due, and how much too early a run may be: half of that, so that a run's
// own length never pushes the next one to the following tick.
struct JobTick {
  const char* calendar;  // as OnCalendar= takes it
  const char* accuracy;  // as AccuracySec= takes it
  std::chrono::seconds slack;
};

// An hour for intervals of days, less for those of hours and minutes.
JobTick tickOf(std::chrono::seconds interval);

struct JobTools {
  std::string isDue;  // the program that decides whether a run is due
  std::string stamp;  // the file whose date is that of the last run
};

std::string serviceUnit(const Job& job, const JobTools& tools);
std::string timerUnit(const Job& job);

// The text as one word of a command line in a unit file.
std::string unitWord(std::string_view text);

}  // namespace vantory
