// How old the last complete backup is, and whether those that are scheduled happen.
#include "backups/BackupAge.h"

#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

class BackupAgeTest : public BackupsTest {
 protected:
  Timestamp daysAgo(int days) const { return {fakes_.clock.now().seconds - days * 86400, 0}; }
  std::shared_ptr<QWBackup> backup(const std::string& name, int days, bool isAutomatic, bool isComplete = true) const {
    const auto made = std::make_shared<QWBackup>(name, inLibrary(name), daysAgo(days));
    made->setIsAutosave(isAutomatic);
    made->setIsComplete(isComplete);
    return made;
  }
};

TEST_F(BackupAgeTest, CountsWhatIsGood) {
  EXPECT_EQ(ageOf({}).text, "There is no complete backup.");
  EXPECT_EQ(ageOf({backup("old", 9, false), backup("auto", 3, true), backup("torn", 0, false, false)}).text,
            "The last complete backup, \"auto\", is 3 days old.");
  EXPECT_EQ(ageOf({backup("new", 0, false)}).text, "The last complete backup, \"new\", is less than an hour old.");
}

TEST_F(BackupAgeTest, TellsThatScheduledBackupsDoNotHappenAndWhy) {
  auto& settings = QWUserDefaults::standardUserDefaults();
  const BackupList lately = {backup("auto", 5, true)};
  const BackupList longAgo = {backup("auto", 7, true), backup("by hand", 1, false), backup("torn", 0, true, false)};
  EXPECT_EQ(ageOf(longAgo).overdue, std::nullopt) << "nothing is scheduled";
  settings.registerDefaults({{setting::kPeriodicAutosave, 1}, {setting::kAutosaveFrequency, 3}});
  fakes_.jobs.stamp = daysAgo(5);
  EXPECT_EQ(ageOf(lately).overdue, std::nullopt);
  EXPECT_EQ(ageOf({}).overdue, std::nullopt) << "the first is not due yet";
  fakes_.jobs.stamp = daysAgo(7);
  EXPECT_THAT(*ageOf(longAgo).overdue,
              HasSubstr("the last complete one is 7 days old. The schedule has not run since"));
  fakes_.jobs.tries = daysAgo(1);
  EXPECT_THAT(*ageOf(longAgo).overdue, HasSubstr("The last try failed"));
  EXPECT_THAT(*ageOf({}).overdue, HasSubstr("there is no complete one. The last try failed"));
  fakes_.jobs.stamp = daysAgo(1);
  EXPECT_EQ(ageOf(longAgo).overdue, std::nullopt) << "the schedule has just been switched on";
  fakes_.jobs.stamp.reset();
  EXPECT_THAT(*ageOf(longAgo).overdue, HasSubstr("The schedule was not loaded"));
  EXPECT_EQ(ageOf({}).overdue, std::nullopt) << "it begins just now";
}

}  // namespace
}  // namespace vantory::test
