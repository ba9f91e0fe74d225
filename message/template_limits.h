#ifndef QZLOG_MESSAGE_TEMPLATE_LIMITS_H
#define QZLOG_MESSAGE_TEMPLATE_LIMITS_H

namespace qzlog {

/// The limits of message templates, for the library, which keeps them, and the tools, which warn before it does.

/// So many rendered references a template may have where ICU renders it: templates were written for an ICU that knew
/// the arguments 0 to 9 only, and the limit is part of their contract.
constexpr unsigned kMostTemplateArguments = 10;

/// So deeply the arguments of a template's ICU pattern may nest (see pattern_nesting.h): any message is then rendered
/// on a stack of 256 KiB.
constexpr int kMostPatternNesting = 100;

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_TEMPLATE_LIMITS_H
