// Wakes Qt's loop when work waits.
#include "window/application/MainThreadEvents.h"

#include <QMetaObject>

#include "services/threads/MainThread.h"

namespace vantory {

MainThreadEvents::MainThreadEvents(MainThread& mainThread) : mainThread_(mainThread) {
  mainThread.wake = [this] {
    QMetaObject::invokeMethod(
        &context_, [this] { mainThread_.runPending(); }, Qt::QueuedConnection);
  };
}

MainThreadEvents::~MainThreadEvents() {
  mainThread_.wake = nullptr;
}

}  // namespace vantory
