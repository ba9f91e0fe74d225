#ifndef QZLOG_MESSAGE_PATTERN_NESTING_H
#define QZLOG_MESSAGE_PATTERN_NESTING_H

#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include "message/template_limits.h"

namespace qzlog {

/// How deeply the arguments of an ICU message pattern nest. ICU parses and formats what nests by calling itself,
/// without a limit: a pattern that is deeper than any message would exhaust the stack. The library and the tools ask
/// here before they give ICU a pattern.
///
/// Nesting is counted in the arguments and the messages of arguments that stand around the deepest place, for each of
/// which ICU's parser calls itself: two for a level of plural, select or choice. Braces within quotes, and those in the
/// style of a simple argument, are text.

/// The nesting that ICU's parser comes to, found without recursion and without ICU; more than `limit`, and no exact
/// number, beyond the limit. Exact where ICU takes the pattern; where it refuses it at some place, what stands behind
/// that place may count as well.
int bound_pattern_nesting(const icu::UnicodeString& pattern, UMessagePatternApostropheMode mode, int limit);

/// The nesting of a pattern that ICU has parsed.
int pattern_nesting(const icu::MessagePattern& parsed);

/// Parses a pattern unless it nests deeper than kMostPatternNesting: then false, and ICU has not seen it.
bool parse_pattern(const icu::UnicodeString& pattern, icu::MessagePattern& parsed, UErrorCode& status);

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_PATTERN_NESTING_H
