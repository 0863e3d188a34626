// Controls that each show one setting and change it as soon as they are changed.
#pragma once

#include <functional>
#include <map>
#include <string>

class QCheckBox;
class QSpinBox;

namespace vantory {

// Main thread. Does not own the controls and is not used after they have gone.
class BoundControls {
 public:
  // A person changed a control. A typed number counts when it has been typed.
  std::function<void(const std::string& key, long long value)> onChange;

  // Ticked for 1, else not.
  void bind(const std::string& key, QCheckBox& box);
  void bind(const std::string& key, QSpinBox& box);

  // What is being typed stays. A key without a control is left out.
  void show(const std::string& key, long long value) const;

 private:
  void tell(const std::string& key, long long value) const;

  std::map<std::string, std::function<void(long long)>> controls_;
};

}  // namespace vantory
