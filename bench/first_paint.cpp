// Linked into a program with a window: ends it as soon as its main window has been painted.

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QTimer>
#include <cstdlib>

namespace {

class FirstPaint : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && qobject_cast<QMainWindow*>(watched))
      QTimer::singleShot(0, [] { std::_Exit(0); });
    return false;
  }
};

void watch() {
  qApp->installEventFilter(new FirstPaint(qApp));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)
