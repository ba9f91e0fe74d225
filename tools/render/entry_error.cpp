#include "tools/render/entry_error.h"

#include <cstddef>

namespace qzlog_tool {

namespace {

using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {EntryRule::kLongLine, "long-line", "A line is longer than 16 MiB."},
    {EntryRule::kTornLine, "torn-line",
     "The last line has no end and breaks off: its writer is still at work on it, or was ended."},
    {EntryRule::kBadJson, "bad-json",
     "A line is not well-formed JSON in UTF-8, or a number in it needs more than 64 bits."},
    {EntryRule::kNotAnObject, "not-an-object", "A line holds JSON, but not an object."},
    {EntryRule::kUnknownKey, "unknown-key", "A key is not one that an entry has."},
    {EntryRule::kDuplicateKey, "duplicate-key", "A key of the entry is given twice."},
    {EntryRule::kMissingId, "missing-id", "The entry has no `id`."},
    {EntryRule::kBadId, "bad-id", "`id` is neither a number from 0 to 4294967295 nor a name."},
    {EntryRule::kUnknownId, "unknown-id", "No definition file defines this entry ID."},
    {EntryRule::kUnknownName, "unknown-name", "The definitions have no entry of this name."},
    {EntryRule::kBadDefinitionFile, "bad-definition-file", "The entry's definition cannot be read from its file."},
    {EntryRule::kBadLevel, "bad-level", "`level` is not a number from 0 to 9."},
    {EntryRule::kBadTime, "bad-time", "A time is not a date and time as RFC 3339 writes it."},
    {EntryRule::kTimeGlobals, "time-globals",
     "An entry with a `time` needs TIMEZONE_DIFFERENCE (SInt2) and DAYLIGHT_SAVING_ACTIVE (Bool) to be defined."},
    {EntryRule::kBadChoice, "bad-choice", "`default` is not true or false, or `selector` is not a number."},
    {EntryRule::kBadEnvelope, "bad-envelope",
     "What a writer adds to its lines (`writer`, `seq`, `written`, `definitions`, `name`) is not of its form."},
    {EntryRule::kBadLost, "bad-lost",
     "`lost` or `held` is no list of entries that were not written, or stands in a line with an entry."},
    {EntryRule::kBadAttributes, "bad-attributes", "`attributes` is not an object."},
    {EntryRule::kUnknownAttribute, "unknown-attribute", "Neither the entry nor the globals define this attribute."},
    {EntryRule::kDuplicateAttribute, "duplicate-attribute", "An attribute is given twice."},
    {EntryRule::kUnsupportedType, "unsupported-type",
     "An attribute has a type that nothing can be put into, such as GUID."},
    {EntryRule::kWrongKind, "wrong-kind",
     "A value is of another kind than its attribute, such as a text for a number."},
    {EntryRule::kOutOfRange, "out-of-range", "A number does not fit the type of its attribute."},
    {EntryRule::kNulCharacter, "nul-character", "A text holds U+0000, at which it would end."},
    {EntryRule::kBadBytes, "bad-bytes",
     "`bytes` is not an object of texts in base64, or holds one for an attribute that is no text."},
    {EntryRule::kRefusedValue, "refused-value", "The library refused a value, for instance a text that is too long."},
    {EntryRule::kNoMessage, "no-message", "The library could not render the message of an entry."},
    {EntryRule::kBrokenPattern, "broken-pattern",
     "ICU takes the pattern of an entry's message but cannot apply it: the command ends at this line."},
    {EntryRule::kUncountableDate, "uncountable-date",
     "The local date of an entry's time is outside the years 1 to 9999: its message is written, but not counted."},
    {EntryRule::kMissingLines, "missing-lines",
     "The running numbers (`seq`) of a writer's lines leave some out, which `--check-gaps` looks for."},
    {EntryRule::kDoubledLine, "doubled-line",
     "Two lines of a writer have the same running number (`seq`), which `--check-gaps` looks for."},
    {EntryRule::kOutOfMemory, "out-of-memory", "There was no memory for an entry."},
};
static_assert(is_whole_table(kRules, EntryRule::kOutOfMemory));

}  // namespace

std::span<const RuleInfo> all_entry_rules() { return kRules; }

const RuleInfo& rule_info(EntryRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_tool
