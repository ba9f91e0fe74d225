#ifndef QZLOG_LINES_LINE_RULE_H
#define QZLOG_LINES_LINE_RULE_H

#include <cstddef>
#include <iterator>

namespace qzlog {

/// What can be wrong with one line of entries.
enum class LineRule {
  kLongLine,
  kTornLine,
  kBadJson,
  kNotAnObject,
  kUnknownKey,
  kDuplicateKey,
  kMissingId,
  kBadId,
  kUnknownId,
  kUnknownName,
  kBadDefinitionFile,
  kBadLevel,
  kBadTime,
  kTimeGlobals,
  kBadChoice,
  kBadEnvelope,
  kBadLost,
  kBadAttributes,
  kUnknownAttribute,
  kDuplicateAttribute,
  kUnsupportedType,
  kWrongKind,
  kOutOfRange,
  kNulCharacter,
  kBadBytes,
  kRefusedValue,
  kOutOfMemory,
};

/// Their names, in the order of `LineRule`. A name is never given to another rule.
inline constexpr const char* kLineRuleNames[] = {
    "long-line",           "torn-line",     "bad-json",       "not-an-object",     "unknown-key",
    "duplicate-key",       "missing-id",    "bad-id",         "unknown-id",        "unknown-name",
    "bad-definition-file", "bad-level",     "bad-time",       "time-globals",      "bad-choice",
    "bad-envelope",        "bad-lost",      "bad-attributes", "unknown-attribute", "duplicate-attribute",
    "unsupported-type",    "wrong-kind",    "out-of-range",   "nul-character",     "bad-bytes",
    "refused-value",       "out-of-memory",
};
static_assert(std::size(kLineRuleNames) == static_cast<std::size_t>(LineRule::kOutOfMemory) + 1);

constexpr const char* rule_name(LineRule rule) { return kLineRuleNames[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_RULE_H
