// Global shortcuts: the command table, the shared list and the manager that reads it.

#include <sys/stat.h>

#include "base/PropertyListBytes.h"
#include "settings/ui/QWShortcutKeyTableDelegate.h"
#include "tests/services/PersonAtWindow.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FakeTable : public ShortcutTable, public ShortcutFieldEditor {
 public:
  void reloadData() override {}
  int selectedRow() const override { return selected; }
  void endEditing() override { ++ended; }
  void setManagerMissing(bool missing) override { managerMissing = missing; }
  ShortcutFieldEditor& fieldEditor() override { return *this; }
  void empty() override {}

  int selected = -1;
  int ended = 0;
  bool managerMissing = false;
};

class ShortcutKeysTest : public ServicesTest, protected PersonAtWindow {
 protected:
  ShortcutKeysTest() : PersonAtWindow(runtime_) {
    fakes_.system.resources = home_ / "resources";
    writeFile(home_ / "resources/QWKeys.plist",
              "{QWKeys = ({id = trash; description = \"Trash all\";}, {id = lock; description = Lock;});}");
  }
  ~ShortcutKeysTest() override { finishWork(); }

  void open() {
    auto& keys = QWShortcutKeyTableDelegate::sharedController();
    keys.setTable(&table_);
    keys.populateKeyData();
  }
  // The person selects a row and presses a key.
  void press(int row, const ShortcutKey& key) {
    table_.selected = row;
    const UserInfo info({{"keycode", std::int64_t{key.keycode}},
                         {"shift", key.shift},
                         {"ctrl", key.ctrl},
                         {"opt", key.opt},
                         {"cmd", key.cmd}});
    NotificationCenter::shared().post("QWShortcutKeyChanged", info);
    finishWork();
  }
  void clear(int row) {
    table_.selected = row;
    QWShortcutKeyTableDelegate::sharedController().clearShortcutKey();
  }
  static std::string shown(int row) {
    return QWShortcutKeyTableDelegate::sharedController().objectValueForTableColumn("shortcutkey",
                                                                                    static_cast<std::size_t>(row));
  }
  PropertyListArray watchList() const {
    return *parsePropertyList(readFile(list_))->asDictionary()->find("watchlist")->asArray();
  }
  static PropertyList entry(const std::string& bundle, const std::string& command, int keycode, int modifiers) {
    return PropertyListDictionary(
        {{"bundleid", bundle}, {"keycode", keycode}, {"modifiers", modifiers}, {"commandid", command}});
  }
  void store(const PropertyListArray& entries) const {
    writeFile(list_, writeXmlPropertyList(PropertyListDictionary({{"watchlist", entries}})));
  }

  const std::string own_ = "com.quarrywell.Vantory";
  const std::string list_ = home_ / "Library/Preferences/com.quarrywell.shortcutkeys.plist";
  const std::string manager_ =
      machine_ / "Library/Application Support/Quarrywell/Shared Resources/QWShortcutKeyManager";
  FakeTable table_;
};

TEST_F(ShortcutKeysTest, AKeyWithAModifierIsTakenAsItIs) {
  for (const ShortcutKey& key : {ShortcutKey{.shift = true}, {.ctrl = true}, {.opt = true}, {.cmd = true}})
    EXPECT_EQ(captured(key), key);
}

TEST_F(ShortcutKeysTest, ChangesItsOwnEntriesOnly) {
  const PropertyListDictionary byParameters(
      {{"bundleid", own_}, {"commandparams", PropertyListArray{"-list"}}, {"keycode", -4}});
  const PropertyListArray others = {entry("com.quarrywell.Other", "trash", 8, 0x0100), "damaged", byParameters};
  PropertyListArray stored = others;
  stored.push_back(entry(own_, "trash", 121, 0x1B00));
  store(stored);

  open();
  EXPECT_EQ(shown(0), "Ctrl+Shift+Alt+Cmd+Page Down");
  press(0, captured({.keycode = 3}));
  stored.back() = entry(own_, "trash", 3, 0x0300);
  EXPECT_EQ(watchList(), stored) << "replaced, not added";
  EXPECT_EQ(shown(0), "Shift+Cmd+F") << "so that no key types text";
  EXPECT_EQ(table_.ended, 1);

  press(1, {.keycode = 1000, .ctrl = true});
  EXPECT_EQ(shown(1), "Unknown");
  for (const int row : {0, 1}) {
    clear(row);
    EXPECT_EQ(shown(row), "");
  }
  EXPECT_EQ(watchList(), others);
  finishWork();
  EXPECT_EQ(fakes_.announcements.announced, std::vector<std::string>(4, "QWShortcutKeysReload"));
  EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(ShortcutKeysTest, TellsTheManagerOrThatThereIsNone) {
  open();
  EXPECT_TRUE(table_.managerMissing);
  press(0, {.keycode = 3, .ctrl = true});
  EXPECT_THAT(watchList(), ElementsAre(entry(own_, "trash", 3, 0x1000))) << "written all the same";
  EXPECT_THAT(fakes_.systemLog.messages(),
              ElementsAre("Unable to setup shortcut keys - shortcut key manager doesn't exist. Please reinstall this "
                          "software."));

  writeFile(manager_, "#!/bin/sh\necho \"$@\" >\"${0%/*}/arguments\"\n");
  ASSERT_EQ(chmod(manager_.c_str(), 0755), 0);
  open();
  EXPECT_FALSE(table_.managerMissing);
  press(0, {.keycode = 4, .ctrl = true});
  EXPECT_EQ(readFile(machine_ / "Library/Application Support/Quarrywell/Shared Resources/arguments"), "-setup\n");
  EXPECT_EQ(fakes_.systemLog.messages().size(), 1U);
}

TEST_F(ShortcutKeysTest, NeverOverwritesADamagedListNorHidesAFailure) {
  writeFile(list_, "<plist><dict><key>watch");
  open();
  press(0, {.keycode = 3, .ctrl = true});
  EXPECT_EQ(watchList().size(), 1U);
  EXPECT_EQ(readFile(list_ + ".damaged-20261114213517"), "<plist><dict><key>watch");
  EXPECT_THAT(logged(), Contains(HasSubstr("were damaged and now lie at")));

  store({entry(own_, "lock", -4, 0x0100)});
  open();
  EXPECT_EQ(shown(1), "Unknown") << "one that can be cleared";

  writeFile(list_, "{watchlist = \"no array\"; other = 1;}");
  press(1, {.keycode = 5, .ctrl = true});
  const std::string list = readFile(list_);
  for (const char* kept : {"<string>no array</string>", "<key>other</key>"}) EXPECT_THAT(list, HasSubstr(kept));

  files_.refuseWrites();
  press(0, {.keycode = 9, .ctrl = true});
  clear(1);
  EXPECT_EQ(alerts_, std::vector<std::string>(2, "The shortcut could not be saved."));
  EXPECT_EQ(readFile(list_), list);
  EXPECT_EQ(shown(1), "Ctrl+G") << "what is stored is shown";
}

TEST_F(ShortcutKeysTest, HasNoRowsWithoutTheTableOfCommands) {
  fakes_.system.resources = "/nowhere";
  open();
  EXPECT_EQ(QWShortcutKeyTableDelegate::sharedController().numberOfRows(), 0U);
}

}  // namespace
}  // namespace vantory::test
