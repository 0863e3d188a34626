// The unit files that make systemd run a job.
#pragma once

#include <string>

#include "platform/JobControl.h"

namespace vantory {

struct JobTools {
  std::string isDue;  // the program that decides whether a run is due
  std::string stamp;  // the file whose date is that of the last run
};

// Tells the run of a job where its stamp is.
inline constexpr const char* kStampVariable = "VANTORY_SCHEDULE_STAMP";

std::string serviceUnit(const Job& job, const JobTools& tools);
std::string timerUnit(const Job& job);

}  // namespace vantory
