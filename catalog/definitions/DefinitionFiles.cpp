// Reads the folders of catalog files one after the other, and joins what they say.
#include "catalog/definitions/DefinitionFiles.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "base/Text.h"
#include "platform/StandardFolders.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

constexpr std::size_t kMostFiles = 200;  // of a folder
constexpr const char* kMachineFolder = "catalogs";
constexpr const char* kUserFolder = "Quarrywell/Vantory/Catalogs";

const Platform& platform() {
  return Runtime::current().platform();
}

std::vector<std::string> folders() {
  std::vector<std::string> found;
  for (const std::string& folder : platform().folders.programDataFolders())
    found.push_back(paths::join(folder, kMachineFolder));
  // What a user writes must not guide the superuser's hand.
  if (platform().users.isSuperuser()) return found;
  if (const auto support = QWLocalPaths::appSupportDirectory(true)) found.push_back(paths::join(*support, kUserFolder));
  return found;
}

// Blanks instead of comments, so that all else keeps its place.
std::string withoutComments(std::string_view bytes) {
  constexpr std::pair<std::string_view, std::string_view> kComments[] = {{"//", "\n"}, {"/*", "*/"}, {"<!--", "-->"}};
  std::string text(bytes);
  char quote = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (quote != 0) {
      if (text[i] == '\\')
        ++i;
      else if (text[i] == quote)
        quote = 0;
      continue;
    }
    if (text[i] == '"') quote = text[i];
    for (const auto& [begin, end] : kComments) {
      if (text.compare(i, begin.size(), begin) != 0) continue;
      const std::size_t stop = std::min(text.find(end, i), text.size());
      std::replace_if(
          text.begin() + static_cast<std::ptrdiff_t>(i), text.begin() + static_cast<std::ptrdiff_t>(stop),
          [](char byte) { return byte != '\n'; }, ' ');
    }
  }
  return text;
}

// The line, from 1, that the text stands in, not as a part of a longer word or path; none where it is not the only one.
std::optional<int> lineOf(std::string_view text, std::string_view file) {
  const std::string bytes = withoutComments(file);
  const auto isPartOfWord = [&](std::size_t position) {
    constexpr std::string_view kOthers = "/._-~*";
    return position < bytes.size() && (std::isalnum(static_cast<unsigned char>(bytes[position])) != 0 ||
                                       kOthers.find(bytes[position]) != std::string_view::npos);
  };
  if (text.empty()) return std::nullopt;
  std::optional<int> line;
  for (std::size_t at = bytes.find(text); at != std::string::npos; at = bytes.find(text, at + 1)) {
    if (isPartOfWord(at - 1) || isPartOfWord(at + text.size())) continue;
    if (line) return std::nullopt;
    line = 1 + static_cast<int>(std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
  }
  return line;
}

std::string complaint(const std::string& path, std::optional<int> line, std::string_view reason) {
  return line ? formatted("%@:%i: %@", path, *line, reason) : formatted("%@: %@", path, reason);
}

// Puts definitions together, those of a later folder before those of the same application from an earlier one.
class Joining {
 public:
  explicit Joining(const std::vector<std::string>& keptOut) : rules_(keptOut) {}

  void beginFolder() { earlier_ = definitions_.size(); }

  void add(const std::string& path, std::string_view bytes) {
    auto read = readDefinitionFile(path, bytes, rules_, complaints_);
    if (auto* fault = std::get_if<std::string>(&read)) return leaveOut(*fault);
    auto& definition = std::get<AppDefinition>(read);
    std::vector<std::size_t> hidden;
    for (std::size_t i = 0; i < definitions_.size(); ++i) {
      if (!shareIdentifier(definitions_[i], definition)) continue;
      if (i >= earlier_)
        return leaveOut(complaint(path, {}, formatted("%@ defines the same application.", definitions_[i].source)));
      hidden.push_back(i);
    }
    for (const std::size_t i : hidden) taken_.release(definitions_[i]);
    if (const DefinitionFault fault = taken_.faultOf(definition); !fault.reason.empty()) {
      for (const std::size_t i : hidden) taken_.take(definitions_[i]);
      return leaveOut(complaintAbout(path, bytes, fault));
    }
    if (hidden.size() > 1) complain(complaint(path, {}, remarkOnHidden(hidden)));
    for (auto i = hidden.rbegin(); i != hidden.rend(); ++i)
      definitions_.erase(definitions_.begin() + static_cast<std::ptrdiff_t>(*i));
    earlier_ -= hidden.size();
    taken_.take(definition);
    definitions_.push_back(std::move(definition));
  }

  void complain(std::string sentence) { complaints_.push_back(std::move(sentence)); }
  void leaveOut(const std::string& reason) { complain(reason + " The file is left out."); }

  DefinedCatalog finish() {
    std::sort(definitions_.begin(), definitions_.end(),
              [](const auto& left, const auto& right) { return compareNames(left.name, right.name) < 0; });
    DefinedCatalog catalog{{}, std::move(complaints_)};
    for (const AppDefinition& definition : definitions_) catalog.apps.push_back(definedApp(definition, rules_));
    return catalog;
  }

 private:
  // Whoever lists an identifier too many would miss an application and not know why.
  std::string remarkOnHidden(const std::vector<std::size_t>& hidden) const {
    std::vector<std::string> sources;
    sources.reserve(hidden.size());
    for (const std::size_t i : hidden) sources.push_back(definitions_[i].source);
    return remarkOnTakenPlaces(sources);
  }

  const PatternRules rules_;
  TakenNames taken_;
  std::vector<AppDefinition> definitions_;
  std::size_t earlier_ = 0;  // definitions of folders before the present one
  std::vector<std::string> complaints_;
};

}  // namespace

TrustedOwners ownersOfDefinitions() {
  return platform().users.isSuperuser() ? TrustedOwners::Superuser : TrustedOwners::UserAndSuperuser;
}

DefinedCatalog readDefinedCatalog(const std::vector<std::string>& keptOut) {
  const TrustedOwners owners = ownersOfDefinitions();
  std::unique_ptr<Joining> joining;  // where there is anything
  for (const std::string& folder : folders()) {
    const auto files =
        platform().trustedFiles.read(folder, ".plist", {.files = kMostFiles, .bytes = kLargestDefinition}, owners);
    if (files && files->empty()) continue;
    if (!joining) joining = std::make_unique<Joining>(keptOut);
    joining->beginFolder();
    if (!files) {
      joining->complain(formatted("%@. The catalog files in %@ are left out.", files.error().text, folder));
      continue;
    }
    for (const TrustedFile& file : *files) {
      if (file.bytes)
        joining->add(file.path, *file.bytes);
      else
        joining->leaveOut(file.bytes.error().text + ".");
    }
  }
  return joining ? joining->finish() : DefinedCatalog();
}

std::variant<AppDefinition, std::string> readDefinitionFile(const std::string& path, std::string_view bytes,
                                                            const PatternRules& rules,
                                                            std::vector<std::string>& remarks) {
  const auto value = bytes.size() <= kLargestDefinition ? parsePropertyList(bytes) : std::nullopt;
  if (!value && bytes.size() > kLargestDefinition) return complaint(path, {}, "It is larger than 64 KiB.");
  if (!value) return complaint(path, lineOfDamage(bytes), "It is no property list.");
  auto read = readDefinition(*value, rules);
  if (const auto* fault = std::get_if<DefinitionFault>(&read)) return complaintAbout(path, bytes, *fault);
  auto& [definition, unknown] = std::get<ReadDefinition>(read);
  for (const DefinitionFault& remark : unknown) remarks.push_back(complaintAbout(path, bytes, remark));
  definition.source = path;
  return std::move(definition);
}

std::string complaintAbout(const std::string& path, std::string_view bytes, const DefinitionFault& fault) {
  return complaint(path, lineOf(fault.at, bytes), fault.reason);
}

std::string remarkOnTakenPlaces(const std::vector<std::string>& files) {
  return formatted("It takes the place of %@: it has identifiers of all of them.", joined(files, " and "));
}

bool shareIdentifier(const AppDefinition& one, const AppDefinition& other) {
  return std::ranges::any_of(one.identifiers, [&](const std::string& identifier) {
    return std::ranges::any_of(other.identifiers,
                               [&](const std::string& second) { return compareIgnoringCase(identifier, second) == 0; });
  });
}

std::shared_ptr<QWApp> definedApp(const AppDefinition& definition, const PatternRules& rules) {
  const auto app = std::make_shared<QWApp>(std::make_shared<const QWApp::Definition>(
      QWApp::Definition{definition.name, definition.icon, definition.identifiers.front(),
                        std::make_shared<const AppDefinition>(definition)}));
  const auto shared = std::make_shared<const PatternRules>(rules);
  const QWPrefItem::PlaceRule matchRule = [shared, identifiers = definition.identifiers](
                                              const std::string& path, const std::string& found, RealPaths& realPaths) {
    return shared->faultOfMatch(path, found, identifiers, realPaths);
  };
  for (const AppDefinition::Item& item : definition.items) {
    std::vector<std::string> patterns;
    for (const std::string& pattern : item.files)
      if (auto resolved = rules.resolve(pattern)) patterns.push_back(std::move(*resolved));
    app->addItem(std::make_shared<QWPrefItem>(
        std::make_shared<const QWPrefItem::Definition>(QWPrefItem::Definition{.name = item.name,
                                                                              .key = item.key,
                                                                              .lockable = item.lockable,
                                                                              .files = std::move(patterns),
                                                                              .matchRule = matchRule})));
  }
  app->updateLockStatus();
  return app;
}

}  // namespace vantory
