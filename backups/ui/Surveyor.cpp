// Makes a survey on another thread, and publishes it on the main thread.
#include "backups/ui/Surveyor.h"

#include "services/Runtime.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory {

Surveyor& Surveyor::shared() {
  return Runtime::current().shared<Surveyor>();
}

void Surveyor::start() {
  for (const char* name : {"QWVantoryAppRefresh", "QWVantoryBackupsRefresh", "QWVantoryTrashTabSwitch",
                           "QWVantoryBackupTabSwitch", "QWVantoryLockTabSwitch"})
    observations_.push_back(NotificationCenter::shared().observe(name, [this] { renew(); }));
}

void Surveyor::stop() {
  observations_.clear();
  ++wanted_;
}

// Where the system has no thread to give, what was known stays.
void Surveyor::renew() {
  const std::uint64_t number = ++wanted_;
  BackgroundThreads::shared().start(
      [this, number, request = SurveyRequest::forEverything()] { carryOut(request, number); },
      BackgroundThreads::Kind::Look);
}

void Surveyor::carryOut(const SurveyRequest& request, std::uint64_t number) {
  auto made = request.carryOut([&] { return wanted_ != number; });
  if (!made) return;
  MainThread::shared().runAndWait([&] {
    if (wanted_ != number) return;
    survey_ = std::move(made);
    NotificationCenter::shared().post(kRefresh);
  });
}

}  // namespace vantory
