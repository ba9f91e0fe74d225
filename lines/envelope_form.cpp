#include "lines/envelope_form.h"

#include <algorithm>

namespace qzlog {
namespace {

bool is_digit(char character) { return character >= '0' && character <= '9'; }
bool is_control(char character) { return static_cast<unsigned char>(character) < 0x20; }

bool is_number(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), is_digit); }

bool is_visible(std::string_view text) { return !text.empty() && std::none_of(text.begin(), text.end(), is_control); }

bool is_digest(std::string_view text) {
  constexpr std::size_t kDigits = 16;
  return text.size() == kDigits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// `form` has a 0 for each digit, and stands for itself otherwise.
bool has_form(std::string_view text, std::string_view form) {
  return text.size() == form.size() && std::equal(text.begin(), text.end(), form.begin(), [](char own, char wanted) {
           return wanted == '0' ? is_digit(own) : own == wanted;
         });
}

/// Whether two digits at `place` are a number up to `maximum`.
bool is_up_to(std::string_view text, std::size_t place, int maximum) {
  return (text[place] - '0') * 10 + (text[place + 1] - '0') <= maximum;
}

bool is_zone(std::string_view text) {
  if (text == "Z") return true;
  return (has_form(text, "+00:00") || has_form(text, "-00:00")) && is_up_to(text, 1, 23) && is_up_to(text, 4, 59);
}

}  // namespace

// A host's name may hold anything; the other parts hold no slash.
bool is_writer_form(std::string_view text) {
  const std::size_t second = text.rfind('/');
  if (second == std::string_view::npos || second == 0) return false;
  const std::size_t first = text.rfind('/', second - 1);
  if (first == std::string_view::npos) return false;
  return is_visible(text.substr(0, first)) && is_number(text.substr(first + 1, second - first - 1)) &&
         is_visible(text.substr(second + 1));
}

bool is_moment_form(std::string_view text) {
  constexpr std::string_view kSeconds = "0000-00-00T00:00:00";
  if (!has_form(text.substr(0, kSeconds.size()), kSeconds)) return false;
  if (!is_up_to(text, 5, 12) || !is_up_to(text, 8, 31) || !is_up_to(text, 11, 23) || !is_up_to(text, 14, 59) ||
      !is_up_to(text, 17, 60)) {
    return false;
  }
  std::string_view rest = text.substr(kSeconds.size());
  if (rest.starts_with('.')) {
    const std::size_t digits = rest.find_first_not_of("0123456789", 1);
    if (digits == 1 || digits == std::string_view::npos) return false;
    rest.remove_prefix(digits);
  }
  return is_zone(rest);
}

bool is_definitions_form(std::string_view text) {
  const std::size_t plus = text.find('+');
  if (plus == std::string_view::npos) return is_digest(text);
  return is_digest(text.substr(0, plus)) && is_digest(text.substr(plus + 1));
}

bool is_event_name_form(std::string_view text) { return is_visible(text); }

}  // namespace qzlog
