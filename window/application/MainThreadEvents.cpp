// Wakes Qt's loop when work waits.
#include "window/application/MainThreadEvents.h"

#include <QMetaObject>

#include "services/threads/MainThread.h"

namespace vantory {

MainThreadEvents::MainThreadEvents(MainThread& mainThread) : mainThread_(mainThread) {
  // Called on any thread; the queued call runs on the thread that the context belongs to.
  mainThread.wake = [this] {
    QMetaObject::invokeMethod(
        &context_, [this] { mainThread_.runPending(); }, Qt::QueuedConnection);
  };
}

MainThreadEvents::~MainThreadEvents() {
  mainThread_.wake = nullptr;
}

}  // namespace vantory
