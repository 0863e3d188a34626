// Stores and restores size and columns.
#include "window/application/WindowMemory.h"

#include <QFile>

namespace vantory {

namespace {

// A relative value is none.
QString file(const std::string& home) {
  const QByteArray configured = qgetenv("XDG_STATE_HOME");
  const QString folder = configured.startsWith('/') ? QFile::decodeName(configured)
                                                    : QFile::decodeName(home.c_str()) + QStringLiteral("/.local/state");
  return folder + QStringLiteral("/vantory/window.conf");
}

}  // namespace

WindowMemory::WindowMemory(const std::string& home) : settings_(file(home), QSettings::IniFormat) {}

}  // namespace vantory
