// Puts a survey into cells and sentences.
#include "backups/ui/SurveyedRows.h"

#include <algorithm>

#include "backups/QWDataController.h"
#include "backups/ui/Controls.h"
#include "backups/ui/OutlineView.h"
#include "backups/ui/Surveyor.h"
#include "base/Format.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

using Kept = Standing::Kept;

std::string sizeInWords(std::uint64_t bytes) {
  return QWFileManager::formatFileSize(static_cast<double>(bytes));
}

const char* keptInWords(const Standing& standing) {
  switch (standing.kept) {
    case Kept::Nothing:
      break;
    case Kept::NotAtAll:
      return "no";
    case Kept::InPart:
      return "in part";
    case Kept::AsItIs:
      return "yes";
    case Kept::Otherwise:
      return standing.files > 0 ? "changed since" : "removed since";
  }
  return "";
}

// "a, b and c".
std::string enumerated(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i)
    text.append(i == 0 ? "" : i + 1 < words.size() ? ", " : " and ").append(words[i]);
  return text;
}

// Of a home without any of the applications; empty where there is something.
std::string remarkOn(const Survey& survey) {
  const AppList apps = QWDataController::sharedController().appArray();
  if (survey.total().files > 0 || apps.empty()) return "";
  return formatted("Nothing of these applications was found. Vantory looked in %@.", enumerated(foldersLookedAt(apps)));
}

// What of the item a backup gets: nothing, itself, or some of its users.
std::vector<const QWPrefItem*> partsOf(const QWPrefItem& item, Ticks ticks) {
  const auto isMeant = [&](const QWPrefItem& each) { return ticks == Ticks::All || each.selected() == On; };
  std::vector<const QWPrefItem*> parts;
  if (item.users().empty() && isMeant(item)) parts.push_back(&item);
  for (const auto& user : item.users())
    if (isMeant(*user)) parts.push_back(user.get());
  return parts;
}

}  // namespace

SurveyedRows::SurveyedRows(OutlineView& outline, Button* button)
    : outline_(outline),
      button_(button),
      surveyed_(NotificationCenter::shared().observe(Surveyor::kRefresh, [this] { showSurvey(); })) {}

Standing SurveyedRows::standingIn(const Survey& survey, const OutlineItemPointer& row) const {
  if (const auto app = rowAs<QWApp>(row)) return survey.of(*app);
  const auto item = rowAs<QWPrefItem>(row);
  return item ? survey.of(*item) : Standing();
}

bool SurveyedRows::isSurveyed(const std::string& column) {
  return column == "files" || column == "size" || column == "changed" || column == "kept";
}

std::optional<ObjectValue> SurveyedRows::surveyedValue(const std::string& column, const OutlineItemPointer& row) const {
  if (!isSurveyed(column)) return std::nullopt;
  std::optional<ObjectValue> value(std::in_place);
  const auto& survey = Surveyor::shared().survey();
  if (!survey) return value;
  const Standing standing = standingIn(*survey, row);
  if (column == "kept")
    value->emplace<std::string>(keptInWords(standing));
  else if (column == "files")
    value->emplace<std::string>(standing.files > 0 ? formatted("%i", standing.files) : "none");
  else if (column == "size" && standing.files > 0)
    value->emplace<std::string>(sizeInWords(standing.bytes));
  else if (standing.files > 0 && standing.changed)
    value->emplace<Timestamp>(*standing.changed);
  return value;
}

bool SurveyedRows::hasNothing(const OutlineItemPointer& row) const {
  const auto& survey = Surveyor::shared().survey();
  return survey && standingIn(*survey, row).files == 0;
}

// Cell by cell, so that whatever is open or selected stays so.
void SurveyedRows::showSurvey() {
  for (const OutlineItemPointer& row : childrenOfItem(nullptr)) outline_.reloadItem(row, true);
  outline_.setRemark(remarkOn(*Surveyor::shared().survey()));
  showWhetherThere();
}

bool SurveyedRows::isTickedThere(const Survey& survey, const QWApp& app) const {
  return std::ranges::any_of(app.children(),
                             [&](const auto& item) { return survey.of(partsOf(*item, Ticks::Heeded)).files > 0; });
}

void SurveyedRows::showWhetherThere() const {
  const auto& survey = Surveyor::shared().survey();
  if (!button_ || !survey) return;
  const AppList apps = QWDataController::sharedController().appArray();
  const bool isAnyTicked = std::ranges::any_of(apps, [](const auto& app) { return app->selected() != Off; });
  const bool isAnyThere = std::ranges::any_of(apps, [&](const auto& app) { return isTickedThere(*survey, *app); });
  button_->setRemark(isAnyTicked && !isAnyThere ? "Nothing of what is ticked is on disk." : "");
}

std::string contentsInWords(const AppList& apps, Ticks ticks) {
  const auto& survey = Surveyor::shared().survey();
  if (!survey) return "";
  std::size_t itemCount = 0;
  std::size_t appCount = 0;
  std::vector<const QWPrefItem*> all;
  for (const auto& app : apps) {
    const std::size_t before = itemCount;
    for (const auto& item : app->children()) {
      const auto parts = partsOf(*item, ticks);
      itemCount += survey->of(parts).files > 0;
      all.insert(all.end(), parts.begin(), parts.end());
    }
    appCount += itemCount > before;
  }
  if (itemCount == 0) return "None of it is there: no backup would come of it.";
  return formatted("The backup will hold %@ of %@, %@.", counted(itemCount, "item"), counted(appCount, "application"),
                   sizeInWords(survey->of(all).bytes));
}

}  // namespace vantory
