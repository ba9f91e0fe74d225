#ifndef QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MESSAGE_H
#define QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MESSAGE_H

#include <functional>
#include <string>
#include <vector>

#include "qzlog/logattrib.h"
#include "tests/support/seeded_random.h"

namespace random_model {

/// A piece of a message as its author thinks of it: text that stands for itself, or a reference.
struct MessagePiece {
  bool is_reference = false;
  std::string text;    ///< the text, or the attribute's name
  char format = '\0';  ///< asked for by name; NUL: none
};

using MessagePieces = std::vector<MessagePiece>;

/// What a message may refer to.
struct Referable {
  std::string name;
  qz_AttributeType type = TypeUnknown;
};

enum class MessageKind {
  kAnything,   ///< what no path can show included: percent signs anywhere, neighbours, too many references
  kShowable,   ///< what at least one path can show; a percent sign stands at the very start only
  kEverywhere  ///< what both paths can show, though maybe not from one template
};

/// A message without two texts in a row that begins, ends and goes on with either kind of piece; braces, apostrophes
/// and characters of every length in UTF-8 are frequent. Only attributes whose type a placeholder accepts are referred
/// to.
MessagePieces random_message(qz_test::SeededRandom& random, const std::vector<Referable>& referables, MessageKind kind);

/// The message as it stands in a definition source: braces doubled, `{Name}`, `{Name:F}`.
std::string written(const MessagePieces& pieces);

/// The message as a reader has to see it, where `value` gives what a reference shows (its format is NUL for the
/// default).
std::string shown(const MessagePieces& pieces,
                  const std::function<std::string(const std::string& name, char format)>& value);

}  // namespace random_model

#endif  // QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MESSAGE_H
