// Lays the window out, and takes what is dropped onto it.
#include "window/application/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "tasks/ui/DocumentPaths.h"
#include "tasks/ui/WebPages.h"
#include "window/appearance/DisplayText.h"
#include "window/appearance/Icons.h"
#include "window/application/WindowMemory.h"
#include "window/application/WindowMenus.h"
#include "window/controls/PaneToolbar.h"
#include "window/dialogs/AboutDialog.h"
#include "window/outline/QWHeaderCheckCell.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

constexpr QSize kFirstSize(800, 600);
constexpr QSize kLeastSize(640, 400);  // leaves the names of applications their room
constexpr std::array kPanes = {Pane::Trash, Pane::Backup, Pane::Lock, Pane::Restore};

// Read from the addresses as they are: names may be of any bytes.
std::vector<std::string> droppedPaths(const QMimeData& data) {
  std::vector<std::string> addresses;
  for (const std::string& line : split(data.data(QStringLiteral("text/uri-list")).toStdString(), '\n'))
    if (!line.starts_with('#')) addresses.emplace_back(trimmed(line));
  return documentPaths(addresses, "/");
}

QLabel* makeNotice() {
  auto* notice = new QLabel;
  notice->setWordWrap(true);
  notice->setMargin(10);
  notice->setAutoFillBackground(true);
  notice->setBackgroundRole(QPalette::ToolTipBase);
  notice->setForegroundRole(QPalette::ToolTipText);
  notice->hide();
  return notice;
}

void showIn(QLabel& notice, const std::string& text) {
  notice.setText(displayText(text));
  notice.setVisible(!text.empty());
}

// Each pane's columns have widths of their own. Those of an earlier version may be others.
QString columnsKey(Pane pane) {
  return QStringLiteral("surveyedColumns%1").arg(static_cast<int>(pane));
}

}  // namespace

MainWindow::MainWindow()
    : trash_(new TrashPane),
      backup_(new BackupPane),
      lock_(new LockPane),
      restore_(new RestorePane),
      menus_(new WindowMenus(this)),
      notice_(makeNotice()),
      warning_(makeNotice()),
      stack_(new QStackedWidget),
      toolbar_(new PaneToolbar(this)) {
  setWindowTitle(QApplication::applicationDisplayName());
  // The first paint need not wait for the layout of the others.
  for (const Pane each : kPanes) {
    pane(each).setParent(this);
    pane(each).hide();
  }
  auto* content = new QWidget;
  auto* layout = new QVBoxLayout(content);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(notice_);
  layout->addWidget(warning_);
  layout->addWidget(stack_, 1);
  setCentralWidget(content);
  makeToolbar();
  makeMenus();
  setAcceptDrops(true);
  setMinimumSize(kLeastSize);
  resize(kFirstSize);
  MainWindow::showPane(Pane::Trash);
}

OutlinePane& MainWindow::pane(Pane pane) const {
  switch (pane) {
    case Pane::Trash:
      return *trash_;
    case Pane::Backup:
      return *backup_;
    case Pane::Lock:
      return *lock_;
    case Pane::Restore:
      break;
  }
  return *restore_;
}

Pane MainWindow::shownPane() const {
  return *std::ranges::find_if(kPanes, [this](Pane each) { return &pane(each) == stack_->currentWidget(); });
}

// --- Toolbar ---------------------------------------------------------------------------------------------------------

void MainWindow::makeToolbar() {
  addToolBar(toolbar_);
  toolbar_->setObjectName(QStringLiteral("panes"));
  addPaneItem(Pane::Trash, QStringLiteral("&Trash"), QStringLiteral("trash"));
  addPaneItem(Pane::Backup, QStringLiteral("&Backup"), QStringLiteral("backup"));
  addPaneItem(Pane::Lock, QStringLiteral("&Lock"), QStringLiteral("lock"));
  addPaneItem(Pane::Restore, QStringLiteral("&Restore"), QStringLiteral("restore"));
  auto* space = new QWidget;
  space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  toolbar_->addWidget(space);
  addLinkItem();
}

// The letters with ampersands choose the panes by the keyboard.
void MainWindow::addPaneItem(Pane pane, const QString& title, const QString& symbol) {
  toolbar_->addPane(title, symbol, [this, pane] {
    if (actions_.choosePane) actions_.choosePane(pane);
  });
}

void MainWindow::addLinkItem() {
  linkItem_ = toolbar_->addItem(QStringLiteral("More Tools"), QStringLiteral("link"));
  linkItem_->setToolTip(QStringLiteral("The maker's other tools, on the web"));
  connect(linkItem_, &QAction::triggered, this, [this] {
    if (actions_.openLink) actions_.openLink();
  });
}

void MainWindow::removeLinkItem() {
  if (linkItem_) linkItem_->setVisible(false);
}

// --- Menus -----------------------------------------------------------------------------------------------------------

void MainWindow::makeMenus() {
  QMenu& file = *menuBar()->addMenu(QStringLiteral("&File"));
  auto* help = new QMenu(QStringLiteral("&Help"), this);
  // Filled here already, though its place is at the end of the bar.
  QMenu& edit = *menuBar()->addMenu(QStringLiteral("&Edit"));
  menus_->addTo(file, edit, *help);
  connect(&edit, &QMenu::aboutToShow, this, [this] {
    if (onAttention) onAttention();
  });
  QAction* quit = file.addAction(QStringLiteral("&Quit"), QKeySequence(QKeySequence::Quit));
  quit->setMenuRole(QAction::QuitRole);
  connect(quit, &QAction::triggered, this, [this] { close(); });
  taskMenu_ = menuBar()->addMenu(QStringLiteral("T&ask"));
  makeViewMenu();
  menuBar()->addMenu(help);
  QAction* about = help->addAction(QStringLiteral("&About Vantory"));
  about->setMenuRole(QAction::AboutRole);
  connect(about, &QAction::triggered, this, [this] { showAbout(); });
}

void MainWindow::makeViewMenu() {
  QMenu& view = *menuBar()->addMenu(QStringLiteral("&View"));
  view.addActions(toolbar_->panes().actions());
  view.addSeparator();
  tickAll_ = view.addAction(QStringLiteral("Tick or &Untick All"), QKeySequence(QKeySequence::SelectAll));
  connect(tickAll_, &QAction::triggered, this, [this] { tickAll(); });
  QMenu& sort = *view.addMenu(QStringLiteral("&Sort By"));
  sortMenu_ = sort.menuAction();
  for (const auto& [title, column] : {std::pair{"&Name", "name"}, {"&Date", "date"}, {"&Size", "size"}})
    connect(sort.addAction(QLatin1String(title)), &QAction::triggered, this, [this, column = std::string(column)] {
      if (actions_.sort) actions_.sort(column);
    });
  view.addSeparator();
  QAction* collapse = view.addAction(QStringLiteral("&Close All Rows"));
  connect(collapse, &QAction::triggered, this, [this] { pane(shownPane()).outline().collapseAll(); });
}

// As a click on the header's check box, where the pane has one.
void MainWindow::tickAll() {
  QWHeaderCheckCell& check = pane(shownPane()).outline().headerCheck();
  if (!check.isHidden() && check.onClick) check.onClick();
}

void MainWindow::showAbout() {
  auto* about = new AboutDialog(
      QLatin1String(pages::kProgram),
      [this] {
        if (actions_.openHome) actions_.openHome();
      },
      this);
  about->setAttribute(Qt::WA_DeleteOnClose);
  about->open();
}

// --- Panes -----------------------------------------------------------------------------------------------------------

// The Task menu holds the commands of the pane that is shown.
void MainWindow::showPane(Pane shown) {
  OutlinePane& widget = pane(shown);
  toolbar_->panes().actions().at(static_cast<int>(shown))->setChecked(true);
  putIntoStack(widget);
  stack_->setCurrentWidget(&widget);
  taskMenu_->clear();
  widget.addCommandsTo(*taskMenu_);
  tickAll_->setEnabled(!widget.outline().headerCheck().isHidden());
  sortMenu_->setEnabled(shown == Pane::Restore);
  widget.outline().setFocus();
}

// Laid out only when it is first in the stack.
void MainWindow::putIntoStack(OutlinePane& pane) {
  if (stack_->indexOf(&pane) < 0) stack_->addWidget(&pane);
}

// A later start of the program ends here as well, instead of opening a second window.
void MainWindow::bringToFront() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
  // A question that is open stays above it.
  if (QWidget* sheet = QApplication::activeModalWidget()) {
    sheet->raise();
    sheet->activateWindow();
  }
}

void MainWindow::showNotice(const std::string& text) {
  showIn(*notice_, text);
}

void MainWindow::showWarning(const std::string& text) {
  showIn(*warning_, text);
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && isActiveWindow() && onAttention) onAttention();
}

// Refused while a task runs, unless the person wants to quit after it.
void MainWindow::closeEvent(QCloseEvent* event) {
  event->setAccepted(!mayClose || mayClose());
}

// All that can wait happens after the first paint, when the window is on the screen.
void MainWindow::paintEvent(QPaintEvent* event) {
  QMainWindow::paintEvent(event);
  // Its panes are painted in the same go.
  if (std::exchange(isPainted_, true)) return;
  QTimer::singleShot(0, this, [this] {
    for (const Pane each : kPanes) putIntoStack(pane(each));
    if (onFirstPaint) onFirstPaint();
  });
}

// --- Files dropped onto it -------------------------------------------------------------------------------------------

// Only where the program can open every file of them.
void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const auto paths = droppedPaths(*event->mimeData());
  if (!paths.empty() && std::ranges::all_of(paths, isKnownDocument)) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  if (actions_.openFiles) actions_.openFiles(droppedPaths(*event->mimeData()));
}

// Size and place of the window, and the widths of each pane's columns.
void MainWindow::remember(WindowMemory& memory) const {
  memory.keep(QStringLiteral("geometry"), saveGeometry());
  for (const Pane each : kPanes) memory.keep(columnsKey(each), pane(each).outline().layoutState());
}

void MainWindow::recall(const WindowMemory& memory) {
  restoreGeometry(memory.bytes(QStringLiteral("geometry")));
  for (const Pane each : kPanes) pane(each).outline().restoreLayoutState(memory.bytes(columnsKey(each)));
}

}  // namespace vantory
