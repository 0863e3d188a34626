// Keeps the panes' view of what is on disk up to date, beside the window's own work.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "backups/Survey.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

// One for the process. Main thread.
class Surveyor {
 public:
  // Posted, on the main thread, when there is a new survey.
  static constexpr const char* kRefresh = "VantorySurveyRefresh";

  static Surveyor& shared();

  // From now on a survey is made whenever the catalog or the library was listed anew or a pane is shown.
  void start();
  // From now on none is.
  void stop();
  // Makes one now: whatever was under way before is given up.
  void renew();
  // The newest that is complete; null before the first.
  const std::shared_ptr<const Survey>& survey() const { return survey_; }

 private:
  void carryOut(const SurveyRequest& request, std::uint64_t number);

  std::shared_ptr<const Survey> survey_;
  std::atomic<std::uint64_t> wanted_ = 0;  // the number of the newest request
  std::vector<NotificationCenter::Observation> observations_;
};

}  // namespace vantory
