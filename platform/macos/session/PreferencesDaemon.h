// The daemon "cfprefsd", which keeps the user's preferences in memory and writes them to their files when it likes.
#pragma once

#include <mutex>
#include <string>

#include "platform/Users.h"

namespace vantory {

// A file that is replaced behind its back it may ignore, or write over. So it is ended before such files are first
// used, which has it write what it holds, and after they were changed: it starts anew when it is needed, and reads
// them. Any thread.
class PreferencesDaemon {
 public:
  // The users outlive it.
  explicit PreferencesDaemon(const Users& users) : users_(users) {}
  // Forgets what was changed.
  ~PreferencesDaemon() { forgetChanged(); }
  PreferencesDaemon(const PreferencesDaemon&) = delete;
  PreferencesDaemon& operator=(const PreferencesDaemon&) = delete;

  // The item at this path is about to be copied, or to be changed as well. What it holds is in the files then.
  void beforeReading(const std::string& path);
  void beforeChange(const std::string& path);
  // An application ends, and may hand it more.
  void applicationEnds();
  // Whoever asks for preferences from now on gets what the files say.
  void forgetChanged();

 private:
  bool keeps(const std::string& path) const;
  void end() const;

  const Users& users_;
  std::mutex mutex_;  // for all below
  bool wroteAll_ = false;
  bool changed_ = false;  // a file, since it was ended
};

}  // namespace vantory
