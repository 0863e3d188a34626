// What an operation of the platform answers: a value, or an error that says what failed and why.
#pragma once

#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

namespace vantory {

// A failed operation. `code` is what the caller decides by, `text` is what a person reads:
// the path concerned and the reason. `cure` says what the person can do about it; empty where nothing is known.
struct Error {
  std::errc code{};
  std::string text;
  std::string cure = {};
  bool consentMissing = false;  // the person has not let this program in, and an administrator cannot instead of them
};

// True where another identity's rights could make the operation succeed.
inline bool rightsCouldHelp(const Error& error) {
  return !error.consentMissing &&
         (error.code == std::errc::permission_denied || error.code == std::errc::operation_not_permitted ||
          error.code == std::errc::file_exists);
}

// Whether the error says that there is nothing of that name.
inline bool meansMissing(const Error& error) {
  return error.code == std::errc::no_such_file_or_directory || error.code == std::errc::not_a_directory;
}

// The outcome of an operation without a value.
class [[nodiscard]] Status {
 public:
  Status() = default;
  Status(Error error) : error_(std::move(error)) {}

  bool ok() const { return !error_; }
  explicit operator bool() const { return ok(); }
  // Only when not ok().
  const Error& error() const { return *error_; }

 private:
  std::optional<Error> error_;
};

// The outcome of an operation that yields a T.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::move(value)) {}
  Result(Error error) : content_(std::move(error)) {}

  bool ok() const { return content_.index() == 0; }
  explicit operator bool() const { return ok(); }
  // Only when ok().
  T& value() { return std::get<0>(content_); }
  const T& value() const { return std::get<0>(content_); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  T& operator*() { return value(); }
  const T& operator*() const { return value(); }
  // Only when not ok().
  const Error& error() const { return std::get<1>(content_); }
  // How it ended, without the value.
  Status status() const { return ok() ? Status() : Status(error()); }

 private:
  std::variant<T, Error> content_;
};

}  // namespace vantory
