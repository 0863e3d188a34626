// Shows one alert at a time on each window, and waits for it.
#include "window/dialogs/AlertSheets.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "services/threads/MainThread.h"

namespace vantory {

namespace {

// In the order in which they are shown.
std::vector<std::pair<std::string, int>> buttonsOf(const AlertTexts& texts) {
  std::vector<std::pair<std::string, int>> buttons = {{texts.defaultButton, QWAlert::Default}};
  if (!texts.alternateButton.empty()) buttons.emplace_back(texts.alternateButton, QWAlert::Alternate);
  if (!texts.otherButton.empty()) buttons.emplace_back(texts.otherButton, QWAlert::Other);
  return buttons;
}

// Not while the program is in front with one of its windows.
void bringToFront(QWidget* window) {
  if (!window || QApplication::activeWindow()) return;
  window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
  // This raises it as well, and leaves a sheet that covers it above.
  window->activateWindow();
}

}  // namespace

// What a thread waits for: the main thread by serving events, any other asleep.
struct AlertSheets::Answer {
  explicit Answer(int withoutOne) : unanswered(withoutOne) {}

  void give(int code) {
    {
      const std::lock_guard lock(mutex);
      value = code;
    }
    changed.notify_all();
    // Answers are given on the main thread, the only one that has a loop here.
    if (loop) loop->quit();
  }

  // Off the main thread.
  int wait() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return value.has_value(); });
    return *value;
  }

  // On the main thread, whose windows go on working.
  int waitInEventLoop() {
    QEventLoop nested;
    loop = &nested;
    if (!value) nested.exec();
    loop = nullptr;
    return value.value_or(unanswered);
  }

  const int unanswered;
  std::mutex mutex;
  std::condition_variable changed;
  std::optional<int> value;
  QEventLoop* loop = nullptr;
};

// Shown by the main thread, which then goes on; only the one who asked waits.
int AlertSheets::ask(const AlertTexts& texts) {
  const auto answer = std::make_shared<Answer>(texts.unanswered);
  MainThread& mainThread = MainThread::shared();
  if (!mainThread.runAndWait([&] { show(texts, answer); })) return texts.unanswered;
  return mainThread.isCurrent() ? answer->waitInEventLoop() : answer->wait();
}

// On the main thread. Once alerts are refused the answer is there at once.
void AlertSheets::show(const AlertTexts& texts, const std::shared_ptr<Answer>& answer) {
  if (refusing_) return answer->give(texts.unanswered);
  const auto buttons = buttonsOf(texts);
  AlertDialog::Texts shown{texts.messageText, texts.informativeText, {}, texts.rows, texts.isDismissedByDefault};
  for (const auto& [title, code] : buttons) shown.buttons.push_back(title);
  QWidget* const parent = windowOf_(texts.parentWindow);
  bringToFront(parent);
  auto* dialog = new AlertDialog(shown, parent, shows_);
  shown_.push_back(dialog);
  dialog->ask(
      [this, dialog, buttons, answer](int button) {
        std::erase(shown_, dialog);
        dialog->deleteLater();
        answer->give(refusing_ ? answer->unanswered : buttons[static_cast<std::size_t>(button)].second);
      },
      texts.interval);
}

// Rejecting one takes it off the list.
void AlertSheets::refuse() {
  refusing_ = true;
  while (!shown_.empty()) shown_.back()->reject();
}

}  // namespace vantory
