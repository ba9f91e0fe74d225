#ifndef QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MODEL_H
#define QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MODEL_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/compiler/random_message.h"
#include "tools/compiler/model/definition_model.h"

namespace random_model {

struct ModelOptions {
  std::size_t entries = 20;
  MessageKind messages = MessageKind::kShowable;
  bool raw_templates = true;  ///< some messages are `raw`
};

/// What was made. Of the model's messages only `written` and `raw` are set: `stored` is the compiler's to say.
struct RandomModel {
  qzlog_compiler::DefinitionModel model;
  /// What each message is made of, by entry ID and selector index (0: the default message); nothing for `raw` ones.
  std::map<std::pair<std::uint32_t, std::uint32_t>, MessagePieces> messages;
};

/// A model with attributes of every type, globals, selectors, redirects, masks and words, and names and texts in
/// several scripts. Everything about it is legal: with the default options it compiles without an error for `--path
/// both`, though not without warnings, and `kEverywhere` compiles for each path. Equal seeds give equal models.
RandomModel make_model(qz_test::SeededRandom& random, const ModelOptions& options = {});

/// A definition source of the model, in one of the many ways of writing it in YAML: entries in their order, defaults
/// written or left out, numbers in both bases, texts in every style that can hold them.
std::string to_yaml(const qzlog_compiler::DefinitionModel& model, qz_test::SeededRandom& random);

/// What a message of this entry can refer to: its own attributes, the global ones and the entry's time.
std::vector<Referable> referables(const qzlog_compiler::DefinitionModel& model,
                                  const qzlog_compiler::EntryDefinition& entry);

}  // namespace random_model

#endif  // QZLOG_TESTS_TOOLS_COMPILER_RANDOM_MODEL_H
