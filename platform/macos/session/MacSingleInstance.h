// Copies of the windowed program meet at a socket in the user's own folder for temporary files.
#pragma once

#include <string>
#include <thread>

#include "platform/SingleInstance.h"
#include "platform/posix/kernel/Kernel.h"

namespace vantory {

// Whoever has the lock beside the socket listens at it; what a crash leaves of both is taken over. The process ignores
// SIGPIPE, as MacPlatform has it.
class MacSingleInstance : public SingleInstance {
 public:
  // Copies meet where `home` is the same, any text. Nobody else may write in `folder`.
  MacSingleInstance(const std::string& folder, const std::string& home);
  ~MacSingleInstance() override { stopListening(); }

  bool listen(Receiver receive) override;
  void stopListening() override;
  HandOver handOver(const OpenRequest& request) override;

  const std::string& socketPath() const { return socket_; }

 private:
  void serve(const Receiver& receive) const;

  const std::string socket_;
  Descriptor lock_;
  Descriptor listener_;
  kernel::Pipe end_;  // its write end is closed to end the thread
  std::thread thread_;
};

}  // namespace vantory
