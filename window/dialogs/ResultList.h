// What became of several files, as a list.
#pragma once

#include <QTreeWidget>
#include <string>
#include <vector>

#include "services/messages/QWAlert.h"

namespace vantory {

class ResultList : public QTreeWidget {
 public:
  ResultList(std::vector<AlertRow> rows, QWidget* parent);

  // Of the selected row; empty where that is no file's.
  std::string selectedPath() const;

  // The selected row's file and cause, whole, on a line each.
  QString selectedInWords() const;

  QSize sizeHint() const override;

 private:
  const std::vector<AlertRow> rows_;
};

}  // namespace vantory
