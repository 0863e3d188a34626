// Check boxes and numbers that follow settings.
#include "window/controls/BoundControls.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <algorithm>

namespace vantory {

namespace {

// A number that is not finished must not be replaced under the person's hands.
bool isBeingTypedIn(const QSpinBox& box) {
  const auto* text = box.findChild<QLineEdit*>();
  return box.hasFocus() && text && text->isModified();
}

void finishTyping(const QSpinBox& box) {
  if (auto* text = box.findChild<QLineEdit*>()) text->setModified(false);
}

// A value from outside of the range shows as its nearest end, and stays as it is in the settings.
int within(const QSpinBox& box, long long value) {
  return static_cast<int>(std::clamp<long long>(value, box.minimum(), box.maximum()));
}

}  // namespace

// By clicks, so that only the person's changes are told, and not those of show().
void BoundControls::bind(const std::string& key, QCheckBox& box) {
  QObject::connect(&box, &QCheckBox::clicked, &box, [this, key](bool ticked) { tell(key, ticked ? 1 : 0); });
  controls_[key] = [&box](long long value) { box.setChecked(value == 1); };
}

void BoundControls::bind(const std::string& key, QSpinBox& box) {
  // A number counts when it is finished, not digit by digit.
  box.setKeyboardTracking(false);
  QObject::connect(&box, &QSpinBox::editingFinished, &box, [&box] { finishTyping(box); });
  QObject::connect(&box, &QSpinBox::valueChanged, &box, [this, key, &box](int value) {
    finishTyping(box);
    tell(key, value);
  });
  controls_[key] = [&box](long long value) {
    if (isBeingTypedIn(box)) return;
    // What comes from the settings is not told back to them.
    const QSignalBlocker silence(box);
    box.setValue(within(box, value));
  };
}

void BoundControls::show(const std::string& key, long long value) const {
  const auto control = controls_.find(key);
  if (control != controls_.end()) control->second(value);
}

void BoundControls::tell(const std::string& key, long long value) const {
  if (onChange) onChange(key, value);
}

}  // namespace vantory
