// Copies of the windowed program meet at a socket that the kernel takes away with its owner.
#pragma once

#include <string>
#include <thread>

#include "platform/SingleInstance.h"
#include "platform/linux/helpers/Channel.h"

namespace vantory {

class LinuxSingleInstance : public SingleInstance {
 public:
  // Copies of the same user meet where `home` and `display` are the same. Any texts.
  LinuxSingleInstance(const std::string& home, const std::string& display);
  ~LinuxSingleInstance() override { stopListening(); }

  bool listen(Receiver receive) override;
  void stopListening() override;
  HandOver handOver(const OpenRequest& request) override;

  // The name of the socket, in the kernel's own namespace: no file that could be left behind.
  const std::string& name() const { return name_; }

 private:
  void serve(const Receiver& receive) const;

  const std::string name_;
  Descriptor listener_;
  std::thread thread_;
};

// The display that this process's windows appear on, as its environment tells; empty for none.
std::string displayOfSession();

}  // namespace vantory
