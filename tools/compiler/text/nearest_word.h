#ifndef QZLOG_TOOLS_COMPILER_TEXT_NEAREST_WORD_H
#define QZLOG_TOOLS_COMPILER_TEXT_NEAREST_WORD_H

#include <span>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// The first of the candidates that `word` is most likely a misspelling of, empty when none is near: few letters
/// added, left out, replaced or swapped with their neighbour, case aside.
std::string_view nearest_word(std::string_view word, std::span<const std::string_view> candidates);

/// "did you mean 'x'?", or nothing where no candidate is near.
std::string did_you_mean(std::string_view word, std::span<const std::string_view> candidates);

/// The same with a blank and what is allowed behind it, or only what is allowed.
std::string did_you_mean(std::string_view word, std::span<const std::string_view> candidates, std::string allowed);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_NEAREST_WORD_H
