#include "tools/transport/transport_url.h"

#include <algorithm>
#include <string_view>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kForm = "SCHEME://HOST:PORT/NAME, such as nats://127.0.0.1:4222/ENTRIES";

[[noreturn]] void refuse(const char* option, const std::string& text) {
  throw CommandError(kExitCannotRun, std::string(option) + ": " + text);
}

bool is_small_letter(char character) { return character >= 'a' && character <= 'z'; }

bool is_scheme_character(char character) {
  return is_small_letter(character) || (character >= '0' && character <= '9') || character == '+' || character == '-';
}

std::string in_small_letters(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
  });
  return text;
}

/// It becomes part of a file's name.
bool is_scheme(std::string_view scheme) {
  return !scheme.empty() && is_small_letter(scheme.front()) &&
         std::all_of(scheme.begin(), scheme.end(), is_scheme_character);
}

// Other programs see the command line, and the URL stands in what is said and stored. Whatever has an @ may be a
// password with a slash in it.
void refuse_secrets(const char* option, const std::string& text) {
  if (text.find('@') != std::string::npos) {
    refuse(option,
           "credentials do not belong into a URL, which others can see: write them to a file and name it with "
           "--credentials FILE (an @ that is part of a name is written %40)");
  }
  if (text.find_first_of("?#") != std::string::npos) {
    refuse(option, "a URL here has nothing behind ? or #: settings of the receiver are given by --option KEY=VALUE");
  }
}

}  // namespace

TransportUrl::TransportUrl(const std::string& text, const char* option) : option_(option) {
  refuse_secrets(option, text);
  const std::size_t colon = text.find("://");
  if (colon != std::string::npos) scheme_ = in_small_letters(text.substr(0, colon));
  const bool is_whole =
      is_scheme(scheme_) && qzlog_compiler::is_utf8(text) && std::all_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) > ' ' && character != '\x7F';
      });
  if (!is_whole) refuse(option, qzlog_compiler::quoted(text) + " is no URL of a receiver: write " + std::string(kForm));
  const std::size_t begin = colon + 3;
  const std::size_t slash = std::min(text.find('/', begin), text.size());
  authority_ = text.substr(begin, slash - begin);
  path_ = text.substr(slash);
  text_ = scheme_ + text.substr(colon);
}

}  // namespace qzlog_tool
