#include "tools/logs/entry_error.h"

#include <cstddef>
#include <string_view>

namespace qzlog_tool {

namespace {

using qzlog::LineRule;
using qzlog_compiler::RuleInfo;

constexpr RuleInfo of_reader(LineRule rule, std::string_view meaning) {
  return {rule, qzlog::rule_name(rule), meaning};
}

constexpr RuleInfo kRules[] = {
    of_reader(LineRule::kLongLine, "A line is longer than 16 MiB."),
    of_reader(LineRule::kTornLine,
              "The last line has no end and breaks off: its writer is still at work on it, or was ended."),
    of_reader(LineRule::kBadJson,
              "A line is not well-formed JSON in UTF-8, or a number in it needs more than 64 bits."),
    of_reader(LineRule::kNotAnObject, "A line holds JSON, but not an object."),
    of_reader(LineRule::kUnknownKey, "A key is not one that an entry has."),
    of_reader(LineRule::kDuplicateKey, "A key of the entry is given twice."),
    of_reader(LineRule::kMissingId, "The entry has no `id`."),
    of_reader(LineRule::kBadId, "`id` is neither a number from 0 to 4294967295 nor a name."),
    of_reader(LineRule::kUnknownId, "No definition file defines this entry ID."),
    of_reader(LineRule::kUnknownName, "The definitions have no entry of this name."),
    of_reader(LineRule::kBadDefinitionFile, "The entry's definition cannot be read from its file."),
    of_reader(LineRule::kBadLevel, "`level` is not a number from 0 to 9."),
    of_reader(LineRule::kBadTime, "A time is not a date and time as RFC 3339 writes it."),
    of_reader(
        LineRule::kTimeGlobals,
        "An entry with a `time` needs TIMEZONE_DIFFERENCE (SInt2) and DAYLIGHT_SAVING_ACTIVE (Bool) to be defined."),
    of_reader(LineRule::kBadChoice, "`default` is not true or false, or `selector` is not a number."),
    of_reader(
        LineRule::kBadEnvelope,
        "What a writer adds to its lines (`writer`, `seq`, `written`, `definitions`, `name`) is not of its form."),
    of_reader(LineRule::kBadLost,
              "`lost` or `held` is no list of entries that were not written, or stands in a line with an entry."),
    of_reader(LineRule::kBadAttributes, "`attributes` is not an object."),
    of_reader(LineRule::kUnknownAttribute, "Neither the entry nor the globals define this attribute."),
    of_reader(LineRule::kDuplicateAttribute, "An attribute is given twice."),
    of_reader(LineRule::kUnsupportedType, "An attribute has a type that nothing can be put into, such as GUID."),
    of_reader(LineRule::kWrongKind, "A value is of another kind than its attribute, such as a text for a number."),
    of_reader(LineRule::kOutOfRange, "A number does not fit the type of its attribute."),
    of_reader(LineRule::kNulCharacter, "A text holds U+0000, at which it would end."),
    of_reader(LineRule::kBadBytes,
              "`bytes` is not an object of texts in base64, or holds one for an attribute that is no text."),
    of_reader(LineRule::kRefusedValue, "The library refused a value, for instance a text that is too long."),
    of_reader(LineRule::kOutOfMemory, "There was no memory for an entry."),
    {EntryRule::kNoMessage, "no-message", "The library could not render the message of an entry."},
    {EntryRule::kBrokenPattern, "broken-pattern",
     "ICU takes the pattern of an entry's message but cannot apply it: the command ends at this line."},
    {EntryRule::kUncountableDate, "uncountable-date",
     "The local date of an entry's time is outside the years 1 to 9999: its message is written, but not counted."},
    {EntryRule::kMissingLines, "missing-lines",
     "The running numbers (`seq`) of a writer's lines leave some out, which `--check-gaps` looks for."},
    {EntryRule::kDoubledLine, "doubled-line",
     "Two lines of a writer have the same running number (`seq`), which `--check-gaps` looks for."},
};
static_assert(is_whole_table(kRules, EntryRule::kDoubledLine));

}  // namespace

std::span<const RuleInfo> all_entry_rules() { return kRules; }

const RuleInfo& rule_info(EntryRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_tool
