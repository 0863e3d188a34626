// Rows of the catalog that also tell what is on disk, and whether a backup has it.
#pragma once

#include <optional>
#include <string>

#include "backups/Survey.h"
#include "backups/ui/CatalogRows.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

class Button;

// Answers the columns "files", "size", "changed" and "kept", and shows them anew after each survey. Main thread. The
// outline outlives it.
class SurveyedRows : public RowsDelegate {
 public:
  // The button, which may be null, is told where it would do nothing.
  explicit SurveyedRows(OutlineView& outline, Button* button = nullptr);

 protected:
  // Of what the row stands for. By default of all its items.
  virtual Standing standingIn(const Survey& survey, const OutlineItemPointer& row) const;

  static bool isSurveyed(const std::string& column);
  // None for a column of the pane's own. Nothing stands in a cell before the first survey.
  std::optional<ObjectValue> surveyedValue(const std::string& column, const OutlineItemPointer& row) const;
  // Whether there is certainly nothing of what the row stands for.
  bool hasNothing(const OutlineItemPointer& row) const;

  // Whether there is anything of the application that the button has to do with. By default of what is ticked of it.
  virtual bool isTickedThere(const Survey& survey, const QWApp& app) const;
  // To be called when ticks have changed.
  void showWhetherThere() const;

 private:
  void showSurvey();

  OutlineView& outline_;
  Button* const button_;
  NotificationCenter::Observation surveyed_;
};

// Whether only what is ticked counts.
enum class Ticks { Heeded, All };

// "The backup will hold 12 items of 3 applications, 8.40 MB.": what one of these applications would. Empty before the
// first survey.
std::string contentsInWords(const AppList& apps, Ticks ticks);

}  // namespace vantory
