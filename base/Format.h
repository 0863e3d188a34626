// Texts with placeholders, as the log and the alerts use them.
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vantory {

// One value for a placeholder. It refers to text that it does not own: use it only as a function's argument.
class FormatArgument {
 public:
  FormatArgument(std::string_view text) : value_(text) {}
  FormatArgument(const std::string& text) : value_(std::string_view(text)) {}
  FormatArgument(const char* text) : value_(std::string_view(text)) {}
  FormatArgument(std::nullopt_t) : value_(std::monostate{}) {}
  FormatArgument(const std::optional<std::string>& text) {
    if (text) value_ = std::string_view(*text);
  }
  template <std::signed_integral T>
  FormatArgument(T number) : value_(static_cast<long long>(number)) {}
  template <std::unsigned_integral T>
  FormatArgument(T number) : value_(static_cast<unsigned long long>(number)) {}
  FormatArgument(double number) : value_(number) {}

  using Value = std::variant<std::monostate, std::string_view, long long, unsigned long long, double>;
  const Value& value() const { return value_; }

 private:
  Value value_ = std::monostate{};
};

// Fills in "%@", "%s", "%i", "%d", "%0.2f", "%0.0f" and "%%" from left to right. A placeholder without an argument, or
// whose argument is none, becomes "(null)"; surplus arguments are ignored; any other directive stays as it is.
std::string formatText(std::string_view format, std::span<const FormatArgument> arguments);

template <class... Arguments>
std::string formatted(std::string_view format, const Arguments&... arguments) {
  if constexpr (sizeof...(arguments) == 0) {
    return formatText(format, {});
  } else {
    const FormatArgument list[] = {FormatArgument(arguments)...};
    return formatText(format, list);
  }
}

// "1 file", "2 files".
std::string counted(std::size_t count, std::string_view thing);

}  // namespace vantory
