// Reports signals through a pipe, so that they are met between two events.
#pragma once

#include "platform/TerminationSignals.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

class PosixTerminationSignals : public TerminationSignals {
 public:
  ~PosixTerminationSignals() override;

  int startReporting() override;
  void stopReporting() override;

 private:
  Descriptor read_;
  Descriptor write_;
};

}  // namespace vantory
