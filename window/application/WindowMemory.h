// What the window was like when it was last closed.
#pragma once

#include <QByteArray>
#include <QSettings>
#include <string>

namespace vantory {

// Kept apart from the program's settings: in the user's folder for the state of programs. Nothing depends on it.
class WindowMemory {
 public:
  // The user's home folder.
  explicit WindowMemory(const std::string& home);

  QByteArray bytes(const QString& key) const { return settings_.value(key).toByteArray(); }
  void keep(const QString& key, const QVariant& value) { settings_.setValue(key, value); }

 private:
  QSettings settings_;
};

}  // namespace vantory
