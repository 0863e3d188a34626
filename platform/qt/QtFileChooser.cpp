#include "platform/qt/QtFileChooser.h"

#include <QFile>
#include <QFileDialog>

#include "platform/qt/DisplayText.h"

namespace vantory {

namespace {

// Endings are compared in lower case.
QString nameFilter(const std::vector<std::string>& extensions) {
  QStringList patterns;
  for (const std::string& extension : extensions) {
    const QString ending = displayText(extension);
    patterns << QStringLiteral("*.") + ending << QStringLiteral("*.") + ending.toUpper();
  }
  return patterns.isEmpty() ? QStringLiteral("All files (*)") : QStringLiteral("Files (%1)").arg(patterns.join(' '));
}

QFileDialog::FileMode fileMode(const FileChooser::Request& request) {
  if (request.folders) return QFileDialog::Directory;
  return request.several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile;
}

}  // namespace

std::vector<std::string> QtFileChooser::choose(const Request& request) {
  QFileDialog dialog(parent_);
  dialog.setWindowModality(Qt::WindowModal);
  dialog.setFileMode(fileMode(request));
  dialog.setOption(QFileDialog::ShowDirsOnly, request.folders);
  dialog.setOption(QFileDialog::ReadOnly, request.folders && !request.extensions.empty());
  if (!request.folders) dialog.setNameFilter(nameFilter(request.extensions));
  if (dialog.exec() != QDialog::Accepted) return {};
  std::vector<std::string> paths;
  for (const QString& path : dialog.selectedFiles()) paths.push_back(QFile::encodeName(path).toStdString());
  return paths;
}

}  // namespace vantory
