#include "tools/configuration/config_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "config/filter_values.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/configuration/config_lines.h"
#include "tools/configuration/config_rules.h"

namespace qzlog_tool {

namespace {

using qzlog::FilterKey;
using qzlog_compiler::Finding;
using qzlog_compiler::Findings;
using qzlog_compiler::quoted;
using qzlog_compiler::TextPlace;

constexpr const char* kFallbackSection = "global";
constexpr unsigned kHighestLevel = 9;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr std::array<std::string_view, qzlog::kFilterKeyCount> filter_keys() {
  std::array<std::string_view, qzlog::kFilterKeyCount> keys;
  std::copy(std::begin(qzlog::kFilterKeyNames), std::end(qzlog::kFilterKeyNames), keys.begin());
  return keys;
}
constexpr auto kKeys = filter_keys();

std::optional<FilterKey> find_key(std::string_view word) {
  const auto* const found = std::find(kKeys.begin(), kKeys.end(), word);
  if (found == kKeys.end()) return std::nullopt;
  return static_cast<FilterKey>(found - kKeys.begin());
}

/// There are no comments, but a line that begins like one is meant as one.
bool looks_like_comment(std::string_view word) { return word.starts_with('#') || word.starts_with(';'); }

/// What the library reads out of a value, and how much of the text.
struct ReadNumber {
  unsigned value = 0;
  bool whole = false;

  bool is(unsigned wanted) const { return whole && value == wanted; }
  bool above(unsigned bound) const { return whole && value > bound; }
};

ReadNumber read_number(std::string_view text) {
  const bool hexadecimal = text.size() > 1 && (text[1] == 'x' || text[1] == 'X');
  const std::string_view digits = hexadecimal && text[0] == '0' ? text.substr(2) : text;
  ReadNumber number;
  const auto [end, failure] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number.value, hexadecimal ? 16 : 10);
  if (failure == std::errc::result_out_of_range) return {UINT32_MAX, false};
  number.whole = failure == std::errc() && end == digits.data() + digits.size();
  return number;
}

/// A value that filters find, and where it stands.
struct Setting {
  ReadNumber number;
  TextPlace place;
};

using Settings = std::map<FilterKey, Setting>;

class ConfigCheck {
 public:
  ConfigCheck(const std::string& file, std::string_view content) : lines_(content), findings_(file) {}

  std::vector<Finding> run(std::string_view wanted_section) {
    while (const std::optional<ConfigLine> line = lines_.next()) check_line(line->words);
    tell_end();
    find_section(wanted_section);
    for (const auto& [name, settings] : sections_) find_what_passes(name);
    return findings_.take_sorted();
  }

 private:
  void check_line(std::span<const ConfigWord> words) {
    if (words.empty()) return;
    if (words[0].text.starts_with('[')) {
      begin_section(words);
    } else if (section_ == nullptr) {
      tell_no_section(words);
    } else if (!looks_like_comment(words[0].text)) {
      check_setting(words);
    }
  }

  void begin_section(std::span<const ConfigWord> words) {
    const std::string_view header = words[0].text;
    section_ = nullptr;
    if (header.size() == 1) {
      findings_.error(words[0].place, ConfigRule::kBadSection, "'[' alone begins no section")
          .with_hint("write the name without blanks: [name]");
      return;
    }
    // Whatever the last character is, it is taken for the closing bracket.
    const std::string name(header.substr(1, header.size() - 2));
    section_ = &sections_[name];
    const bool has_more = words.size() > 1 && !looks_like_comment(words[1].text);
    if (header.ends_with(']') && !has_more) return;
    findings_.error(words[0].place, ConfigRule::kBadSection, "the section is read as " + quoted(name))
        .with_hint("a name has no blanks and no equals signs, and ']' directly behind it");
  }

  void tell_no_section(std::span<const ConfigWord> words) {
    const std::string_view first = words[0].text;
    if (first.starts_with(kByteOrderMark) && first.substr(kByteOrderMark.size()).starts_with('[')) {
      findings_
          .error(words[0].place, ConfigRule::kBadSection,
                 "the section is not begun: a byte order mark stands in front of it")
          .with_hint("save the file without one, or begin it with an empty line");
      return;
    }
    if (words.size() < 2 || looks_like_comment(words[0].text)) return;
    findings_
        .warning(words[0].place, ConfigRule::kNoSection,
                 quoted(words[0].text) + " stands in no section and is not read")
        .with_hint("put '[global]' in front of it");
  }

  void check_setting(std::span<const ConfigWord> words) {
    const std::optional<FilterKey> key = find_key(words[0].text);
    if (!key) {
      check_other_key(words[0]);
    } else if (words.size() == 1) {
      findings_.error(words[0].place, ConfigRule::kBadValue, quoted(words[0].text) + " has no value and is not read")
          .with_hint("write the value on the same line");
    } else {
      store(*key, words);
    }
  }

  void check_other_key(const ConfigWord& word) {
    std::string_view bare = word.text;
    while (!bare.empty() && (bare.back() == ':' || bare.back() == ',')) bare.remove_suffix(1);
    const std::string hint = qzlog_compiler::did_you_mean(bare, kKeys);
    if (hint.empty()) return;
    findings_.warning(word.place, ConfigRule::kNearKey, "no filter asks for " + quoted(word.text)).with_hint(hint);
  }

  void store(FilterKey key, std::span<const ConfigWord> words) {
    const ReadNumber number = read_number(words[1].text);
    if (!number.whole) {
      findings_
          .error(words[1].place, ConfigRule::kBadValue,
                 quoted(words[1].text) + " is no number of 32 bits: it is read as " + std::to_string(number.value))
          .with_hint("write digits, or 0x and hexadecimal digits");
    } else if (words.size() > 2 && !looks_like_comment(words[2].text)) {
      findings_.warning(words[2].place, ConfigRule::kBadValue, "what stands behind the value is not read");
    }
    const Setting setting{number, words[1].place};
    const auto [before, is_first] = section_->try_emplace(key, setting);
    if (is_first) return;
    findings_
        .warning(words[0].place, ConfigRule::kRepeatedKey,
                 quoted(words[0].text) + " stands here again: this value counts")
        .with_note(before->second.place, "the value before");
    before->second = setting;
  }

  void tell_end() {
    const TextPlace line(lines_.end_line());
    if (lines_.end() == ConfigLines::End::kLongLine) {
      findings_
          .error(line, ConfigRule::kLongLine, "the line has more than 128 bytes: neither it nor what follows is read")
          .with_hint("keep lines within 128 bytes");
    } else if (lines_.end() == ConfigLines::End::kLastLine) {
      findings_.error(line, ConfigRule::kLastLine, "the last line has no empty line behind it and is not read")
          .with_hint("end the file with an empty line");
    }
  }

  void find_section(std::string_view wanted) {
    if (wanted.empty() || sections_.contains(wanted)) return;
    std::vector<std::string_view> names;
    for (const auto& [name, settings] : sections_) names.push_back(name);
    const char* const instead = sections_.contains(kFallbackSection) ? "what 'global' says counts" : "nothing counts";
    findings_.error(TextPlace(), ConfigRule::kMissingSection, "there is no section " + quoted(wanted) + ": " + instead)
        .with_hint(qzlog_compiler::did_you_mean(wanted, names));
  }

  /// What a filter of the section finds for a key.
  const Setting* find_setting(const std::string& section, FilterKey key) const {
    for (const std::string& name : {section, std::string(kFallbackSection)}) {
      const auto settings = sections_.find(name);
      if (settings == sections_.end()) continue;
      const auto found = settings->second.find(key);
      if (found != settings->second.end()) return &found->second;
    }
    return nullptr;
  }

  /// The same for one that `general` stands for where it is not said.
  const Setting* find_setting(const std::string& section, FilterKey key, FilterKey general) const {
    const Setting* const found = find_setting(section, key);
    return found != nullptr ? found : find_setting(section, general);
  }

  /// A finding about a section stands at a value of its own. Of what is no number that is told alone.
  void find_what_passes(const std::string& section) {
    const Settings& own = sections_.find(section)->second;
    if (const auto mask = own.find(FilterKey::kPropertyMask); mask != own.end() && mask->second.number.is(0)) {
      tell_nothing_passes(mask->second, "no entry passes without a bit in PropertyMask");
    }
    check_levels(own, "no entry passes", FilterKey::kLogLevelLow, find_setting(section, FilterKey::kLogLevelLow),
                 FilterKey::kLogLevelHigh, find_setting(section, FilterKey::kLogLevelHigh));
    check_levels(own, "no debug entry passes", FilterKey::kDebugLogLevelLow,
                 find_setting(section, FilterKey::kDebugLogLevelLow, FilterKey::kLogLevelLow),
                 FilterKey::kDebugLogLevelHigh,
                 find_setting(section, FilterKey::kDebugLogLevelHigh, FilterKey::kLogLevelHigh));
  }

  void check_levels(const Settings& own, const std::string& what, FilterKey low_key, const Setting* low,
                    FilterKey high_key, const Setting* high) {
    if (low == nullptr) return;
    if (low->number.above(kHighestLevel) && own.contains(low_key)) {
      tell_nothing_passes(*low, what + " with a low level above 9");
    } else if (high != nullptr && high->number.whole && low->number.above(high->number.value)) {
      if (own.contains(high_key)) {
        tell_nothing_passes(*high, what + " with a high level below the low one, " + std::to_string(low->number.value));
      } else if (own.contains(low_key)) {
        tell_nothing_passes(*low, what + " with a low level above the high one, " + std::to_string(high->number.value));
      }
    }
  }

  void tell_nothing_passes(const Setting& setting, std::string text) {
    findings_.warning(setting.place, ConfigRule::kNothingPasses, std::move(text));
  }

  ConfigLines lines_;
  Findings findings_;
  std::map<std::string, Settings, std::less<>> sections_;
  Settings* section_ = nullptr;  // that the lines to come stand in; null where there is none
};

}  // namespace

std::vector<Finding> check_config(const std::string& file, std::string_view content, std::string_view section) {
  return ConfigCheck(file, content).run(section);
}

}  // namespace qzlog_tool
