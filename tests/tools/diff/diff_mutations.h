#ifndef QZLOG_TESTS_TOOLS_DIFF_DIFF_MUTATIONS_H
#define QZLOG_TESTS_TOOLS_DIFF_DIFF_MUTATIONS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/diff/diff_rules.h"

/// Random models, and single changes of them whose rule, place and verdicts are known.
namespace diff_mutations {

/// Where a mutation made its change.
struct Place {
  std::uint32_t entry = 0;  ///< the new ID; 0 for globals
  std::string attribute;
  std::uint32_t selector_index = 0;
};

/// Who knows of a change: compiled files, those with names alone, or sources alone.
enum class Known { kEverywhere, kWithNames, kInSources };

/// Makes one change, or none when the model has no place for it.
struct Mutation {
  qzlog_compiler::DiffRule rule;
  const char* verdicts;
  Known known;
  std::function<std::optional<Place>(qzlog_compiler::DefinitionModel&, qz_test::SeededRandom&)> apply;
};

/// Small, legal and without stored texts.
qzlog_compiler::DefinitionModel random_model(qz_test::SeededRandom& random);

/// The model with its stored texts written, as the compiler does.
qzlog_compiler::DefinitionModel lowered(qzlog_compiler::DefinitionModel model);

std::vector<Mutation> all_mutations();

}  // namespace diff_mutations

#endif  // QZLOG_TESTS_TOOLS_DIFF_DIFF_MUTATIONS_H
