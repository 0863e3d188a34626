#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "base/Format.h"
#include "base/PropertyListBytes.h"
#include "base/Text.h"
#include "catalog/BuiltInCatalog.h"
#include "catalog/definitions/DefinitionReader.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/MainThread.h"
#include "tasks/KeyList.h"
#include "tasks/Program.h"
#include "tasks/Question.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::StartsWith;
namespace fs = std::filesystem;
using Names = std::set<std::string>;
using Note = FakeNotifications::Note;

// Runs command lines in this process, for a home with one file of each of a few items.
class CommandLineTest : public ::testing::Test {
 protected:
  static inline const std::vector<std::pair<std::string, std::string>> kFiles = {
      {"boris", "Library/Preferences/com.borisfx.Title 3D"},
      {"fcp", "Library/Preferences/com.apple.FinalCutPro.plist"},
      {"motion", "Library/Preferences/com.apple.motion.plist"},
      {"plugins", "Library/Preferences/Final Cut Pro User Data/Plugins"},
      {"setting", "Library/Application Support/Compressor/a.setting"}};
  static inline const Names kAll = {"boris", "fcp", "motion", "plugins", "setting"};

  CommandLineTest() {
    fill();
    fakes_.taskClient.services = {"QWProClientCallback"};
    fakes_.taskClient.understood = {"postErrorString:userInfo:"};
  }

  void fill(const std::optional<std::string>& content = {}) {
    for (const auto& [name, path] : kFiles) writeFile(home_ / path, content.value_or(name));
  }
  // The names whose files are there with their first content.
  static Names intactIn(const std::string& folder) {
    Names names;
    for (const auto& [name, path] : kFiles)
      if (exists(folder + "/" + path) && readFile(folder + "/" + path) == name) names.insert(name);
    return names;
  }
  Names intact() const { return intactIn(home_.path()); }
  Names heldBy(const std::string& backup) const { return intactIn(backup + "/Users/user"); }
  std::string library(const std::string& name = "") const {
    return home_ / ("Library/Application Support/Quarrywell/Vantory/Backups" + name);
  }
  void set(const std::string& key, PropertyList value) {
    const Runtime runtime(fakes_.platform);
    EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject(key, std::move(value)));
  }

  // The Trash has the machine's clock.
  void setClockRight() { fakes_.clock.set({std::time(nullptr), 0}); }

  // The words of the line, and a path or name that may hold spaces.
  int run(const std::string& line, const std::string& operand = "") {
    std::vector<std::string> arguments = split("vantory " + line, ' ');
    if (!operand.empty()) arguments.push_back(operand);
    fakes_.system.argumentList = std::move(arguments);
    output_.str("");
    errors_.str("");
    Runtime runtime(fakes_.platform);
    runtime.shared<MainThread>();
    runtime.isHomeNamed = isHomeNamed_;
    return runProgram(output_, errors_, [this](const std::string& program, const auto& list) {
      window_ = list;
      window_.insert(window_.begin(), program);
      return windowStatus_;
    });
  }
  std::string log() const { return readFile(home_ / "Library/Logs/Quarrywell/Vantory.task.1.log"); }
  std::vector<std::string> sentErrors() const {
    std::vector<std::string> texts;
    for (const auto& message : fakes_.taskClient.sent) texts.push_back(message.arguments.at(0));
    return texts;
  }

  // Of everything in the home and the machine's folders: the inode, and when anything of it changed.
  using Snapshot = std::map<std::string, std::pair<ino_t, std::int64_t>>;
  Snapshot snapshot() const {
    Snapshot items;
    for (const std::string& root : {home_.path(), machine_.path()})
      for (const auto& entry : fs::recursive_directory_iterator(root)) {
        struct stat status {};
        EXPECT_EQ(lstat(entry.path().c_str(), &status), 0);
        items[entry.path()] = {status.st_ino, status.st_ctim.tv_sec * 1'000'000'000 + status.st_ctim.tv_nsec};
      }
    return items;
  }
  // What the table of a preview says is made, trashed or moved; of a folder and what is in it, the folder.
  Names foreseen() const {
    Names paths;
    std::istringstream lines(output_.str());
    for (std::string line; std::getline(lines, line);)
      if (line.find(" /") != std::string::npos && !line.starts_with("copy ")) paths.insert(line.substr(line.find('/')));
    return withoutContents(paths);
  }
  // What appeared, went or became another item, but for the task's own notes and the Trash.
  Names changedSince(const Snapshot& before) const {
    const Snapshot after = snapshot();
    Names paths;
    for (const auto& [one, other] : {std::pair(&before, &after), {&after, &before}})
      for (const auto& [path, item] : *one)
        if (!other->contains(path) || other->at(path).first != item.first) paths.insert(path);
    std::erase_if(paths, [](const std::string& path) {
      return path.find("/Logs") != path.npos || path.find("/Receipts") != path.npos ||
             path.find("/.local") != path.npos || path.ends_with("Vantory.plist");
    });
    return withoutContents(paths);
  }
  static Names withoutContents(const Names& paths) {
    Names kept;
    for (const std::string& path : paths)
      if (!paths.contains(fs::path(path).parent_path()) && (kept.empty() || !path.starts_with(*kept.rbegin() + "/")))
        kept.insert(path);
    return kept;
  }

  ScratchFolder home_;
  ScratchFolder machine_;
  FakeLocks metadata_;
  LockableFiles files_{metadata_};
  FakePlatform fakes_{files_, metadata_, machine_.path(), home_.path()};
  std::ostringstream output_;
  std::ostringstream errors_;
  Status windowStatus_;
  bool isHomeNamed_ = false;
  std::vector<std::string> window_;
};

TEST_F(CommandLineTest, ChoosesTheFirstCommandOfTheTableGivenAnywhere) {
  const auto chosen = [](const std::vector<std::string>& arguments) {
    const auto choice = chooseCommand(arguments);
    return choice ? std::string(choice->command->option) + " " + std::to_string(choice->position) : "";
  };
  EXPECT_EQ(chosen({"vantory", "x", "-trash", "-list"}), "-list 3");
  EXPECT_EQ(chosen({"vantory", "-trash", "-autobackup"}), "-autobackup 2");
  EXPECT_EQ(chosen({"vantory", "-unlock", "-lock", "-lock"}), "-lock 2");
  EXPECT_EQ(chosen({"vantory", "-Trash", "--list", "-psn_0_1", "-task"}), "");
}

TEST_F(CommandLineTest, WithoutATaskBecomesTheWindow) {
  EXPECT_EQ(run("/x/My.vnt -psn"), 0);
  EXPECT_THAT(window_, ElementsAre("/opt/vantory/vantory-window", "vantory", "/x/My.vnt", "-psn"));
  windowStatus_ = Error{std::errc::no_such_file_or_directory, "gone"};
  EXPECT_EQ(run("x"), 1);
  EXPECT_THAT(errors_.str(), StartsWith("Vantory: No window is installed."));
  EXPECT_FALSE(exists(home_ / "Library/Logs"));
}

TEST_F(CommandLineTest, TrashTakesTheItemsThatItsOperandNames) {
  for (const auto& [line, left] :
       {std::pair<const char*, Names>{"-trash fcpPrefs,,motionPrefs", {"boris", "plugins", "setting"}},
        {"-trash fcp", {"motion", "plugins", "setting"}},
        {"-trash fcp,motion,borisPrefs", kAll},
        {"-trash", {"plugins", "setting"}},
        {"-trash -allfiles", {}}}) {
    fill();
    EXPECT_EQ(run(line), 0);
    EXPECT_EQ(intact(), left) << line;
  }
}

TEST_F(CommandLineTest, UndoTakesTheNewestTaskBack) {
  setClockRight();
  EXPECT_EQ(run("--undo"), 1);
  EXPECT_EQ(run("--strict --undo"), 4) << "there is nothing";
  EXPECT_EQ(run("-backup Set"), 0);
  fill("newer");
  fakes_.system.directory = library();
  for (const std::string task : {"-trash -allfiles", "-restore Set.vnt", "-lock fcpPrefs"}) {
    EXPECT_EQ(run(task), 0);
    EXPECT_EQ(run("--preview undo"), 0);
    EXPECT_EQ(run("--strict --undo"), 0) << task;
    for (const auto& [name, path] : kFiles) EXPECT_EQ(readFile(home_ / path), "newer") << task << name;
    EXPECT_THAT(metadata_.locked, IsEmpty());
  }
  EXPECT_EQ(run("--strict --undo"), 0);
  EXPECT_EQ(heldBy(home_ / ".local/share/Trash/files/Set.vnt"), kAll);
  EXPECT_EQ(run("--undo"), 1);
  EXPECT_EQ(run("--undo 2026"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), StartsWith("There is no receipt \"2026\""));
}

TEST_F(CommandLineTest, UndoOfTheLibrarysTasksLeavesNoneOut) {
  setClockRight();
  for (const char* line : {"-backup A", "-backup B", "--default A", "--remove A", "--default B", "--undo", "--undo"})
    EXPECT_EQ(run(line), 0) << line;
  EXPECT_EQ(heldBy(library("/A.vnt")), kAll);
  EXPECT_EQ(run("--list-backups"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("default"));

  // A backup that would hold nothing replaces none, and leaves nothing to be taken back.
  for (const char* line : {"-trash -allfiles", "-backup A"}) EXPECT_EQ(run(line), 0);
  EXPECT_EQ(heldBy(library("/A.vnt")), kAll);
  EXPECT_THAT(intact(), IsEmpty());
  EXPECT_EQ(run("--undo"), 0);
  EXPECT_EQ(intact(), kAll);

  // A restore without the copies is not whole.
  fs::remove_all(library("/A.vnt/Users"));
  EXPECT_EQ(run("--strict -restore", library("/A.vnt")), 3);
  EXPECT_THAT(log(), HasSubstr(library("/A.vnt") + " holds no file of "));
}

TEST_F(CommandLineTest, UndoLeavesWhatHasChangedSince) {
  setClockRight();
  EXPECT_EQ(run("-backup Set"), 0);
  fill("newer");
  fakes_.system.directory = library();
  EXPECT_EQ(run("-restore Set.vnt"), 0);
  writeFile(home_ / kFiles[1].second, "changed");
  fs::remove_all(home_ / ".local/share/Trash/files/com.apple.motion.plist");
  EXPECT_EQ(run("--strict --undo"), 3);
  EXPECT_EQ(readFile(home_ / kFiles[1].second), "changed");
  EXPECT_EQ(readFile(home_ / kFiles[0].second), "newer");
  EXPECT_FALSE(exists(home_ / kFiles[2].second));
  EXPECT_THAT(fakes_.systemLog.messages(),
              Contains(home_ / kFiles[1].second + " has changed since, and stays as it is."));
  EXPECT_THAT(fakes_.systemLog.messages(), Contains(home_ / kFiles[2].second + " is no longer in the Trash."));

  // An undo is taken back by its name, which the person at a terminal is told.
  const auto newest = [&] {
    EXPECT_EQ(run("--receipts --print0"), 0);
    return std::string(output_.str().c_str());
  };
  fakes_.system.isInTerminal = true;
  EXPECT_EQ(run("--undo " + newest()), 0);
  EXPECT_EQ(readFile(home_ / kFiles[0].second), "boris");
  const std::string sentence = errors_.str();
  EXPECT_THAT(sentence, HasSubstr(" back: 4 files. Undo: vantory --undo " + newest() + "\n"));

  // What stayed is taken back when it can be. One that cannot be read is not said to be missing.
  EXPECT_EQ(run("-trash fcpPrefs"), 0);
  const std::string trashed = newest();
  const std::string path = home_ / kFiles[1].second;
  writeFile(path, "made since");
  EXPECT_EQ(run("--strict --undo"), 3);
  fs::remove(path);
  EXPECT_EQ(run("--strict --undo " + trashed), 0);
  EXPECT_EQ(readFile(path), "changed");
  EXPECT_EQ(run("--undo " + trashed), 1);
  const std::string receipts = home_ / "Library/Application Support/Quarrywell/Vantory/Receipts";
  writeFile(receipts + "/" + trashed + ".plist", "spoilt");
  EXPECT_EQ(run("--undo " + trashed), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), testing::EndsWith("is damaged."));
  EXPECT_EQ(run("--receipts"), 0);
  EXPECT_THAT(errors_.str(), HasSubstr(trashed + ".plist is damaged. "));

  const auto other = files_.holdFolder(home_ / "Library/Application Support/Quarrywell/Vantory", {});
  EXPECT_EQ(run("--undo"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), StartsWith("Another task is being taken back"));

  fs::remove_all(receipts);
  fs::create_symlink("/nowhere", receipts);
  EXPECT_EQ(run("--receipts"), 1);
  EXPECT_THAT(errors_.str(), HasSubstr("Receipts is no folder"));
}

TEST_F(CommandLineTest, LockAndUnlockTakeEverythingWithoutAnOperand) {
  for (const auto& [line, expected] : {std::pair<const char*, Names>{"-lock -allprefs", {"boris", "fcp", "motion"}},
                                       {"-unlock x -lock", kAll},
                                       {"-unlock fcpPrefs -task", {"boris", "motion", "plugins", "setting"}}}) {
    EXPECT_EQ(run(line), 0);
    Names locked;
    for (const auto& [name, path] : kFiles)
      if (metadata_.locked.contains(home_ / path)) locked.insert(name);
    EXPECT_EQ(locked, expected) << line;
  }
  EXPECT_EQ(fakes_.notifications.posted.back(), (Note{"Vantory", "Unlock complete"}));
}

TEST_F(CommandLineTest, BackupTakesItsKeysByPositionAndTrashesItsNamesake) {
  EXPECT_EQ(run("-backup", " Mine/:"), 0);
  EXPECT_EQ(heldBy(library("/Mine.vnt")), kAll);
  EXPECT_EQ(run("-backup Mine fcpPrefs motionPrefs -task"), 0);
  EXPECT_THAT(heldBy(library("/Mine.vnt")), ElementsAre("motion"));
  EXPECT_EQ(heldBy(home_ / ".local/share/Trash/files/Mine.vnt"), kAll);
  EXPECT_EQ(intact(), kAll);
}

TEST_F(CommandLineTest, EachFailureIsToldWhereItBelongs) {
  for (const char* line : {"-backup", "-restore"}) EXPECT_EQ(run(line), 1);
  constexpr const char* kTooFew = "Invalid number of arguments";
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre(kTooFew, "Usage: vantory -backup NAME [KEYS]", kTooFew,
                                                       "Usage: vantory -restore PATH [KEYS]"));
  EXPECT_THAT(sentErrors(), IsEmpty());

  EXPECT_EQ(run("-backup /: -hotkey"), 1);
  EXPECT_THAT(sentErrors(), ElementsAre("Vantory: Unable to backup - invalid filename."));
  EXPECT_EQ(fakes_.systemLog.messages().back(), "Invalid filename");
  EXPECT_EQ(fakes_.notifications.posted.back(), (Note{"Backup failed", "Invalid filename"}));

  EXPECT_EQ(run("-backup None noSuchKey"), 0);
  EXPECT_FALSE(exists(library("/None.vnt")));
  EXPECT_EQ(sentErrors().back(), "Vantory: Backup not created - no files to copy.");
  EXPECT_THAT(log(), HasSubstr(" - Vantory: Backup not created - no files to copy.\n"));
  EXPECT_THAT(fakes_.systemLog.messages(), Contains("Backup not created - no files to copy"));

  for (const char* line : {"-restore None", "-restore "}) EXPECT_EQ(run(line), 1);
  EXPECT_EQ(sentErrors().back(), "Vantory: Unable to restore backup - backup does not exist.");
  EXPECT_THAT(log(), HasSubstr(" - Unable to restore backup - backup does not exist\n"));
  EXPECT_THAT(fakes_.systemLog.messages(),
              Contains("There is no backup \"None\". \"vantory --list-backups\" lists them."));

  writeFile(library("/Torn.vnt/Settings.plist"), "<plist><dict>");
  EXPECT_EQ(run("--list-backups"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("manual, incomplete"));
  const std::string nothing = "Nothing was restored: the Settings.plist of " + library("/Torn.vnt") +
                              " is missing, damaged or names no known item.";
  EXPECT_EQ(run("-restore", library("/Torn.vnt")), 0);
  EXPECT_THAT(log(), HasSubstr(nothing));
  EXPECT_THAT(fakes_.systemLog.messages(), Contains(nothing));
  EXPECT_EQ(run("-restore Torn"), 1);  // which takes a path
  EXPECT_THAT(fakes_.systemLog.messages().back(), EndsWith("vantory -restore \"" + library("/Torn.vnt") + "\""));
  set("defaultBackup", "Torn.vnt");
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_EQ(fakes_.systemLog.messages().back(), "The default backup \"Torn\" is incomplete.");
  fs::remove(library("/Torn.vnt/Settings.plist"));
  fs::create_directory(library("/Torn.vnt/Settings.plist"));  // as unreadable as for want of rights
  EXPECT_EQ(run("--default Torn"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), StartsWith("\"Torn\" cannot be read: " + library("/Torn.vnt")));
  EXPECT_EQ(run("--undo", "\x1b[31m"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), HasSubstr("\"\\x1b[31m\""));
  EXPECT_EQ(run("--verify", library()), 1);
  EXPECT_THAT(errors_.str(), HasSubstr("There is no backup")) << "it holds some, and might be the whole disk";
}

TEST_F(CommandLineTest, NamesWhatItDidNotUnderstand) {
  const auto told = [this](const std::string& line) {
    const std::size_t before = fakes_.systemLog.messages().size();
    EXPECT_EQ(run(line), 0) << line;
    const auto messages = fakes_.systemLog.messages();
    return std::vector<std::string>(messages.begin() + static_cast<std::ptrdiff_t>(before), messages.end());
  };
  const std::string separated = " Names with blanks need quotes; keys are separated by commas.";
  fakes_.system.directory = library();
  EXPECT_THAT(told("-unlock fcpPref,,nonsense,fcpPref"),
              ElementsAre("Unknown item \"fcpPref\": did you mean \"fcpPrefs\"?",
                          "Unknown item \"nonsense\". \"vantory --list-items\" lists the keys."));
  EXPECT_THAT(told("word -unlock fcpPrefs motionPrefs -task"),
              ElementsAre("\"word\" was not used.", "\"motionPrefs\" was not used." + separated));
  EXPECT_THAT(told("-backup a/b:c fcpPrefs"), ElementsAre("\"a/b:c\" is kept as \"abc\"."));
  EXPECT_THAT(told("-backup My Backup fcpPrefs"), ElementsAre("\"Backup\" was not used." + separated));
  EXPECT_THAT(told("-restore My.vnt fcpPrefs,motionPrefs"), ElementsAre("The backup holds no item \"motionPrefs\"."));
  EXPECT_THAT(told("-restore My.vnt"), IsEmpty());
  EXPECT_THAT(told("-restore My.vnt --json"), Contains(HasSubstr("\"--json\" was taken for an operand")));
}

TEST_F(CommandLineTest, TheStrictExitCodeTellsMore) {
  EXPECT_EQ(run("--strict -backup Set"), 0);
  fakes_.system.directory = library();
  EXPECT_EQ(run("--strict -restore /nowhere"), 1);
  fakes_.workspace.running = {"com.apple.motion"};
  EXPECT_EQ(run("--strict -restore Set.vnt"), 3);
  EXPECT_EQ(run("-restore Set.vnt"), 0);
  EXPECT_EQ(run("--strict -unlock fcpPrefs,fcpPref"), 4);
  EXPECT_EQ(run("--strict -unlock fcpPrefs"), 0);  // it was so already
  EXPECT_EQ(run("--strict -trash fcpPrefs"), 0);
  EXPECT_EQ(run("--strict -trash fcpPrefs"), 4);
  EXPECT_EQ(fakes_.systemLog.messages().back(),
            "There was nothing to trash in " + home_.path() + " and the folders that all users share.");
  EXPECT_EQ(run("--strict --json -trash fcpPrefs"), 4);
  EXPECT_THAT(output_.str(), HasSubstr("\"There was nothing to trash in "));

  // A link is told: what it leads to is not in the backup.
  const std::string path = home_ / kFiles[1].second;
  writeFile(home_ / "dotfiles/fcp", "linked");
  fs::create_symlink(home_ / "dotfiles/fcp", path);
  EXPECT_EQ(run("--strict --json -backup Set fcpPrefs,motionPrefs"), 3);
  const std::string left = path + " is a symbolic link to " + home_ / "dotfiles/fcp" + " and was left out.";
  EXPECT_THAT(output_.str(), HasSubstr(left));
  EXPECT_THAT(fakes_.systemLog.messages(), IsSupersetOf({HasSubstr(left), HasSubstr("in the place of the link")}));
  metadata_.lockAnswer = Error{std::errc::too_many_symbolic_link_levels, path + ": as the system says it"};
  EXPECT_EQ(run("--strict -lock fcpPrefs"), 3);
  EXPECT_THAT(log(), HasSubstr(left));
}

TEST_F(CommandLineTest, ThePersonIsToldTrueNumbers) {
  fakes_.system.isInTerminal = true;
  EXPECT_EQ(run("-lock fcpPrefs,motionPrefs"), 0);
  EXPECT_THAT(errors_.str(), HasSubstr("Locked 2 files of 2 items."));
  EXPECT_EQ(run("-lock fcpPrefs,motionPrefs"), 0);
  EXPECT_THAT(errors_.str(), HasSubstr("2 files of 2 items are locked already."));
  EXPECT_EQ(run("-unlock fcpPrefs,motionPrefs"), 0);
  fs::remove(home_ / kFiles[3].second);
  for (const char* name : {"one", "two"}) writeFile(home_ / kFiles[3].second + "/" + name, "x");
  EXPECT_EQ(run("-trash fcpPrefs,fcpPlugins"), 0);
  EXPECT_THAT(errors_.str(), HasSubstr("Moved 1 file and 1 folder of 2 items to the Trash."));
}

TEST_F(CommandLineTest, TheLibraryIsManagedByCommand) {
  ASSERT_EQ(run("-backup Old"), 0);
  ASSERT_EQ(run("-autobackup"), 0);
  EXPECT_EQ(run("--default Old"), 0);
  EXPECT_EQ(run("--strict --default none"), 0);
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_EQ(run("--strict --undo"), 0) << "it is the default again";
  fill("new");
  EXPECT_EQ(run("-restoredefault"), 0);
  EXPECT_EQ(intact(), kAll);

  EXPECT_EQ(run("--preview rename Old New"), 0);
  EXPECT_EQ(run("--rename Old a/New"), 0);
  EXPECT_THAT(fakes_.systemLog.messages(), Contains("\"a/New\" is kept as \"aNew\"."));
  EXPECT_TRUE(exists(library("/aNew.vnt")));

  fs::remove(home_ / kFiles[1].second);
  writeFile(home_ / kFiles[2].second, "newer");
  EXPECT_EQ(run("--preview update aNew"), 0);
  EXPECT_THAT(foreseen(), Contains(library("/aNew.vnt/Users/user/" + kFiles[2].second)));
  EXPECT_EQ(run("--preview rename aNew " + std::string(252, 'x')), 0);
  EXPECT_THAT(output_.str(), HasSubstr("(File name too long)"));
  EXPECT_EQ(run("--strict --update aNew"), 0);
  EXPECT_EQ(heldBy(library("/aNew.vnt")), (Names{"boris", "fcp", "plugins", "setting"}));

  for (const char* line :
       {"--prune 0", "--prune x", "--prune 1 --preview", "--remove", "--remove Nothing", "--remove anew",
        "--remove aNew --help", "--rename aNew", "--rename aNew -task", "--rename aNew /", "--rename aNew Auto Backup",
        "--rename aNew none", "--rename aNew ..", "--undo --json", "--default /nowhere/aNew.vnt"})
    EXPECT_EQ(run(line), 1) << line;
  EXPECT_THAT(fakes_.systemLog.messages(), Contains("There is no backup \"anew\": did you mean \"aNew\"?"));
  EXPECT_TRUE(exists(library("/aNew.vnt")));
  fs::copy(library("/aNew.vnt"), library("/Autosaves/aNew.vnt"), fs::copy_options::recursive);
  EXPECT_EQ(run("--remove aNew"), 1) << "there are two";
  fakes_.system.directory = library();
  EXPECT_EQ(run("--default ./aNew.vnt"), 1) << "the default is known by its folder's name";
  fs::rename(library("/aNew.vnt"), library("/aNew.vnt2"));
  EXPECT_EQ(run("--remove ./aNew.vnt2"), 0) << "a listing gives the older extension up";
  EXPECT_FALSE(exists(library("/aNew.vnt")));
  EXPECT_TRUE(exists(library("/Autosaves/aNew.vnt")));
  EXPECT_EQ(run("--prune"), 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(library("/Autosaves")), {}), 2) << "nobody has set a number";
  EXPECT_EQ(run("--strict --prune 1"), 0);
  // Neither the one that is left nor an earlier task is taken back in place of those that are gone.
  EXPECT_EQ(run("--undo"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), HasSubstr("removed for good and cannot be taken back. The newest"));
  EXPECT_EQ(std::distance(fs::directory_iterator(library("/Autosaves")), {}), 1);
  EXPECT_EQ(run("-backup Nothing nothing"), 0);
  EXPECT_EQ(run("--receipts"), 0);
  EXPECT_THAT(output_.str(), AllOf(HasSubstr("done    prune 1"), Not(HasSubstr("backup Nothing"))));
  EXPECT_EQ(run("--undo " + output_.str().substr(output_.str().find("\n20") + 1, 19)), 1) << "by its name too";

  // The default is known by its name, which is told of whoever takes that over.
  set("defaultBackup", "Gone.vnt");
  const auto isTold = [&](const std::string& line) {
    const std::size_t before = fakes_.systemLog.messages().size();
    EXPECT_EQ(run("--strict " + line), 0) << line;
    return fakes_.systemLog.messages().size() > before &&
           fakes_.systemLog.messages()[before].starts_with("\"Gone\" is the default backup now");
  };
  EXPECT_TRUE(isTold("-backup Gone"));
  EXPECT_FALSE(isTold("-backup Gone")) << "it was the default";
  for (const char* line : {"--remove Gone", "-backup Other"}) EXPECT_FALSE(isTold(line));
  EXPECT_TRUE(isTold("--rename Other Gone"));
}

TEST_F(CommandLineTest, AReportInJsonTellsOfEachFile) {
  fakes_.workspace.running = {"com.apple.motion"};
  ASSERT_EQ(run("-backup Set"), 0);
  fakes_.system.directory = library();
  EXPECT_EQ(run("--json -restore Set.vnt fcpPrefs,motionPrefs,none"), 0);
  for (const std::string& part :
       {std::string("\"task\": \"restore\""), std::string("\"done\": 2"), "\"path\": \"" + home_ / kFiles[1].second,
        std::string("\"place\": \""), std::string("Motion is running and was skipped."),
        std::string("\"operand\": \"none\""), std::string("\"exitCode\": 0"), std::string("\"log\": \"")})
    EXPECT_THAT(output_.str(), HasSubstr(part));
  EXPECT_EQ(run("--preview restore Set.vnt motionPrefs,none --json"), 0);
  EXPECT_THAT(output_.str(),
              AllOf(HasSubstr("Motion is running and was skipped."), HasSubstr("\"operand\": \"none\"")));
  EXPECT_EQ(run("--json -list"), 1);
  makeFolders(home_ / "bert");
  for (const auto& [home, told] : {std::pair("bert", "--home \\\"" + home_ / "bert" + "\\\" before the task."),
                                   {"gone", "where there is no folder."}}) {
    fakes_.users.disregarded = home_ / home;
    EXPECT_EQ(run("--json -unlock fcp"), 0);
    EXPECT_THAT(output_.str(), AllOf(HasSubstr("although HOME is " + home_ / home), HasSubstr(told)));
  }
}

TEST_F(CommandLineTest, ATaskThatIsMistypedIsNamed) {
  const std::pair<const char*, const char*> kMistyped[] = {
      {"trash fcp", "\"vantory -trash fcp\""}, {"--backup x", "\"vantory -backup x\""},
      {"-restor x", "\"vantory -restore x\""}, {"--list-item", "\"vantory --list-items\""},
      {"-foo", "no option \"-foo\"."},         {"--strict", "a task is missing"}};
  for (const auto& [line, meant] : kMistyped) {
    EXPECT_EQ(run(line), 1) << line;
    EXPECT_THAT(errors_.str(), HasSubstr(meant));
  }
  EXPECT_THAT(window_, IsEmpty());
  fakes_.system.directory = home_.path();
  writeFile(home_ / "trash", "a project of that name");
  for (const char* line : {"trash fcp", "Missing.fcp", "-session 1_2", "-style=fusion"}) {
    EXPECT_EQ(run(line), 0) << line;
    EXPECT_THAT(window_, Contains(std::string(line).substr(0, std::string(line).find(' '))));
  }
}

TEST_F(CommandLineTest, RestoreTakesAPathAndTheListedItems) {
  ASSERT_EQ(run("-backup Set"), 0);
  fill("new");
  fakes_.system.directory = library("/Autosaves");
  EXPECT_EQ(run("-restore ../Set.vnt/ fcpPrefs,fcpPlugins"), 0);
  EXPECT_THAT(intact(), ElementsAre("fcp", "plugins"));
}

TEST_F(CommandLineTest, InANamedHomeNothingTakesTheNameOfABackup) {
  ASSERT_EQ(run("-backup Set"), 0);
  fill("new");
  fakes_.system.directory = home_ / "planted";
  writeFile(home_ / "planted/Set.vnt/Settings.plist", "<plist><dict/></plist>");
  writeFile(home_ / "planted/Other.vnt/Settings.plist", "<plist><dict/></plist>");
  writeFile(home_ / "planted/Autosaves/Other.vnt/Settings.plist", "<plist><dict/></plist>");
  isHomeNamed_ = true;
  EXPECT_EQ(run("-restore Set.vnt"), 0);
  EXPECT_EQ(intact(), kAll);
  EXPECT_EQ(run("-restore Autosaves/Other.vnt"), 1);
  EXPECT_EQ(run("-restore Other.vnt"), 1);
  EXPECT_THAT(fakes_.systemLog.messages(), Contains(HasSubstr("\"./NAME\" is a path")));
  EXPECT_EQ(run("-restore ./Other.vnt"), 0);
  makeFolders(library("/Autosaves"));
  fs::copy(library("/Set.vnt"), library("/Autosaves/Set.vnt"), fs::copy_options::recursive);
  EXPECT_EQ(run("-restore Set"), 1);
  EXPECT_THAT(fakes_.systemLog.messages(),
              Contains(EndsWith("vantory --home \"" + home_.path() + "\" -restore \"" + library("/Set.vnt") + "\"")));
}

TEST_F(CommandLineTest, TheDefaultBackupIsRestoredOnRequestOnly) {
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre("Unable to restore backup - no default backup set."));
  EXPECT_THAT(sentErrors(), IsEmpty());
  set("defaultBackup", "Gone.vnt");
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(),
              StartsWith("The library of backups, " + library() + ", is not there"));
  makeFolders(library());
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), StartsWith("The default backup, \"Gone\", is not in the library"));
  fs::remove(library());
  fs::create_symlink(library(), library());
  EXPECT_EQ(run("-restoredefault"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), HasSubstr("Too many levels of symbolic links"));
  EXPECT_NE(run("--strict -list"), 0);
  EXPECT_EQ(run("-list"), 0);
  fs::remove(library());

  ASSERT_EQ(run("-backup Good"), 0);
  set("defaultBackup", "Good.vnt");
  set("autoRestoreDefault", 1);
  EXPECT_EQ(run("-trash"), 0);
  EXPECT_THAT(log(), HasSubstr("Finding default backup to restore...\n"));
  EXPECT_THAT(intact(), ElementsAre("plugins", "setting"));  // the task has loaded no library to find one in
  EXPECT_EQ(run("-restoredefault -task"), 0);
  EXPECT_EQ(intact(), kAll);
  EXPECT_EQ(fakes_.notifications.posted.back(), (Note{"Default backup restored", "Good"}));
}

TEST_F(CommandLineTest, AutomaticBackupsAreNeitherListedNorPruned) {
  set("maxAutoBackups", 1);
  for (int time = 0; time < 2; ++time) {
    ASSERT_EQ(run("-autobackup"), 0);
    fakes_.clock.advance(std::chrono::seconds(1));
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(library("/Autosaves")), {}), 2);
  EXPECT_EQ(run("-list"), 0);
  EXPECT_TRUE(parsePropertyList(output_.str())->asDictionary()->empty());
}

TEST_F(CommandLineTest, TheScheduleHearsWhetherAnAutomaticBackupWasMade) {
  writeFile(library("/Autosaves"), "in the way");
  EXPECT_EQ(run("-autobackup"), 0);
  EXPECT_EQ(fakes_.jobs.goodRuns, 0);
  fs::remove_all(library());
  EXPECT_EQ(run("-autobackup"), 0);
  EXPECT_EQ(fakes_.jobs.goodRuns, 1);
}

TEST_F(CommandLineTest, DoesNoTaskForWhoeverMeantSomethingElse) {
  const auto before = snapshot();
  for (const char* line : {"--help -trash", "-h -trash", "--version -trash", "-trash --help", "x -trash -h"})
    EXPECT_EQ(run(line), 0) << line;
  EXPECT_THAT(output_.str(), StartsWith("Usage: "));
  for (const char* line :
       {"--home /home/other -trash", "x --dry-run -backup Set", "-- -autobackup", "-backup --json"}) {
    EXPECT_EQ(run(line), 1) << line;
    EXPECT_THAT(errors_.str(), HasSubstr("nothing was done"));
  }
  EXPECT_EQ(snapshot(), before);
  EXPECT_EQ(run("-psn_0_1 x -trash fcpPrefs --later"), 0);
  EXPECT_FALSE(intact().contains("fcp"));
}

TEST_F(CommandLineTest, TouchesNothingWithoutAUsableHome) {
  fs::remove_all(home_ / "Library");
  fakes_.users.process->home = home_ / "a*b";
  EXPECT_EQ(run("-autobackup"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(), StartsWith("The home folder "));
  EXPECT_TRUE(fs::is_empty(home_.path()));
  fakes_.users.process->home = home_ / "none";
  EXPECT_EQ(run("--verify"), 0);
  EXPECT_THAT(errors_.str(), HasSubstr("There is no folder " + home_ / "none"));
}

TEST_F(CommandLineTest, QuestionsTouchNothing) {
  ASSERT_EQ(run("-backup Set"), 0);
  for (const char* name : {"/Older.vnt2", "/Auto Backup stray.vnt"})
    fs::copy(library("/Set.vnt"), library(name), fs::copy_options::recursive);
  writeFile(home_ / "Library/Preferences/com.quarrywell.Vantory.plist", "damaged");
  fakes_.workspace.running = {"com.apple.motion"};
  const auto before = snapshot();
  for (const bool superuser : {false, true}) {
    fakes_.users.superuser = superuser;
    for (const TaskCommand& command : commandTable()) {
      const std::string task(command.name());
      for (const std::string& operand : {library("/Set.vnt"), std::string("Set"), std::string("-allfiles")}) {
        const int exitCode = run("--preview " + task, operand);
        if (command.option.starts_with("--")) continue;  // few of the operands are theirs
        EXPECT_EQ(exitCode, (task == "restore" && operand != library("/Set.vnt")) || task == "restoredefault");
      }
    }
    EXPECT_EQ(run("--list-items --json"), 0);
    EXPECT_EQ(run("--list-backups --print0"), 0);
    const std::string paths = output_.str();  // as they lie there, untidied
    EXPECT_EQ(paths,
              library("/Older.vnt2") + '\0' + library("/Set.vnt") + '\0' + library("/Auto Backup stray.vnt") + '\0');
  }
  EXPECT_EQ(snapshot(), before);
  EXPECT_THAT(metadata_.locked, IsEmpty());
  EXPECT_THAT(fakes_.notifications.posted, IsEmpty());
  EXPECT_THAT(fakes_.taskClient.sent, IsEmpty());
  EXPECT_EQ(fakes_.privileged.requests + fakes_.privileged.calls.size() + fakes_.workspace.quitRequests.size(), 0);
}

TEST_F(CommandLineTest, PreviewsTellWhatTheTasksThenDo) {
  ASSERT_EQ(run("-backup Set"), 0);
  ASSERT_EQ(run("-autobackup"), 0);
  fakes_.clock.advance(std::chrono::seconds(1));
  fs::copy(library("/Set.vnt"), library("/Auto Backup stray.vnt"), fs::copy_options::recursive);
  fs::create_symlink(home_ / "Library", home_ / "Library/Preferences/com.borisfx.Title Crawl");
  fakes_.system.directory = library();
  std::size_t changes = 0;
  for (const std::string task :
       {"list", "trash fcp", "backup Set", "backup None noSuchKey", "autobackup", "trash -allfiles", "backup Nothing",
        "restore Set.vnt", "trash none", "restore x motion", "backup New fcpPlugins"}) {
    const int exitCode = run("--preview " + task);
    const Names expected = foreseen();
    const auto before = snapshot();
    EXPECT_EQ(run("-" + task), exitCode);
    EXPECT_EQ(changedSince(before), expected) << task;
    changes += expected.size();
  }
  EXPECT_GE(changes, 14u);
}

TEST_F(CommandLineTest, PreviewsForeseeRefusals) {
  const std::string folder = home_ / "Library/Preferences";
  metadata_.unwritable = {folder};
  EXPECT_EQ(run("--preview trash motionPrefs"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("\ncannot trash  " + folder + "/com.apple.motion.plist (Perm"));
  EXPECT_THAT(errors_.str(), HasSubstr("1 file could not be processed"));
  fakes_.users.superuser = true;  // whose rights reach there
  EXPECT_EQ(run("--preview trash motionPrefs"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("\nmove         " + folder + "/com.apple.motion.plist\n  to  "));
  metadata_.whyUnwritable = std::errc::read_only_file_system;  // where nobody's do
  EXPECT_EQ(run("--preview trash motionPrefs"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("\ncannot trash  " + folder + "/com.apple.motion.plist (Read-only"));
  metadata_.whyUnwritable = std::errc::permission_denied;

  fakes_.users.superuser = false;
  ASSERT_EQ(run("-backup Set"), 0);
  fs::remove(folder + "/com.apple.motion.plist");
  EXPECT_EQ(run("--preview restore", library("/Set.vnt")), 0);
  EXPECT_THAT(output_.str(), HasSubstr("/Users/user/Library/Preferences/com.apple.motion.plist (Perm"));
}

TEST_F(CommandLineTest, RemarksOnAHomeOfAnotherDepth) {
  const std::string remark = "is not two levels deep";
  for (const char* task : {"-backup Set", "--preview backup Set"}) {
    fakes_.users.process->home = home_.path();
    EXPECT_EQ(run(task), 0);
    EXPECT_THAT(errors_.str(), Not(HasSubstr(remark))) << task;
    fakes_.users.process->home = home_ / "deeper";
    run(task);
    EXPECT_THAT(errors_.str(), HasSubstr(remark)) << task;
    isHomeNamed_ = true;
    run(task);
    EXPECT_THAT(errors_.str(), Not(HasSubstr(remark))) << task;
    isHomeNamed_ = false;
  }
}

TEST_F(CommandLineTest, QuestionsAskedWronglyAreRefused) {
  for (const char* line :
       {"--preview", "--preview fcp", "--preview -trash fcp", "--json --preview -trash", "--preview trash --print0",
        "--list-items fcpPrefs", "x --list-backups", "--list-items --json --print0", "--json"}) {
    EXPECT_EQ(run(line), 1) << line;
    EXPECT_THAT(errors_.str(), StartsWith("Vantory: "));
    const bool asksForJson = std::string(line).find("--json") != std::string::npos;
    EXPECT_THAT(output_.str(), asksForJson ? StartsWith("{") : StartsWith("")) << line;
    EXPECT_EQ(output_.str().empty(), !asksForJson) << line;
  }
  EXPECT_EQ(intact(), kAll);
  EXPECT_THAT(window_, IsEmpty());
}

TEST_F(CommandLineTest, ComparesABackupWithTheFilesAndWithAnother) {
  writeFile(home_ / kFiles[1].second, "{ Timeline = { Snapping = 0; }; }");
  ASSERT_EQ(run("-backup First"), 0);
  writeFile(home_ / kFiles[1].second, "{ Timeline = { Snapping = 1; }; }");
  ASSERT_EQ(run("-backup fcpPrefs"), 0);
  const Snapshot before = snapshot();
  ASSERT_EQ(run("--compare First"), 0);
  EXPECT_THAT(output_.str(),
              HasSubstr("\n      Timeline.Snapping: \"1\" → \"0\"\n\nFiles: 5 the same, 1 different.\n"));
  ASSERT_EQ(run("--compare First fcpPrefs"), 0) << "a key, not the backup";
  EXPECT_THAT(output_.str(), HasSubstr("What restoring \"First\" would change:"));
  ASSERT_EQ(run("--compare First fcpPrefs fcp --json"), 0);
  EXPECT_THAT(output_.str(), HasSubstr("\"same\": 1,\n    \"different\": 1,"));
  for (const auto& [line, told] : {std::pair("", "needs a backup"),
                                   {" Frst", "did you mean \"First\"?"},
                                   {" First fcpPref", "did you mean \"fcpPrefs\"?"},
                                   {" a b c d", "too many"}}) {
    EXPECT_EQ(run(std::string("--compare") + line), 1);
    EXPECT_THAT(errors_.str(), AllOf(StartsWith("Vantory: "), HasSubstr(told)));
  }
  for (const char* line : {"--compare Frst --json", "--verify Frst --json"}) {
    EXPECT_EQ(run(line), 1);
    EXPECT_THAT(output_.str(), AllOf(HasSubstr("\"exitCode\": 1"), HasSubstr("did you mean \\\"First\\\"?")));
  }
  EXPECT_EQ(snapshot(), before);
  EXPECT_EQ(run("--restore-keys First fcpPref Timeline.Snapping"), 1);
  EXPECT_THAT(log(), HasSubstr("did you mean \"fcpPrefs\"?"));
  EXPECT_EQ(run("--restore-keys First fcpPrefs Timeline.Snaping"), 1);
  EXPECT_THAT(errors_.str() + log(), HasSubstr("did you mean \"Timeline.Snapping\"?"));
  EXPECT_EQ(readFile(home_ / kFiles[1].second), "{ Timeline = { Snapping = 1; }; }");
  EXPECT_EQ(run("--strict --restore-keys First fcpPrefs Timeline.Snapping"), 0);
  EXPECT_THAT(readFile(home_ / kFiles[1].second), HasSubstr("Snapping = 0;"));
}

TEST_F(CommandLineTest, CatalogFilesAreCheckedBesideOthers) {
  const std::string folder = library("/../Catalogs/");
  const std::string sound =
      "{ format = 1; name = Editor; identifier = x; projects = edp; items = ({ key = edPrefs; name = Preferences; "
      "lockabel = NO; files = \"~/.config/editor/rc\"; }); }";
  writeFile(folder + "editor.plist", sound);
  writeFile(home_ / ".config/editor/rc", "x");
  writeFile(home_ / "bad.plist", "{ format = 1;\n name = \"Motion\"; }");
  EXPECT_EQ(run("--check-catalog", folder + "editor.plist"), 0);
  EXPECT_THAT(output_.str(), HasSubstr(home_ / ".config/editor/rc\n"));
  EXPECT_THAT(errors_.str(), HasSubstr("is \"lockable\" meant?"));
  EXPECT_EQ(run("--check-catalog --json", home_ / "bad.plist"), 1);
  EXPECT_THAT(output_.str(), HasSubstr("\"fault\": "));
  EXPECT_THAT(errors_.str(), HasSubstr("bad.plist:"));
  EXPECT_EQ(run("--check-catalog"), 1);
  EXPECT_EQ(run("--list-items"), 0);
  EXPECT_THAT(output_.str(), testing::AllOf(HasSubstr("\nedPrefs "), testing::EndsWith("editor.plist\n")));
  EXPECT_EQ(run("-backup Carried edPrefs"), 0);
  fakes_.users.superuser = true;
  EXPECT_EQ(run("--restore-keys Carried edPrefs a"), 1);
  EXPECT_THAT(fakes_.systemLog.messages().back(),
              HasSubstr("\"edPrefs\" of \"Editor\" stays in the backup: for the superuser"));
  fakes_.users.superuser = false;
  for (const Alias& alias : aliasTable()) {
    AppDefinition definition;
    definition.items.emplace_back().key = alias.name;
    EXPECT_NE(TakenNames().faultOf(definition).reason, "") << alias.name;
  }
}

// The manual, the README and the completions are written by hand.
TEST_F(CommandLineTest, EveryOptionAndKeyIsDocumented) {
  const auto read = [](const char* path) { return readFile(std::string(VANTORY_SOURCE "/") + path); };
  const std::string manual = read("resources/man/vantory.1"), readme = read("README.md");
  ASSERT_EQ(run("--help"), 0);
  const std::string help = output_.str();
  std::vector<std::string> options = {std::string(kJson), std::string(kStrict), std::string(kPrint0)};
  for (const TaskCommand& command : commandTable()) options.emplace_back(command.option);
  for (const Question& question : questionTable()) options.emplace_back(question.option);
  const auto completion = [&](const char* name) {
    return read((std::string("resources/completions/") + name).c_str());
  };
  std::string tasks, tasksToPreview;  // as the completions list them
  for (const std::string& option : options) {
    const std::string plain = option.substr(option.find_first_not_of('-'));
    const bool isLong = option.starts_with("--");
    if (!isLong) {
      tasks.append(tasks.empty() ? "" : " | ").append(option);
      tasksToPreview.append(tasksToPreview.empty() ? "" : " ").append(plain);
    }
    EXPECT_THAT(manual, HasSubstr(formatted(isLong ? "\n.It Fl -%@" : "\n.It Fl %@", plain)));
    EXPECT_THAT(readme, HasSubstr(option));
    EXPECT_THAT(help, HasSubstr(option + " "));
    EXPECT_THAT(completion("vantory.bash"), HasSubstr(option));
    EXPECT_THAT(completion("_vantory"), HasSubstr("'" + option + ":"));
    EXPECT_THAT(completion("vantory.fish"), HasSubstr(formatted(isLong ? " -l %@ " : " -a -%@ ", plain)));
  }
  std::string aliases;
  for (const Alias& alias : aliasTable()) {
    EXPECT_THAT(read("docs/manual/manual.html"), HasSubstr(formatted(" (%@)</td>", alias.name)));
    aliases.append(aliases.empty() ? "" : " ").append(alias.name);
  }
  for (const char* name : {"vantory.bash", "_vantory", "vantory.fish"})
    EXPECT_THAT(completion(name), HasSubstr(aliases));
  for (const char* name : {"vantory.bash", "_vantory"})
    EXPECT_THAT(completion(name), HasSubstr(formatted(" %@)", tasks)));
  for (const char* name : {"vantory.bash", "vantory.fish"}) EXPECT_THAT(completion(name), HasSubstr(tasksToPreview));
  for (const BuiltInApp& app : builtInCatalog())
    for (const BuiltInItem& item : app.items)
      for (const std::string& text : {manual, readme}) EXPECT_THAT(text, HasSubstr(item.key));
}

TEST(CommandTableTest, EveryCommandForAShortcutIsATaskOfItsOwn) {
  const auto table = parsePropertyList(readFile(VANTORY_RESOURCES "/QWKeys.plist"));
  ASSERT_TRUE(table);
  std::set<std::string> keys = {"-allprefs", "-allfiles", "fcp", "fce",        "stp",      "motion",
                                "color",     "dvdsp",     "ct",  "compressor", "batchmon", "livetype"};
  for (const BuiltInApp& app : builtInCatalog())
    for (const auto& item : app.items) keys.insert(item.key);
  std::set<std::string> ids, tasks;
  for (const PropertyList& row : *table->asDictionary()->find("QWKeys")->asArray()) {
    const PropertyListDictionary& values = *row.asDictionary();
    const std::string id = *values.find("id")->asString();
    EXPECT_TRUE(ids.insert(id).second && !values.find("description")->asString()->empty()) << id;
    std::vector<std::string> arguments = {"vantory"};
    for (const PropertyList& argument : *values.find("arguments")->asArray()) arguments.push_back(*argument.asString());
    EXPECT_TRUE(tasks.insert(testing::PrintToString(arguments)).second) << id;
    EXPECT_TRUE(chooseCommand(arguments)) << id;
    EXPECT_EQ(arguments.back(), "-hotkey") << id;
    EXPECT_TRUE(arguments.size() == 3 || keys.contains(arguments[2])) << id;
  }
  EXPECT_GE(ids.size(), builtInCatalog().size() + 4);
}

}  // namespace
}  // namespace vantory::test
