// What copies of the windowed program tell each other, on whatever channel their system has for it.
#pragma once

#include <chrono>
#include <optional>
#include <utility>

#include "platform/SingleInstance.h"
#include "platform/posix/processes/Message.h"

namespace vantory::handover {

// {"file", PATH} for each file, then {"open", ACTIVATION-TOKEN}; the answer is {"taken"}.
inline constexpr const char* kFile = "file";
inline constexpr const char* kOpen = "open";
inline constexpr const char* kTaken = "taken";

inline constexpr std::size_t kMostFiles = 10'000;
inline constexpr std::chrono::seconds kPatienceForRequest{2};
inline constexpr std::chrono::seconds kPatienceForAnswer{5};

// None when the other end says something else, too much or too slowly.
template <class AnyChannel>
std::optional<OpenRequest> receive(AnyChannel& channel) {
  using Time = std::chrono::steady_clock;
  OpenRequest request;
  const auto end = Time::now() + kPatienceForRequest;
  while (request.files.size() <= kMostFiles) {
    auto message = channel.receive(std::chrono::duration_cast<std::chrono::milliseconds>(end - Time::now()));
    if (!message || message->size() != 2) return std::nullopt;
    if (message->front() == kOpen) {
      request.activationToken = std::move(message->back());
      return request;
    }
    if (message->front() != kFile) return std::nullopt;
    request.files.push_back(std::move(message->back()));
  }
  return std::nullopt;
}

// Whoever no longer waits for the answer does its work itself.
template <class AnyChannel>
void serve(AnyChannel channel, const SingleInstance::Receiver& receiver) {
  auto request = receive(channel);
  if (request && channel.send({kTaken})) receiver(std::move(*request));
}

// Nobody has taken it only where that is certain: otherwise two copies would do the work.
template <class AnyChannel>
SingleInstance::HandOver send(AnyChannel channel, const OpenRequest& request) {
  using HandOver = SingleInstance::HandOver;
  for (const std::string& file : request.files)
    if (!channel.send({kFile, file})) return HandOver::Nobody;
  if (!channel.send({kOpen, request.activationToken})) return HandOver::Nobody;
  const auto answer = channel.receive(kPatienceForAnswer);
  if (answer) return *answer == Message{kTaken} ? HandOver::Taken : HandOver::Refused;
  return answer.error().code == std::errc::not_connected ? HandOver::Nobody : HandOver::Refused;
}

}  // namespace vantory::handover
