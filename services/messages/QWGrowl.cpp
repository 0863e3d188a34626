// Posts notifications, and notices a click on one.
#include "services/messages/QWGrowl.h"

#include <charconv>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/Clock.h"
#include "platform/Messaging.h"
#include "services/GlobalSettings.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

// The date as it travels with a notification: nanoseconds since 1970.
std::string contextOf(Timestamp date) {
  return std::to_string(date.seconds * kNanosecondsPerSecond + date.nanoseconds);
}

// None for a text that is none of ours.
std::optional<Timestamp> dateOf(const std::string& context) {
  std::int64_t count = 0;
  const char* end = context.data() + context.size();
  const auto [rest, failure] = std::from_chars(context.data(), end, count);
  if (failure != std::errc() || rest != end || count < 0) return std::nullopt;
  return Timestamp{count / kNanosecondsPerSecond, static_cast<std::int32_t>(count % kNanosecondsPerSecond)};
}

// Hears what becomes of the notifications for as long as the program can be told.
class Bridge {
 public:
  Bridge() = default;
  ~Bridge() { notifications_.listen(nullptr); }
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  Status post(const std::string& title, const std::string& text, Timestamp date) {
    std::call_once(listening_, [this] { notifications_.listen(&Bridge::hear); });
    return notifications_.post(title, text, contextOf(date));
  }

 private:
  static void hear(DesktopNotifications::Outcome outcome, const std::string& context) {
    const std::optional<Timestamp> date = dateOf(context);
    if (!date) return;
    if (outcome == DesktopNotifications::Outcome::Clicked)
      QWGrowl::growlNotificationWasClicked(*date);
    else
      QWGrowl::growlNotificationTimedOut(*date);
  }

  DesktopNotifications& notifications_ = Runtime::current().platform().notifications;
  std::once_flag listening_;
};

void repost(const char* name, Timestamp clickContext) {
  UserInfo info;
  info.set("clickContext", clickContext);
  NotificationCenter::shared().postOnMainThreadLater(name, std::move(info));
}

}  // namespace

void QWGrowl::postGrowlNotification(const std::string& title, const std::string& description) {
  if (globalSwitch("growlDisabled")) return;
  Runtime& runtime = Runtime::current();
  const Status posted = runtime.shared<Bridge>().post(title, description, runtime.platform().clock.now());
  if (!posted) QWLog::appendLog("Unable to show the notification \"%@\": %@", title, posted.error().text);
}

void QWGrowl::growlNotificationWasClicked(Timestamp clickContext) {
  repost("QWGrowlAlertClicked", clickContext);
}

void QWGrowl::growlNotificationTimedOut(Timestamp clickContext) {
  repost("QWGrowlAlertTimedOut", clickContext);
}

}  // namespace vantory
