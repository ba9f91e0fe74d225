#include "tools/count/count_options.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/number_text.h"
#include "tools/count/calendar_day.h"
#include "tools/count/entry_counting.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/entry_view.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

std::string check_day(const std::string& text) {
  return parse_day(text) ? "" : "'" + text + "' is no date from 0001-01-01 to 9999-12-31";
}

bool begins_like_number(const std::string& text) {
  return !text.empty() && (text[0] == '-' || (text[0] >= '0' && text[0] <= '9'));
}

/// "; did you mean 'DISK_FULL'?", or nothing.
std::string nearest_entry(const Definitions& definitions, const std::string& name) {
  std::vector<std::string_view> names;
  for (const auto& entry : definitions.model.entries) names.emplace_back(entry.name);
  const std::string question = qzlog_compiler::did_you_mean(name, names);
  return question.empty() ? "" : "; " + question;
}

}  // namespace

CLI::Option* add_day_option(CLI::App& command, const std::string& name, std::string& day, const std::string& help) {
  return command.add_option(name, day, help)->type_name("YYYY-MM-DD")->check(check_day);
}

void refuse_reversed_days(const std::string& from, const std::string& to) {
  const std::optional<CalendarDay> first = parse_day(from);
  const std::optional<CalendarDay> last = parse_day(to);
  if (first && last && *first > *last) {
    throw CommandError(kExitCannotRun, "--from " + from + " is later than --to " + to);
  }
}

Definitions read_named_entries(const std::string& path) {
  Definitions definitions = read_without_errors(read_definition_file(path), {}, kExitFindings);
  if (definitions.model.has_names) return definitions;
  throw CommandError(kExitCannotRun, "'" + definitions.shown_path + "' has no names; give its source");
}

std::int32_t read_key(const std::string& text, const std::string& definitions) {
  constexpr std::int64_t kMinimum = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kMaximum = std::numeric_limits<std::uint32_t>::max();
  if (const auto number = qzlog_compiler::parse_number(text, kMinimum, kMaximum))
    return static_cast<std::int32_t>(*number);
  if (begins_like_number(text)) {
    throw CommandError(kExitCannotRun, "'" + text + "' is no key from -2147483648 to 4294967295");
  }
  if (definitions.empty()) {
    throw CommandError(kExitCannotRun, "the name '" + text + "' needs --definitions");
  }
  const Definitions read = read_named_entries(definitions);
  const auto* const entry = DefinitionPair(read.model, nullptr).find_by_name(text);
  if (entry == nullptr) {
    throw CommandError(kExitCannotRun,
                       "'" + read.shown_path + "' has no entry '" + text + "'" + nearest_entry(read, text));
  }
  return counter_key(entry->id);
}

}  // namespace qzlog_tool
