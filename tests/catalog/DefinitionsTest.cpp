// Catalog files: what they may say, and how those of several folders come together.
#include <unistd.h>

#include <filesystem>

#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/ProjectKinds.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "catalog/definitions/Wildcards.h"
#include "services/files/RealPaths.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string appWith(const std::string& items, const std::string& name = "Editor",
                    const std::string& identifier = "org.example.editor") {
  return "// A file\n{ format = 1; name = \"" + name + "\"; identifier = \"" + identifier + "\";\n  items = (\n" +
         items + "\n  ); }\n";
}

std::string item(const std::string& files, const std::string& key = "editPrefs",
                 const std::string& name = "Preferences") {
  return "{ key = \"" + key + "\"; name = \"" + name + "\"; files = (" + files + "); }";
}

std::string appFor(const std::string& pattern) {
  return appWith(item('"' + pattern + '"'));
}

class DefinitionsTest : public CatalogTest {
 protected:
  std::string inUserFolder(const std::string& name) const {
    return home_ / ("Library/Application Support/Quarrywell/Vantory/Catalogs/" + name);
  }
  std::string inMachineFolder(std::size_t which, const std::string& name) const {
    return fakes_.folders.programDataFolders()[which] + "/catalogs/" + name;
  }
  // The only complaint about a file with this text.
  std::string complaintAbout(const std::string& text) {
    writeFile(inUserFolder("editor.plist"), text);
    const DefinedCatalog catalog = readDefinedCatalog({home_ / "Documents/Cutting Sets"});
    EXPECT_THAT(catalog.apps, IsEmpty()) << text;
    if (catalog.complaints.size() != 1) return "complaints: " + std::to_string(catalog.complaints.size());
    EXPECT_THAT(catalog.complaints[0], StartsWith(inUserFolder("editor.plist:"))) << text;
    EXPECT_THAT(catalog.complaints[0], EndsWith(" The file is left out."));
    return catalog.complaints[0].substr(inUserFolder("editor.plist:").size());
  }
  // Of what an application without identifiers of its own has found.
  static std::string faultOfMatch(const PatternRules& rules, const std::string& path) {
    RealPaths realPaths;
    return rules.faultOfMatch(path, path, {}, realPaths);
  }
  std::vector<std::string> namesIn(const DefinedCatalog& catalog) {
    std::vector<std::string> names;
    for (const auto& app : catalog.apps) names.push_back(app->name());
    return names;
  }
};

TEST_F(DefinitionsTest, HostilePatternsAreRefused) {
  const std::string shared = machine_ / "Users/Shared";
  const std::pair<std::string, const char*> patterns[] = {
      {"/etc/passwd", "does not begin with"},
      {"~anna/.config/editor/rc", "does not begin with"},
      {"Library/editor/rc", "does not begin with"},
      {home_ / ".config/editor/rc", "does not begin with"},
      {"~/.config/../.bashrc/x", "\"..\""},
      {"~/.config/editor/./rc", "\"..\""},
      {"~/.config//editor/rc", "\"..\""},
      {"~/.config/editor /rc", "a blank at an end"},
      {"~/.config/editor/", "slash"},
      {"~/.config/editor/r?", "stands for others"},
      {"~/$HOME/editor/rc", "stands for others"},
      {"~/.config/editor/**/rc", "two * in a row"},
      {"~/.config/editor/*/*/*/*", "more than three"},
      {"~/.config/editor/\\n", "control characters"},
      {"~/.config/" + std::string(1100, 'x'), "1024"},
      {"~/.bashrc", "in no folder of an application"},
      {"~/Library", "many applications share"},
      {"~/.config", "many applications share"},
      {"~/.local", "where no application keeps"},
      {"~/.conf*", "many applications share"},
      {"~/.edit*/rc", "in the name of a folder of the home"},
      {"~/.config/*", "four characters"},
      {"~/.config/*rc", "four characters"},
      {"~/.config/kde*/rc", "four characters"},
      {"~/Library/Preferences/*", "four characters"},
      {"~/Library/Preferences/com.apple.*", "own must stand"},
      {"~/Library/Application Support/*/x", "four characters"},
      {"~/Library/Preferences/COM.apple.*", "own must stand"},
      {"~/Library/Preferences/info.*", "own must stand"},
      {"~/Library/Preferences/Adobe/*", "of the same maker"},
      {"~/Library/Preferences/com.apple.loginwindow.plist", "where no application keeps"},
      {"~/Library/Preferences/ByHost/*", "where no application keeps"},
      {"~/*/kdenliverc", "where no application keeps"},
      {"~/Schreibtisch/*", "where no application keeps"},
      {"~/src/editor/rc", "where no application keeps"},
      {"~/Library/Mobile Documents/*", "where no application keeps"},
      {"~/Documents/Work", "is the person's own"},
      {"~/Documents/Work/Films/*", "is the person's own"},
      {"~/Documents/Work/Films/*/src", "is the person's own"},
      {"~/.kde/share/config/editorrc", "where no application keeps"},
      {"~/.var/app/org.mozilla.firefox/config/x", "where no application keeps"},
      {"~/Library/Containers/com.apple.mail/Data/x", "where no application keeps"},
      {"~/.config/google-chrome/Default/Preferences", "where no application keeps"},
      {"~/.config/nvim/init.vim", "where no application keeps"},
      {"~/.config/sw*y/config", "four characters"},
      {"~/.config/conf*", "keeps its preferences: \"conf*\" could match \"config\""},
      {"~/.cargo/bin/cargo", "where no application keeps"},
      {"~/.\u017f\u017fh/id", "where no application keeps"},
      {"~/.editor/bin/cut", "starts programs"},
      {"~/.editor/b*n/cut", "starts programs"},
      {"~/.editor/q*", "\"q*\" could match \"quicklook\", so more characters"},
      {"~/.config/editor/autostart", "starts programs"},
      {"~/.local/share/editor/scripts/Open", "starts programs"},
      {"~/.local/share/editor/x/Editor.Desktop", "starts programs"},
      {"~/.config/editor/.zshrc", "starts programs"},
      {"~/.config/editor/passwords.txt", "keys or passwords"},
      {"~/.config/ed\u200bitor/rc", "cannot be seen"},
      {"~/.config/ed\u202eitor/rc", "cannot be seen"},
      {"~/.config/e\u0301ditor/rc", "apart from their letter"},
      {"~/.local/share/Trash/files/x", "where no application keeps"},
      {"~/.loca*/share/tras*/files/x", "where no application keeps"},
      {"~/.local/share/keyr*", "where no application keeps"},
      {"~/.local/share/kxmlgui5/*", "of the same maker"},
      {"~/Library/Preferences/com.apple.motion.plist", "belongs to Motion"},
      {"~/Library/Application Support/Final Cut Pro", "belongs to Final Cut Pro X"},
      {"~/.ssh/id_ed25519", "where no application keeps"},
      {"~/.config/autos*/editor.desktop", "where no application keeps"},
      {"~/.config/systemd/user/x.service", "where no application keeps"},
      {"~/.config/autorandr/postswitch", "where no application keeps"},
      {"~/.local/share/menus/x.menu", "where no application keeps"},
      {"~/bin/ls", "where no application keeps"},
      {"~/library/preferences/com.Quarrywell.vantory*", "where no application keeps"},
      {"~/Library/Application Support/Quarrywell/Vantory/Backups/Set.vnt/Settings.plist", "where no application keeps"},
      {"~/Documents/Cutting Sets/Set.vnt", "where no application keeps"},  // the chosen library
      {"~/Documents/Cutt*", "where no application keeps"},
      {shared, "does not begin with"},
      {shared + "/Notes.txt", "in no folder of an application"},
      {shared + "/*/x.ave", "four characters"},
      {shared + "/Editor/Settings", "may name a folder"},
  };
  for (const auto& [pattern, reason] : patterns)
    EXPECT_THAT(complaintAbout(appFor(pattern)), HasSubstr(reason)) << pattern;
}

TEST_F(DefinitionsTest, HostileFilesAreRefusedWithTheirLine) {
  const std::string sound = item("\"~/.config/editor/rc\"");
  const auto withKey = [&](const char* key) { return appWith(item("\"~/.config/editor/rc\"", key)); };
  std::string many;
  for (int i = 0; i < 51; ++i) many += item("\"~/.config/editor/rc\"", "k" + std::to_string(i)) + ",";
  const auto patternsOf = [](const std::string& folder, int from, int to) {
    std::string all;
    for (int i = from; i < to; ++i) all += (all.empty() ? "\"" : ", \"") + folder + std::to_string(i) + '"';
    return all;
  };
  std::string patterns;
  for (int i = 0; i < 5; ++i)
    patterns += item(patternsOf("~/.config/editor/", 50 * i, 50 * i + 50), "k" + std::to_string(i),
                     std::to_string(i) + " Preferences") +
                ",";
  const std::pair<std::string, const char*> files[] = {
      {"", " It is no property list"},
      {"{ format = 1;\n name = ;}", "2: It is no property list"},
      {"<plist><dict>\n</plist>", "2: It is no property list"},
      {std::string(70'000, ' '), " "},
      {std::string(600, '('), "1: It is no property list"},
      {"(a)", "no dictionary"},
      {"{ name = x; }", "no format"},
      {"{ format = 2; }", "1: Its format is not 1"},
      {"{ format = 1; }", "\"name\" is missing"},
      {"{ format = 1; name = (x); }", "\"name\" is no text"},
      {"{ format = 1; name = x; name = y; }", "has one of its keys twice"},
      {appWith("{ key = x; name = Preferences; files = a; files = b; }"), "4: An item has one of its keys twice"},
      {"{ format = 1; name = \"a/b\"; }", "is no name"},
      {"{ format = 1; name = \"..\"; }", "is no name"},
      {"{ format = 1; name = \"Final Cut\\U200b Pro\"; }", "is no name"},
      {"{ format = 1; name = \"Caf\\U0065\\U0301\"; }", "is no name"},
      {"{ format = 1; name = Editor; identifier = (); }", "array of 1 to 10"},
      {"{ format = 1; name = Editor; identifier = \"x.desktop\"; }", "without its ending"},
      {"{ format = 1; name = Editor; identifier = (x, x); }", "stands there twice"},
      {"{ format = 1; name = Editor; identifier = x; projects = \".edit\"; }", "without its dot"},
      {"{ format = 1; name = Editor; identifier = x; projects = mp4; }", "many applications"},
      {appWith(patterns), "more than 200 patterns"},
      {appWith(item(patternsOf("~/.config/editor/*/x*", 0, 21))), "More than 20 of its patterns"},
      {"{ format = 1; name = Editor; identifier = \"../x\"; }", "no identifier"},
      {"{ format = 1; name = Editor; identifier = x; icon = \"/etc/x\"; }", "icon"},
      {"{ format = 1; name = Editor; identifier = x; projects = motn; }", "known already"},
      {"{ format = 1; name = Editor; identifier = x; items = (); }", "1 to 50 items"},
      {appWith(many), "1 to 50 items"},
      {appWith("x"), "An item is no dictionary"},
      {appWith("{ key = x; name = Preferences; }"), "\"files\" is missing"},
      {appWith("{ key = x; name = Preferences; lockable = perhaps; files = (); }"), "4: \"lockable\" is neither"},
      {appWith(item("\"~/.config/editor/rc\"", "editKeys", "Layouts")), "3: No item's name ends in"},
      {appWith(item("\"~/.config/editor/rc\", \"~/.config/editor/rc\"")), "stands there twice"},
      {appWith(sound + "," + item("\"~/.config/editor/b\"", "EDITPREFS", "Others")), "Two items have the key"},
      {appWith(sound + ",\n" + item("\"~/.config/editor/b\"", "b")), "Two items are called"},
      {"// Motion and Motion\n" + appWith(sound, "Motion"), "3: Another application is called"},
      {appWith(sound, "projects"), "is reserved"},
      {withKey("fcpprefs"), "4: The key"},
      {withKey("all"), "taken or reserved"},
      {withKey("fcp"), "taken or reserved"},
      {withKey("avidPrefUserX"), "taken or reserved"},
      {withKey("-allfiles"), "is no key"},
      {withKey("a,b"), "is no key"},
  };
  for (const auto& [text, reason] : files) EXPECT_THAT(complaintAbout(text), HasSubstr(reason)) << text.substr(0, 200);
}

TEST_F(DefinitionsTest, NamedFilesAndOwnWildcardsMayStand) {
  const std::string shared = machine_ / "Users/Shared";
  for (const std::string& pattern :
       {std::string("~/.config/kdenliverc"), std::string("~/.config/kden*"), std::string("~/.editor/rc"),
        std::string("~/.config/flowblade"), std::string("~/.config/blender/*/scripts/presets/*/*.py"),
        std::string("~/Library/Preferences/com.Adobe.Premiere Pro.*.plist"),
        std::string("~/Documents/Maker/Editor/sets*"), shared + "/AvidMediaComposer/Avid Users/*/*.ave"})
    EXPECT_EQ(PatternRules({}).faultOf(pattern, {}), "") << pattern;
  writeFile(shared + "/Editor/a.look", "");
  makeFolders(shared + "/Editor/b.look");
  const PatternRules rules({});
  EXPECT_EQ(faultOfMatch(rules, shared + "/Editor/a.look"), "");
  EXPECT_THAT(faultOfMatch(rules, shared + "/Editor/b.look"), HasSubstr("is a folder"));
  EXPECT_EQ(faultOfMatch(rules, home_ / "Documents/Maker/Editor/sets.db"), "");
  EXPECT_THAT(faultOfMatch(rules, home_ / ".config/editor/a\nb"), HasSubstr("control characters"));
}

TEST_F(DefinitionsTest, TheLibraryIsOutOfReachByLinksToo) {
  makeFolders(home_ / ".config/sets");
  makeFolders(home_ / ".config/editor");
  for (const char* link : {"Sets", ".config/editor/ours"})
    std::filesystem::create_directory_symlink(home_ / ".config/sets", home_ / link);
  const PatternRules rules({home_ / "Sets"});
  EXPECT_THAT(rules.faultOf("~/.config/sets/*", {}), HasSubstr("where no application keeps"));
  RealPaths realPaths;
  for (const std::string path : {".config/editor/rc", ".config/editor/ours", ".config/editor/ours/B.vnt"}) {
    const std::string found = home_ / path;
    const bool isOurs = path != ".config/editor/rc";
    EXPECT_EQ(!rules.faultOfMatch(found, found, {}, realPaths).empty(), isOurs) << path;
  }
}

TEST_F(DefinitionsTest, LaterFoldersHideEarlierOnes) {
  const auto files = [](const char* name) { return item("\"~/.config/" + std::string(name) + "/rc\"", name); };
  writeFile(inMachineFolder(0, "a.plist"), appWith(files("installed"), "Editor", "org.example.editor"));
  writeFile(inMachineFolder(0, "b.plist"), appWith(files("other"), "Other", "org.example.other"));
  writeFile(inMachineFolder(1, "a.plist"), appWith(files("etc"), "Editor", "org.Example.Editor"));
  writeFile(inUserFolder("mine.plist"), appWith(files("etc"), "Cutter", "org.example.editor"));  // with the hidden key
  writeFile(inUserFolder("taken.plist"), appWith(files("other"), "Third", "org.example.third"));
  writeFile(inUserFolder("twice.plist"), appWith(files("x"), "Fourth", "org.example.editor"));
  writeFile(inUserFolder(".hidden.plist"), "nonsense");
  const DefinedCatalog catalog = readDefinedCatalog({});
  EXPECT_THAT(namesIn(catalog), ElementsAre("Cutter", "Other"));
  EXPECT_EQ(catalog.apps[0]->defined()->source, inUserFolder("mine.plist"));
  EXPECT_THAT(catalog.apps[0]->children()[0]->files(), ElementsAre(home_ / ".config/etc/rc"));
  EXPECT_THAT(catalog.complaints,
              ElementsAre(HasSubstr("taken.plist:4: The key \"other\""), HasSubstr("twice.plist: ")));
}

TEST_F(DefinitionsTest, AFileThatHidesSeveralSaysSo) {
  for (const std::string name : {"one", "two"})
    writeFile(inMachineFolder(0, name + ".plist"),
              appWith(item("\"~/.config/editor/" + name + "\"", name), name, "org.example." + name));
  std::string mine = appWith(item("\"~/.config/editor/one\"", "one"), "Mine", "org.example.one");
  mine.replace(mine.find("\"org.example.one\""), 17, "(\"org.example.one\", \"org.example.two\")");
  writeFile(inUserFolder("mine.plist"), mine);
  const DefinedCatalog catalog = readDefinedCatalog({});
  EXPECT_THAT(namesIn(catalog), ElementsAre("Mine"));
  EXPECT_THAT(catalog.complaints,
              ElementsAre(inUserFolder("mine.plist: It takes the place of ") + inMachineFolder(0, "one.plist and ") +
                          inMachineFolder(0, "two.plist") + ": it has identifiers of all of them."));
}

TEST_F(DefinitionsTest, FilesOfOthersAreNotTrusted) {
  namespace fs = std::filesystem;
  const std::string text = appFor("~/.config/editor/rc");
  writeFile(inUserFolder("open.plist"), text);
  fs::permissions(inUserFolder("open.plist"), fs::perms::others_write, fs::perm_options::add);
  writeFile(home_ / "elsewhere", text);
  fs::create_symlink(home_ / "elsewhere", inUserFolder("link.plist"));
  makeFolders(inUserFolder("folder.plist"));
  std::vector reasons{HasSubstr("is no file"), HasSubstr("link.plist is a symbolic link, which is not followed: put"),
                      HasSubstr("may be changed by other users")};
  if (geteuid() == 0) {
    writeFile(inUserFolder("theirs.plist"), text);
    ASSERT_EQ(chown(inUserFolder("theirs.plist").c_str(), 12345, 12345), 0);
    reasons.push_back(HasSubstr("belongs to another user"));
  }
  const DefinedCatalog catalog = readDefinedCatalog({});
  EXPECT_THAT(catalog.apps, IsEmpty());
  EXPECT_THAT(catalog.complaints, testing::ElementsAreArray(reasons));
}

TEST_F(DefinitionsTest, WhatShipsIsSoundAndSaysHowItWasWritten) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VANTORY_RESOURCES "/catalogs")) {
    std::string text = readFile(entry.path());
    EXPECT_THAT(text.substr(0, text.find('{')), testing::ContainsRegex("(Files|Not) tried.* 20[0-9][0-9]"))
        << entry.path();
    const std::string shared = "\"/Users/Shared/";
    for (std::size_t at = text.find(shared); at != std::string::npos; at = text.find(shared))
      text.replace(at, shared.size(), '"' + (machine_ / "Users/Shared/"));
    writeFile(inMachineFolder(0, entry.path().filename()), text);
    ++count;
  }
  const DefinedCatalog catalog = readDefinedCatalog({});
  EXPECT_EQ(catalog.apps.size(), count);
  EXPECT_THAT(catalog.complaints, IsEmpty());
  for (const auto& app : catalog.apps)
    for (const auto& item : app->children())
      for (const std::string& pattern : item->files()) {
        const std::string name = paths::lastComponent(pattern);
        EXPECT_THAT(name, testing::Not(testing::MatchesRegex(".*([.]db|[.]sqlite|/)$"))) << pattern;
        for (const std::string& kind : app->defined()->projects) EXPECT_NE(name, "*." + kind) << pattern;
      }
  // No file is looked after twice.
  std::vector<std::pair<std::string, std::string>> patterns;  // with the application
  for (const AppList& apps : {buildCatalog(), catalog.apps})
    for (const auto& app : apps)
      for (const auto& item : app->children())
        for (const std::string& pattern : item->files()) {
          for (const auto& [other, name] : patterns)
            if (app->defined() && name != app->name()) {
              const auto one = split(pattern, '/'), two = split(other, '/');
              const std::size_t common = std::min(one.size(), two.size());
              EXPECT_FALSE(std::equal(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(common), two.begin(),
                                      couldBothMatch))
                  << pattern << " and " << other << " of " << name;
            }
          patterns.emplace_back(pattern, app->name());
        }
  EXPECT_THAT(applicationsOfProject("/a/Film.KDENLIVE", catalog.apps),
              ElementsAre("org.kde.kdenlive", "org.kde.Kdenlive"));
}

// The scratch folder lies where everybody may write.
TEST_F(DefinitionsTest, TheSuperuserTrustsOnlyItsOwnFolders) {
  writeFile(inMachineFolder(1, "a.plist"), appFor("~/.config/editor/rc"));
  writeFile(inUserFolder("b.plist"), "nonsense");
  fakes_.users.superuser = true;
  const DefinedCatalog catalog = readDefinedCatalog({});
  EXPECT_THAT(catalog.apps, IsEmpty());
  EXPECT_THAT(catalog.complaints, ElementsAre(testing::AnyOf(HasSubstr("may be changed by other users"),
                                                             HasSubstr("does not belong to root"))));
}

}  // namespace
}  // namespace vantory::test
