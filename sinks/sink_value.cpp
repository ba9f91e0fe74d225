#include "sinks/sink_value.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <system_error>

namespace qzlog {

void SinkValue::refuse(const std::string& text) const { file_.refuse(setting_.line, setting_.key + ": " + text); }

unsigned long long SinkValue::number_of_base(std::string_view digits, int base) const {
  unsigned long long number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
  if (error == std::errc::result_out_of_range && stop == end) refuse(quoted() + " is too large");
  if (error != std::errc() || stop != end) refuse(quoted() + " is no number");
  return number;
}

unsigned long long SinkValue::number(unsigned long long least, unsigned long long most) const {
  const std::string_view digits = text();
  const bool is_hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  const unsigned long long number = is_hexadecimal ? number_of_base(digits.substr(2), 16) : number_of_base(digits, 10);
  if (number < least || number > most) {
    refuse(text() + " is not from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return number;
}

unsigned SinkValue::octal() const {
  const unsigned long long number = number_of_base(text(), 8);
  if (number > 07777) refuse(quoted() + " is too large");
  return static_cast<unsigned>(number);
}

unsigned SinkValue::level_or_never() const { return text() == "never" ? 10 : static_cast<unsigned>(number(0, 9)); }

bool SinkValue::flag() const {
  if (text() != "yes" && text() != "no") refuse(quoted() + " is neither yes nor no");
  return text() == "yes";
}

std::size_t SinkValue::choice(std::span<const std::string_view> words) const {
  const auto found = std::find(words.begin(), words.end(), text());
  if (found != words.end()) return static_cast<std::size_t>(found - words.begin());
  std::string all;
  for (const std::string_view word : words) all.append(all.empty() ? "" : ", ").append(word);
  refuse(quoted() + " is none of " + all);
}

int SinkValue::descriptor() const {
  if (text() == "stdout") return STDOUT_FILENO;
  if (text() == "stderr") return STDERR_FILENO;
  return static_cast<int>(number(0, INT_MAX));
}

std::vector<std::string> SinkValue::names() const {
  std::vector<std::string> names;
  std::string_view rest = text();
  for (;;) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    const std::string_view name = trimmed(rest.substr(0, end));
    if (name.empty()) refuse("there is an empty name");
    names.emplace_back(name);
    if (end == rest.size()) return names;
    rest.remove_prefix(end + 1);
  }
}

}  // namespace qzlog
