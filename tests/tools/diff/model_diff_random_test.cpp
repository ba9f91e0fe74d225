#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/diff/diff_mutations.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/diff/model_diff.h"

/// Random models, one known change at a time.
namespace {

using namespace qzlog_compiler;
using diff_mutations::all_mutations;
using diff_mutations::Known;
using diff_mutations::lowered;
using diff_mutations::Mutation;
using diff_mutations::Place;
using diff_mutations::random_model;
using qz_test::SeededRandom;

DefinitionModel compiled(const DefinitionModel& model) {
  LdfFile file = read_ldf(write_ldf(model));
  EXPECT_FALSE(file.damage.has_value());
  return std::move(file.model);
}

DefinitionModel compiled_with_names(const DefinitionModel& model) {
  std::string bytes = write_ldf(model);
  append_names(model, bytes);
  LdfFile file = read_ldf(bytes);
  EXPECT_FALSE(file.damage || file.names_damage);
  return std::move(file.model);
}

std::string described(const DiffChange& change) {
  const DiffPlace& place = change.place;
  const DiffRuleInfo& info = diff_rule_info(change.rule);
  std::string text = std::string(info.name) + " entry " + std::to_string(place.entry() ? place.entry()->id : 0) +
                     " attribute <" + (place.attribute() ? place.attribute()->name : "") + "> selector " +
                     std::to_string(place.message() ? place.message()->index : 0) + " breaks";
  for (const std::string_view verdict : verdict_names(info.verdicts)) text.append(" ").append(verdict);
  return text + '\n';
}

std::string described(const DefinitionModel& before, const DefinitionModel& after) {
  std::string text;
  for (const DiffChange& change : compare_models(before, after)) text += described(change);
  return text;
}

std::string described(const Mutation& mutation, const Place& place) {
  const std::string verdicts = *mutation.verdicts == '\0' ? "" : std::string(" ") + mutation.verdicts;
  return std::string(diff_rule_info(mutation.rule).name) + " entry " + std::to_string(place.entry) + " attribute <" +
         place.attribute + "> selector " + std::to_string(place.selector_index) + " breaks" + verdicts + '\n';
}

/// A random model that the mutation has a place in, and what became of it.
struct Mutated {
  DefinitionModel before;
  DefinitionModel after;
  Place place;
};

Mutated mutate(const Mutation& mutation, SeededRandom& random) {
  for (;;) {
    DefinitionModel model = random_model(random);
    const DefinitionModel before = lowered(model);
    const std::optional<Place> place = mutation.apply(model, random);
    if (place) return {before, lowered(std::move(model)), *place};
  }
}

constexpr int kRounds = 20;

TEST(ModelDiffRandom, OneChange_IsTheOnlyOneReported) {
  SeededRandom random;
  for (const Mutation& mutation : all_mutations()) {
    for (int round = 0; round < kRounds; ++round) {
      const Mutated mutated = mutate(mutation, random);
      ASSERT_EQ(described(mutated.before, mutated.after), described(mutation, mutated.place));
    }
  }
}

TEST(ModelDiffRandom, OneChangeInCompiledFiles_IsReportedWhereTheyKnowIt) {
  SeededRandom random;
  for (const Mutation& mutation : all_mutations()) {
    if (mutation.rule == DiffRule::kEntryRenumbered) continue;  // without names: one entry gone, another added
    for (int round = 0; round < kRounds; ++round) {
      const Mutated mutated = mutate(mutation, random);
      const DefinitionModel before = compiled(mutated.before);
      const std::string expected =
          mutation.known == Known::kEverywhere ? described(mutation, mutated.place) : std::string();
      ASSERT_EQ(described(before, compiled(mutated.after)), expected);
      ASSERT_EQ(described(before, mutated.after), expected);
    }
  }
}

TEST(ModelDiffRandom, OneChangeInCompiledFilesWithNames_IsReportedWhereTheyKnowIt) {
  SeededRandom random;
  for (const Mutation& mutation : all_mutations()) {
    for (int round = 0; round < kRounds; ++round) {
      const Mutated mutated = mutate(mutation, random);
      const std::string expected =
          mutation.known != Known::kInSources ? described(mutation, mutated.place) : std::string();
      ASSERT_EQ(described(compiled_with_names(mutated.before), compiled_with_names(mutated.after)), expected);
    }
  }
}

TEST(ModelDiffRandom, EveryModelRule_HasAMutation) {
  const std::vector<Mutation> mutations = all_mutations();
  for (const DiffRuleInfo& info : all_diff_rules()) {
    const auto rule = static_cast<DiffRule>(info.number);
    if (info.name.starts_with("version-") || rule == DiffRule::kAuxCollision) continue;  // judged elsewhere
    EXPECT_TRUE(std::any_of(mutations.begin(), mutations.end(), [&](const Mutation& mutation) {
      return mutation.rule == rule;
    })) << info.name;
  }
}

TEST(ModelDiffRandom, SameModel_HasNoChange) {
  SeededRandom random;
  for (int round = 0; round < 10 * kRounds; ++round) {
    const DefinitionModel model = lowered(random_model(random));
    DefinitionModel shuffled = model;
    std::reverse(shuffled.entries.begin(), shuffled.entries.end());
    for (EntryDefinition& entry : shuffled.entries) {
      std::reverse(entry.selector.messages.begin(), entry.selector.messages.end());
    }
    ASSERT_EQ(described(model, shuffled), "");
    ASSERT_EQ(described(model, compiled(shuffled)), "");
    ASSERT_EQ(described(compiled(shuffled), model), "");
  }
}

}  // namespace
