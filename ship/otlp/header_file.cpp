#include "ship/otlp/header_file.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "ship/plugin/credentials_file.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr std::size_t kLeastSecretBytes = 4;

bool is_header(std::string_view line) {
  constexpr std::string_view kNameLetters =
      "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0 ||
      line.find_first_not_of(" \t", colon + 1) == std::string_view::npos) {
    return false;
  }
  const bool has_control = std::any_of(line.begin(), line.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
  });
  return line.find_first_not_of(kNameLetters) == colon && !has_control;
}

void take_out(std::string& text, std::string_view secret) {
  if (secret.size() < kLeastSecretBytes) return;
  for (std::size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at)) {
    text.replace(at, secret.size(), "...");
  }
}

}  // namespace

std::vector<std::string> read_header_file(const std::string& path) {
  const std::string text = read_credentials(path);
  std::vector<std::string> headers;
  std::size_t number = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (line.ends_with('\r')) line.remove_suffix(1);
    begin = end + 1;
    ++number;
    if (line.empty() || line.front() == '#') continue;
    if (!is_header(line)) {
      fail_for_good("line " + std::to_string(number) + " of the file of credentials '" + path +
                    "' is no header: lines are as in 'Authorization: Bearer TOKEN'");
    }
    headers.emplace_back(line);
  }
  if (headers.empty()) fail_for_good("the file of credentials '" + path + "' has no header");
  return headers;
}

std::string without_secrets(std::string text, const std::vector<std::string>& headers) {
  for (const std::string& header : headers) {
    const std::size_t begin = header.find_first_not_of(" \t", header.find(':') + 1);
    const std::string_view value = std::string_view(header).substr(begin);
    take_out(text, value);
    for (std::size_t at = value.find(' '); at != std::string_view::npos; at = value.find(' ', at + 1)) {
      const std::string_view word = value.substr(at + 1);
      take_out(text, word.substr(0, word.find(' ')));
    }
  }
  return text;
}

}  // namespace qzlog_ship
