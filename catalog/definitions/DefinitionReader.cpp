// Checks a definition from the outside in; the first fault ends it.
#include "catalog/definitions/DefinitionReader.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/Format.h"
#include "base/Spelling.h"
#include "base/Text.h"
#include "catalog/BuiltInCatalog.h"
#include "catalog/ProjectKinds.h"
#include "catalog/definitions/Wildcards.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

constexpr std::size_t kMost = 50;          // items of an application, patterns of an item
constexpr std::size_t kMostOthers = 10;    // identifiers, kinds of projects
constexpr std::size_t kLongestName = 100;  // bytes
constexpr std::size_t kLongestKey = 64;
constexpr std::size_t kMostPatterns = 200;  // of an application
constexpr std::size_t kMostDeep = 20;       // of these, that have several components with a wildcard
constexpr std::size_t kMostDeepOfAll = 200;
constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kDigits = "0123456789";

// Keys of a backup's settings, which name applications too.
constexpr std::string_view kReservedNames[] = {"projects", "projectpath", "definitions", "checksums",
                                               "catalog",  "format",      "version",     "vantory"};
// Short names and words of commands.
constexpr std::string_view kReservedKeys[] = {"fcp",      "fce",        "stp",      "motion", "color", "dvdsp",
                                              "livetype", "compressor", "batchmon", "ct",     "all",   "none",
                                              "allprefs", "allfiles",   "default",  "task",   "hotkey"};
// Kinds of files that many applications open.
constexpr std::string_view kCommonKinds[] = {
    "txt",  "md",   "rtf",  "pdf", "doc", "docx", "odt",  "csv",  "xml", "json", "yaml", "html", "plist", "desktop",
    "ini",  "conf", "log",  "db",  "sh",  "py",   "zip",  "gz",   "tar", "7z",   "dmg",  "iso",  "srt",   "vtt",
    "edl",  "aaf",  "otio", "mov", "mp4", "m4v",  "mkv",  "avi",  "mxf", "mts",  "mpg",  "mpeg", "webm",  "r3d",
    "braw", "wav",  "mp3",  "m4a", "aac", "aif",  "aiff", "flac", "ogg", "opus", "jpg",  "jpeg", "png",   "gif",
    "tif",  "tiff", "webp", "bmp", "svg", "psd",  "exr",  "dpx",  "dng", "cube"};
// What the key of an Avid user begins with.
constexpr std::string_view kUserKey = "avidprefuser";

// Ends the reading.
using Fault = DefinitionFault;

bool isMadeOf(std::string_view text, std::string_view others) {
  return std::ranges::all_of(text, [&](char character) {
    return kLetters.find(character) != std::string_view::npos || kDigits.find(character) != std::string_view::npos ||
           others.find(character) != std::string_view::npos;
  });
}

// For people to read, and a key of property lists.
bool isName(std::string_view text) {
  return !text.empty() && text.size() <= kLongestName && isUtf8(text) && printable(text) == text &&
         trimmed(text) == text && text.find('/') == std::string_view::npos && !text.starts_with('-') &&
         !text.starts_with('.') && !holdsDeceivingCharacters(text);
}

bool isIdentifier(std::string_view text) {
  return !text.empty() && text.size() <= 255 && isMadeOf(text, "._-") && isMadeOf(text.substr(0, 1), "");
}

// To find what it matches takes long in a large folder.
bool isDeep(const std::string& pattern) {
  return std::ranges::count_if(split(pattern, '/'), QWFileManager::isWildcardPath) > 1;
}

std::size_t deepPatternsOf(const AppDefinition& definition) {
  std::size_t count = 0;
  for (const auto& item : definition.items)
    count += static_cast<std::size_t>(std::ranges::count_if(item.files, isDeep));
  return count;
}

class Reader {
 public:
  explicit Reader(const PatternRules& rules) : rules_(rules) {}

  ReadDefinition read(const PropertyList& value) {
    const PropertyListDictionary* top = value.asDictionary();
    if (!top) throw Fault{"It is no dictionary."};
    refuseRepeatedKeys(*top, "The application");
    if (const auto format = number(*top, "format"); format != 1)
      throw Fault{format ? "Its format is not 1." : "It says no format, which must be 1.", "format"};
    remarkOnOthers(*top, {"format", "name", "identifier", "icon", "projects", "items"});
    AppDefinition app;
    app.name = nameIn(*top);
    app.identifiers = identifiersIn(*top);
    app.icon = iconIn(*top, app.identifiers.front());
    app.projects = projectsIn(*top);
    const PropertyList* items = top->find("items");
    if (!items || !items->asArray() || items->asArray()->empty() || items->asArray()->size() > kMost)
      throw Fault{"\"items\" must be an array of 1 to 50 items.", "items"};
    for (const PropertyList& item : *items->asArray()) app.items.push_back(itemFrom(item, app));
    if (std::ranges::none_of(app.items, [](const auto& item) { return item.name.ends_with("Preferences"); }))
      throw Fault{"No item's name ends in \"Preferences\": nothing would be trashed with the application.", "items"};
    read_.definition = std::move(app);
    return std::move(read_);
  }

 private:
  static void refuseRepeatedKeys(const PropertyListDictionary& in, std::string_view what, const std::string& at = {}) {
    if (in.repeatsKeys()) throw Fault{formatted("%@ has one of its keys twice.", what), at};
  }

  // In the old text form every value is a text.
  static std::optional<std::int64_t> number(const PropertyListDictionary& in, std::string_view key) {
    const PropertyList* value = in.find(key);
    if (!value) return std::nullopt;
    if (const auto* number = std::get_if<std::int64_t>(&value->content())) return *number;
    const std::string* text = value->asString();
    return text && *text == "1" ? 1 : text && *text == "0" ? 0 : -1;
  }

  static std::string textIn(const PropertyListDictionary& in, const std::string& key) {
    const PropertyList* value = in.find(key);
    if (!value) throw Fault{formatted("\"%@\" is missing.", key), key};
    if (!value->asString()) throw Fault{formatted("\"%@\" is no text.", key), key};
    return *value->asString();
  }

  static std::string nameIn(const PropertyListDictionary& in) {
    std::string name = textIn(in, "name");
    if (isName(name)) return name;
    throw Fault{
        formatted("\"%@\" is no name: it must be text of 100 bytes or fewer without \"/\", characters that "
                  "cannot be seen or stand apart from their letter, a dash or dot at its beginning or blanks at "
                  "its ends.",
                  shortened(name, kLongestName)),
        name};
  }

  // One text, or an array of texts.
  static std::vector<std::string> textsIn(const PropertyListDictionary& in, const std::string& key, std::size_t most) {
    const PropertyList* value = in.find(key);
    if (!value) throw Fault{formatted("\"%@\" is missing.", key), key};
    if (value->asString()) return {*value->asString()};
    const PropertyListArray* array = value->asArray();
    if (!array || array->empty() || array->size() > most)
      throw Fault{formatted("\"%@\" must be a text or an array of 1 to %i texts.", key, static_cast<int>(most)), key};
    std::vector<std::string> texts;
    for (const PropertyList& entry : *array) {
      if (!entry.asString()) throw Fault{formatted("\"%@\" holds what is no text.", key), key};
      texts.push_back(*entry.asString());
    }
    return texts;
  }

  static std::vector<std::string> identifiersIn(const PropertyListDictionary& in) {
    auto identifiers = textsIn(in, "identifier", kMostOthers);
    std::set<std::string> met;
    for (const std::string& identifier : identifiers) {
      if (!isIdentifier(identifier))
        throw Fault{formatted("\"%@\" is no identifier of an application.", shortened(identifier, kLongestName)),
                    identifier};
      const std::string folded = lowerCased(identifier);
      if (folded.ends_with(".desktop") || folded.ends_with(".app"))
        throw Fault{formatted("\"%@\" is the name of a file: write the identifier without its ending.", identifier),
                    identifier};
      if (folded.starts_with("com.quarrywell")) throw Fault{"The identifier is this program's.", identifier};
      if (!met.insert(identifier).second)
        throw Fault{formatted("The identifier \"%@\" stands there twice.", identifier), identifier};
    }
    return identifiers;
  }

  static std::string iconIn(const PropertyListDictionary& in, const std::string& otherwise) {
    if (!in.find("icon")) return otherwise;
    std::string icon = textIn(in, "icon");
    if (!isIdentifier(icon)) throw Fault{"The icon is no name of an icon theme.", icon};
    return icon;
  }

  static std::vector<std::string> projectsIn(const PropertyListDictionary& in) {
    if (!in.find("projects")) return {};
    auto extensions = textsIn(in, "projects", kMostOthers);
    std::set<std::string> met;
    for (std::string& extension : extensions) {
      extension = lowerCased(extension);
      if (extension.starts_with('.'))
        throw Fault{formatted("\"%@\" is no extension of files: write it without its dot.", shortened(extension, 20)),
                    extension};
      const bool isPlain = !extension.empty() && extension.size() <= 16 && isMadeOf(extension, "_-");
      if (!isPlain) throw Fault{formatted("\"%@\" is no extension of files.", shortened(extension, 20)), extension};
      if (projectKindOf("x." + extension) || extension == "vnt" || extension == "vnt2")
        throw Fault{formatted("Files that end in \".%@\" are known already.", extension), extension};
      if (std::ranges::count(kCommonKinds, extension) > 0)
        throw Fault{formatted("Files that end in \".%@\" are those of many applications.", extension), extension};
      if (!met.insert(extension).second)
        throw Fault{formatted("The extension \"%@\" stands there twice.", extension), extension};
    }
    return extensions;
  }

  bool lockableIn(const PropertyListDictionary& in) {
    const PropertyList* value = in.find("lockable");
    if (!value) return true;
    if (const bool* boolean = value->asBoolean()) return *boolean;
    if (const std::string* text = value->asString()) {
      const std::string word = lowerCased(*text);
      if (word == "yes" || word == "true") return true;
      if (word == "no" || word == "false") return false;
    }
    const auto digit = number(in, "lockable");
    if (digit != 0 && digit != 1) throw Fault{"\"lockable\" is neither YES nor NO.", "lockable"};
    return digit == 1;
  }

  AppDefinition::Item itemFrom(const PropertyList& value, const AppDefinition& app) {
    const PropertyListDictionary* in = value.asDictionary();
    if (!in) throw Fault{"An item is no dictionary.", "items"};
    remarkOnOthers(*in, {"key", "name", "files", "lockable", "secrets"});
    AppDefinition::Item item{.key = textIn(*in, "key"), .name = nameIn(*in), .lockable = lockableIn(*in), .files = {}};
    refuseRepeatedKeys(*in, "An item", item.key);
    if (item.key.empty() || item.key.size() > kLongestKey || !isMadeOf(item.key, "") ||
        kDigits.find(item.key.front()) != std::string_view::npos)
      throw Fault{formatted("\"%@\" is no key: it must be of 1 to 64 letters and digits and begin with a letter.",
                            shortened(item.key, kLongestKey)),
                  item.key};
    for (const auto& other : app.items) {
      if (compareIgnoringCase(other.key, item.key) == 0)
        throw Fault{formatted("Two items have the key \"%@\".", item.key), item.key};
      if (compareIgnoringCase(other.name, item.name) == 0)
        throw Fault{formatted("Two items are called \"%@\".", item.name), item.name};
    }
    item.files = textsIn(*in, "files", kMost);
    if (in->find("secrets")) item.secrets = textIn(*in, "secrets");
    if (!item.secrets.empty() && !isName(item.secrets))
      throw Fault{"\"secrets\" must be a text of 100 bytes or fewer, such as \"stream keys\".", "secrets"};
    for (const std::string& pattern : item.files) checkPattern(pattern, app.identifiers);
    return item;
  }

  void checkPattern(const std::string& pattern, const std::vector<std::string>& identifiers) {
    if (const std::string fault = rules_.faultOf(pattern, identifiers); !fault.empty())
      throw Fault{formatted("\"%@\" %@.", shortened(pattern, 200), fault), pattern};
    if (!patterns_.insert(pattern).second) throw Fault{formatted("\"%@\" stands there twice.", pattern), pattern};
    deep_ += isDeep(pattern) ? 1 : 0;
    if (patterns_.size() > kMostPatterns) throw Fault{"It has more than 200 patterns."};
    if (deep_ > kMostDeep) throw Fault{"More than 20 of its patterns have two or three components with *."};
  }

  void remarkOnOthers(const PropertyListDictionary& in, const std::vector<std::string>& known) {
    constexpr std::size_t kMostRemarks = 20;
    for (const auto& [key, value] : in.entries()) {
      if (std::ranges::count(known, key) > 0 || read_.remarks.size() == kMostRemarks) continue;
      const auto nearest = nearestWord(std::string(shortened(key, kLongestName)), known);
      read_.remarks.push_back({formatted(nearest ? "\"%@\" means nothing and is passed over: is \"%@\" meant?"
                                                 : "\"%@\" means nothing and is passed over.",
                                         shortened(key, kLongestName), nearest.value_or("")),
                               key});
    }
  }

  const PatternRules& rules_;
  ReadDefinition read_;
  std::set<std::string> patterns_;
  std::size_t deep_ = 0;
};

PropertyListArray textArray(const std::vector<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

std::string_view folderOf(Base base) {
  switch (base) {
    case Base::Preferences:
      return "~/Library/Preferences/";
    case Base::ApplicationSupport:
      return "~/Library/Application Support/";
    case Base::Documents:
      break;
  }
  return "~/Documents/";
}

// Once: the table never changes.
struct BuiltInNames {
  std::map<std::string, std::string> names;
  std::map<std::string, TakenKey> keys;
  std::vector<TakenPattern> patterns;

  BuiltInNames() {
    for (const BuiltInApp& app : builtInCatalog()) {
      names[lowerCased(app.name)];
      for (const BuiltInItem& item : app.items) {
        keys[lowerCased(item.key)];
        for (const BuiltInFile& file : item.files)
          patterns.push_back({foldedComponents(std::string(folderOf(file.base)) + file.pattern), app.name});
      }
    }
    for (const std::string_view name : kReservedNames) names[std::string(name)];
    for (const std::string_view key : kReservedKeys) keys[std::string(key)];
  }
};

const BuiltInNames& builtInNames() {
  static const BuiltInNames names;
  return names;
}

}  // namespace

// A fault is thrown from deep inside and ends here.
std::variant<ReadDefinition, DefinitionFault> readDefinition(const PropertyList& value, const PatternRules& rules) {
  try {
    return Reader(rules).read(value);
  } catch (Fault& fault) {
    return std::move(fault);
  }
}

PropertyList propertyListOf(const AppDefinition& definition) {
  PropertyListArray items;
  for (const AppDefinition::Item& item : definition.items) {
    PropertyListDictionary entry;
    entry.append("key", item.key);
    entry.append("name", item.name);
    if (!item.lockable) entry.append("lockable", false);
    if (!item.secrets.empty()) entry.append("secrets", item.secrets);
    entry.append("files", textArray(item.files));
    items.push_back(std::move(entry));
  }
  PropertyListDictionary app;
  app.append("format", 1);
  app.append("name", definition.name);
  app.append("identifier", textArray(definition.identifiers));
  app.append("icon", definition.icon);
  if (!definition.projects.empty()) app.append("projects", textArray(definition.projects));
  app.append("items", std::move(items));
  return app;
}

TakenNames::TakenNames() : names_(builtInNames().names), keys_(builtInNames().keys) {}

DefinitionFault TakenNames::faultOf(const AppDefinition& definition) const {
  if (count_ == kMostDefinitions) return {"There are 100 definitions already."};
  if (deep_ + deepPatternsOf(definition) > kMostDeepOfAll)
    return {"With those before it there are more than 200 patterns that have two or three components with *."};
  if (const auto taken = names_.find(lowerCased(definition.name)); taken != names_.end())
    return {formatted(taken->second.empty() ? "Another application is called \"%@\", or the name is reserved."
                                            : "Another application is called \"%@\": %@ defines it.",
                      definition.name, taken->second),
            definition.name};
  if (DefinitionFault fault = faultOfKeys(definition); !fault.reason.empty()) return fault;
  for (const std::string& extension : definition.projects)
    if (const auto taken = projects_.find(extension); taken != projects_.end())
      return {formatted("Files that end in \".%@\" are the projects of another application: %@ says so.", extension,
                        taken->second),
              extension};
  return faultOfPatterns(definition);
}

DefinitionFault TakenNames::faultOfKeys(const AppDefinition& definition, const std::vector<std::string>& except) const {
  for (const AppDefinition::Item& item : definition.items) {
    const auto taken = keys_.find(lowerCased(item.key));
    const bool isTaken = taken != keys_.end() && std::ranges::count(except, taken->second.application) == 0;
    if (isTaken && !taken->second.source.empty())
      return {formatted("The key \"%@\" is taken: %@ has it.", item.key, taken->second.source), item.key};
    if (isTaken || lowerCased(item.key).starts_with(kUserKey))
      return {formatted("The key \"%@\" is taken or reserved.", item.key), item.key};
  }
  return {};
}

// What is looked after twice would be trashed with the wrong application.
DefinitionFault TakenNames::faultOfPatterns(const AppDefinition& definition,
                                            const std::vector<std::string>& except) const {
  for (const AppDefinition::Item& item : definition.items)
    for (const std::string& pattern : item.files) {
      const auto components = foldedComponents(pattern);
      for (const auto* patterns : {&builtInNames().patterns, &patterns_})
        for (const TakenPattern& taken : *patterns)
          if (couldMeet(components, taken.components) && std::ranges::count(except, taken.application) == 0)
            return {formatted("\"%@\" could match what belongs to %@.", pattern, taken.application), pattern};
    }
  return {};
}

void TakenNames::take(const AppDefinition& definition) {
  const std::string source = definition.source.empty() ? "another definition" : definition.source;
  names_[lowerCased(definition.name)] = source;
  for (const AppDefinition::Item& item : definition.items) {
    keys_[lowerCased(item.key)] = {definition.name, source};
    for (const std::string& pattern : item.files) patterns_.push_back({foldedComponents(pattern), definition.name});
  }
  for (const std::string& extension : definition.projects) projects_[extension] = source;
  deep_ += deepPatternsOf(definition);
  ++count_;
}

void TakenNames::release(const AppDefinition& definition) {
  names_.erase(lowerCased(definition.name));
  for (const AppDefinition::Item& item : definition.items) keys_.erase(lowerCased(item.key));
  std::erase_if(patterns_, [&](const TakenPattern& pattern) { return pattern.application == definition.name; });
  for (const std::string& extension : definition.projects) projects_.erase(extension);
  deep_ -= deepPatternsOf(definition);
  --count_;
}

}  // namespace vantory
