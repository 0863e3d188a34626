// Lays the pane out.
#include "window/settings/AutosavePane.h"

#include <QCheckBox>
#include <QSpinBox>

#include "services/settings/SettingsKeys.h"
#include "window/controls/BoundControls.h"

namespace vantory {

AutosavePane::AutosavePane(BoundControls& controls) {
  auto* periodic = new QCheckBox(QStringLiteral("&Back up automatically"), this);
  add(periodic, QStringLiteral("Also while Vantory is not open."));
  controls.bind(setting::kPeriodicAutosave, *periodic);

  auto* days = new QSpinBox(this);
  days->setRange(1, 3650);
  addNumber(QStringLiteral("&Every"), days, QStringLiteral("days"),
            QStringLiteral("The time from one automatic backup to the next."));
  controls.bind(setting::kAutosaveFrequency, *days);

  auto* most = new QSpinBox(this);
  most->setRange(0, 9999);
  addNumber(QStringLiteral("&Keep the newest"), most, QStringLiteral("automatic backups"),
            QStringLiteral("Older ones are deleted for good when Vantory makes another before it trashes or restores. "
                           "Backups that you named yourself always stay."));
  controls.bind(setting::kMaxAutoBackups, *most);
}

}  // namespace vantory
