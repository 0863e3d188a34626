// Lays out the sheet, and tells its controller of changes.
#include "window/dialogs/BackupDialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "window/appearance/DisplayText.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

constexpr int kWidth = 460;
constexpr int kListHeight = 130;

// Nobody may have asked to be told.
void call(const std::function<void()>& action) {
  if (action) action();
}

}  // namespace

BackupDialog::BackupDialog(QWidget* parent)
    : QDialog(parent),
      nameField_(new QLineEdit(this)),
      keptName_(makeSentence()),
      contents_(makeSentence()),
      remark_(makeSentence()),
      disclosure_(new QToolButton(this)),
      projects_(new QListWidget(this)),
      addButton_(new PushButton(QStringLiteral("&Add…"), this)),
      removeButton_(new PushButton(QStringLiteral("Re&move"), this)),
      confirmButton_(new PushButton(this)),
      handlingNotice_(makeHandlingNotice()),
      projectArea_(makeProjectArea()) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QStringLiteral("Backup"));
  auto* nameLabel = new QLabel(QStringLiteral("&Name:"), this);
  nameLabel->setBuddy(nameField_);
  nameField_->setMinimumWidth(kWidth - 60);
  disclosure_->setText(QStringLiteral("Linked &projects"));
  disclosure_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  disclosure_->setAutoRaise(true);

  auto* nameRow = new QHBoxLayout;
  nameRow->addWidget(nameLabel);
  nameRow->addWidget(nameField_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 20, 20, 16);
  layout->setSpacing(10);
  layout->addLayout(nameRow);
  for (QLabel* sentence : {keptName_, contents_, remark_}) layout->addWidget(sentence);
  layout->addWidget(disclosure_, 0, Qt::AlignLeading);
  layout->addWidget(projectArea_);
  layout->addWidget(makeButtons());
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connectParts();
}

// Takes no place while it is empty.
QLabel* BackupDialog::makeSentence() {
  auto* sentence = new QLabel(this);
  sentence->setWordWrap(true);
  sentence->setMaximumWidth(kWidth);
  sentence->hide();
  return sentence;
}

void BackupDialog::showSentence(QLabel& label, const std::string& text) {
  label.setText(displayText(text));
  label.setVisible(!text.empty());
}

// All that the triangle shows and hides.
QWidget* BackupDialog::makeProjectArea() {
  auto* area = new QWidget(this);
  auto* sentence = new QLabel(QStringLiteral("When you open one of these projects through Vantory, this backup is "
                                             "restored first."),
                              area);
  sentence->setWordWrap(true);
  projects_->setAccessibleName(QStringLiteral("Linked projects"));
  projects_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  projects_->setTextElideMode(Qt::ElideMiddle);
  projects_->setFixedHeight(kListHeight);
  auto* buttons = new QVBoxLayout;
  buttons->addWidget(addButton_);
  buttons->addWidget(removeButton_);
  buttons->addStretch();
  auto* list = new QHBoxLayout;
  list->addWidget(projects_, 1);
  list->addLayout(buttons);
  auto* layout = new QVBoxLayout(area);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(sentence);
  layout->addLayout(list);
  layout->addWidget(handlingNotice_);
  return area;
}

// Shown only while another program opens projects.
QWidget* BackupDialog::makeHandlingNotice() {
  auto* notice = new QWidget(this);
  auto* words = new QLabel(QStringLiteral("Projects are not opened through Vantory yet."), notice);
  auto* enable = new PushButton(QStringLiteral("&Open Projects with Vantory"), notice);
  enable->setAutoDefault(false);
  connect(enable, &QPushButton::clicked, this, [this] { call(actions_.enableHandling); });
  auto* layout = new QHBoxLayout(notice);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(words, 1);
  layout->addWidget(enable);
  return notice;
}

QWidget* BackupDialog::makeButtons() {
  auto* row = new QWidget(this);
  auto* cancel = new PushButton(QStringLiteral("&Cancel"), row);
  cancel->setAutoDefault(false);
  confirmButton_->setDefault(true);
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
  connect(confirmButton_, &QPushButton::clicked, this, [this] { call(actions_.confirm); });
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 6, 0, 0);
  layout->setSpacing(8);
  layout->addStretch();
  layout->addWidget(confirmButton_);
  layout->addWidget(cancel);
  return row;
}

// Return is for the default button alone.
void BackupDialog::connectParts() {
  for (QPushButton* button : {addButton_, removeButton_}) button->setAutoDefault(false);
  connect(disclosure_, &QToolButton::clicked, this,
          [this] { call(projectArea_->isHidden() ? actions_.expand : actions_.contract); });
  connect(nameField_, &QLineEdit::textEdited, this, [this] { call(actions_.nameChanged); });
  connect(addButton_, &QPushButton::clicked, this, [this] { call(actions_.addProject); });
  connect(removeButton_, &QPushButton::clicked, this, [this] { call(actions_.removeProject); });
  connect(projects_, &QListWidget::itemSelectionChanged, this,
          [this] { removeButton_->setEnabled(!projects_->selectedItems().isEmpty()); });
}

// The name is selected, so that typing replaces it.
void BackupDialog::show(const std::string& confirmTitle) {
  confirmButton_->setText(displayText(confirmTitle));
  nameField_->selectAll();
  nameField_->setFocus();
  open();
}

// The toolkit's own close() would tell the controller of a cancel.
void BackupDialog::close() {
  QDialog::hide();
}

// The controller closes it: an edit that is given up has a backup to be selected again.
void BackupDialog::reject() {
  call(actions_.cancel);
}

// A name that is no text is shown with escapes; untouched, it is the one that was set.
std::string BackupDialog::name() const {
  const QString text = nameField_->text();
  return text == displayText(givenName_) ? givenName_ : text.toStdString();
}

void BackupDialog::setName(const std::string& name) {
  givenName_ = name;
  nameField_->setText(displayText(name));
}

void BackupDialog::setRemark(const std::string& text) {
  showSentence(*remark_, text);
}

// Read out with the field.
void BackupDialog::setKeptName(const std::string& text) {
  showSentence(*keptName_, text);
  nameField_->setAccessibleDescription(keptName_->text());
}

void BackupDialog::setContents(const std::string& text) {
  showSentence(*contents_, text);
}

void BackupDialog::setProjects(const std::vector<std::string>& projects) {
  projects_->clear();
  for (const std::string& path : projects) {
    auto* item = new QListWidgetItem(displayText(path), projects_);
    // A path that is too long is shown without its middle.
    item->setToolTip(item->text());
  }
  removeButton_->setEnabled(false);
}

// In rising order, however they were selected.
std::vector<std::size_t> BackupDialog::selectedProjects() const {
  std::vector<std::size_t> rows;
  for (const QModelIndex& index : projects_->selectionModel()->selectedRows())
    rows.push_back(static_cast<std::size_t>(index.row()));
  std::sort(rows.begin(), rows.end());
  return rows;
}

// The arrow is a picture only; the description says it to those who cannot see it.
void BackupDialog::setProjectListShown(bool shown) {
  disclosure_->setAccessibleDescription(shown ? QStringLiteral("Shown below") : QStringLiteral("Hidden"));
  disclosure_->setArrowType(shown ? Qt::DownArrow : Qt::RightArrow);
  projectArea_->setVisible(shown);
}

void BackupDialog::setHandlingNoticeShown(bool shown) {
  handlingNotice_->setVisible(shown);
}

}  // namespace vantory
