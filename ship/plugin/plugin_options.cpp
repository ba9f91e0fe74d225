#include "ship/plugin/plugin_options.h"

#include <charconv>
#include <string_view>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

PluginOptions::PluginOptions(const qzlog_settings& settings) {
  for (std::size_t index = 0; index < settings.option_count; ++index) {
    left_[settings.options[index].key] = settings.options[index].value;
  }
}

std::optional<std::string> PluginOptions::take(const std::string& key) {
  const auto found = left_.find(key);
  if (found == left_.end()) return std::nullopt;
  std::string value = std::move(found->second);
  left_.erase(found);
  return value;
}

std::optional<std::uint64_t> PluginOptions::take_number(const std::string& key, std::uint64_t least,
                                                        std::uint64_t most) {
  const std::optional<std::string> text = take(key);
  if (!text) return std::nullopt;
  std::uint64_t number = 0;
  const char* const end = text->data() + text->size();
  const auto [stopped, error] = std::from_chars(text->data(), end, number);
  if (text->empty() || stopped != end || error != std::errc() || number < least || number > most) {
    fail_for_good("--option " + key + " takes a number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return number;
}

bool PluginOptions::take_flag(const std::string& key, bool usual) {
  const std::optional<std::string> text = take(key);
  if (!text) return usual;
  if (*text != "yes" && *text != "no") fail_for_good("--option " + key + " takes yes or no");
  return *text == "yes";
}

std::map<std::string, std::string> PluginOptions::take_all(const std::string& beginning) {
  std::map<std::string, std::string> taken;
  while (true) {
    const auto found = left_.lower_bound(beginning);
    if (found == left_.end() || !found->first.starts_with(beginning)) return taken;
    taken.insert(left_.extract(found));
  }
}

void PluginOptions::refuse_others(const std::string& known) const {
  if (left_.empty()) return;
  fail_for_good("there is no --option " + left_.begin()->first + " for this receiver; there are " + known);
}

std::string percent_decoded(const std::string& text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      decoded += text[at];
      continue;
    }
    unsigned byte = 0;
    const std::string_view digits = std::string_view(text).substr(at + 1, 2);
    const auto [stopped, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || stopped != digits.data() + 2 || error != std::errc() || byte == 0) {
      fail_for_good("a % in the URL is followed by two hexadecimal digits, and is no %00");
    }
    decoded += static_cast<char>(byte);
    at += 2;
  }
  return decoded;
}

}  // namespace qzlog_ship
