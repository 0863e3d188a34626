// A property-list dictionary in a file that several programs change.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/PropertyList.h"
#include "platform/FileSystem.h"

namespace vantory {

// Every change reads the file anew, changes it and replaces it atomically, under a lock that other processes respect. A
// damaged file counts as empty and is set aside under another name before it is replaced; one that cannot be read is
// never replaced. Both are told in the log. Any thread.
class SettingsFile {
 public:
  explicit SettingsFile(std::string path);

  // Empty when the file is missing, damaged or unreadable.
  PropertyListDictionary read() const;
  // The value of one key. Costs no more than a look at the file's date while nobody changes it.
  std::optional<PropertyList> find(const std::string& key) const;
  // False when the file is there and damaged or unreadable.
  bool isUsable() const;

  enum class Durability { Lasting, Passing };
  // Applies the change under the folder's lock (waited for at most two seconds) and replaces the file; the folder is
  // made when missing. A failure is in the log; the file is then as it was.
  Status change(const std::function<void(PropertyListDictionary&)>& change, Durability durability);

 private:
  enum class State { Sound, Missing, Damaged, Unreadable };
  struct Content {
    State state = State::Missing;
    std::optional<FileInfo> info;  // of the file it was read from; none when there was none
    std::string reason;            // why it is unreadable
    PropertyListDictionary values;
  };
  // What the log heard last of each file: nothing is as good as sound.
  struct Told {
    std::mutex mutex;
    std::map<std::string, State> states;
  };

  Content load() const;
  std::shared_ptr<const Content> current() const;
  void tell(const Content& content) const;
  bool isNews(State state) const;
  void forget() const;
  Status replace(const std::function<void(PropertyListDictionary&)>& change, Durability durability);
  Status setAside() const;

  const std::string path_;
  mutable std::mutex mutex_;
  mutable std::shared_ptr<const Content> cached_;
};

}  // namespace vantory
