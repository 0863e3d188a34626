// Opens the dialog, and answers paths as bytes.
#include "window/dialogs/QtFileChooser.h"

#include <QFileDialog>
#include <QUrl>

#include "window/appearance/DisplayText.h"

namespace vantory {

namespace {

// "fcp" gives "*.[fF][cC][pP]": not every desktop's dialog takes capitals for small letters by itself.
QString pattern(const QString& extension) {
  QString pattern = QStringLiteral("*.");
  for (const QChar letter : extension)
    pattern += letter.isLetter() ? QStringLiteral("[%1%2]").arg(letter.toLower()).arg(letter.toUpper()) : letter;
  return pattern;
}

// The kind that is asked for first, then all files where others may be chosen.
QStringList nameFilters(const FileChooser::Request& request) {
  const QString all = QStringLiteral("All files (*)");
  if (request.extensions.empty()) return {all};
  QStringList patterns;
  for (const std::string& extension : request.extensions) patterns << pattern(displayText(extension));
  QStringList filters{QStringLiteral("%1 (%2)").arg(displayText(request.kind), patterns.join(' '))};
  if (request.others) filters << all;
  return filters;
}

// A desktop's own dialog answers an address, which holds the bytes of a name that is no text as well.
std::string pathOf(const QUrl& chosen) {
  const QString encoded = chosen.path(QUrl::FullyEncoded);
  return QByteArray::fromPercentEncoding(encoded.toLatin1()).toStdString();
}

QFileDialog::FileMode fileMode(const FileChooser::Request& request) {
  if (request.folders) return QFileDialog::Directory;
  return request.several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile;
}

}  // namespace

// The desktop's own dialog where it has one.
std::vector<std::string> QtFileChooser::choose(const Request& request) {
  QFileDialog dialog(parent_);
  dialog.setWindowModality(Qt::WindowModal);
  dialog.setFileMode(fileMode(request));
  dialog.setOption(QFileDialog::ShowDirsOnly, request.folders);
  // No new folders among backups or projects.
  dialog.setOption(QFileDialog::ReadOnly, !request.folders || !request.extensions.empty());
  if (!request.folders) {
    dialog.setNameFilters(nameFilters(request));
    dialog.setOption(QFileDialog::HideNameFilterDetails);
  }
  if (dialog.exec() != QDialog::Accepted) return {};
  std::vector<std::string> paths;
  for (const QUrl& chosen : dialog.selectedUrls()) paths.push_back(pathOf(chosen));
  return paths;
}

}  // namespace vantory
