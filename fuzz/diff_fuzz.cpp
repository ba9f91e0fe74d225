// Compares two compiled files as `qzlog diff` does, in both directions. The second begins where the input holds a
// file's magic number for the last time; an input with one is compared with itself only.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/model/model_json.h"
#include "tools/definitions/definitions.h"
#include "tools/diff/aux_collision.h"
#include "tools/diff/diff_report.h"
#include "tools/diff/model_diff.h"
#include "tools/diff/version_advice.h"

using namespace qzlog_compiler;
using namespace qzlog_tool;

namespace {

constexpr std::string_view kMagic = ".LDF";

DefinitionFile compiled_file(const char* name, std::string_view bytes) {
  return {name, name, std::string(bytes), false};
}

void show(const DefinitionModel& before, const DefinitionModel& after, const std::vector<DiffChange>& changes) {
  qzlog_tool::DiffReport report;
  report.old_version = before.version;
  report.new_version = after.version;
  report.advice = judge_version(before.version, after.version, changes);
  if (report.advice.finding) report.changes.push_back({{*report.advice.finding, {}, before.version, after.version}});
  for (const DiffChange& change : changes) report.changes.push_back({change});
  std::ostringstream out;
  print_diff(out, report, true);
  out << json_text(to_json(report));
}

/// The rules of one change and of the same backwards, where these are two.
constexpr std::pair<DiffRule, DiffRule> kOpposites[] = {
    {DiffRule::kGlobalAdded, DiffRule::kGlobalRemoved},
    {DiffRule::kEntryAdded, DiffRule::kEntryRemoved},
    {DiffRule::kAttributeAdded, DiffRule::kAttributeRemoved},
    {DiffRule::kAttributeMadeGlobal, DiffRule::kAttributeMadeOwn},
    {DiffRule::kTextLimitRaised, DiffRule::kTextLimitLowered},
    {DiffRule::kSelectorAdded, DiffRule::kSelectorRemoved},
    {DiffRule::kSelectorMessageAdded, DiffRule::kSelectorMessageRemoved},
};

DiffRule opposite(DiffRule rule) {
  for (const auto& [one, other] : kOpposites) {
    if (rule == one) return other;
    if (rule == other) return one;
  }
  return rule;
}

using Summary = std::tuple<std::uint32_t, DiffRule, std::optional<std::string>, std::optional<std::string>>;

/// What both directions have to agree on. A number type can be narrowed in both of them.
Summary summary(const DiffChange& change, bool backwards) {
  const EntryDefinition* const entry = change.place.entry();
  DiffRule rule = backwards ? opposite(change.rule) : change.rule;
  if (rule == DiffRule::kNumberWidened) rule = DiffRule::kNumberNarrowed;
  return {entry == nullptr ? 0 : entry->id, rule, backwards ? change.after : change.before,
          backwards ? change.before : change.after};
}

std::vector<Summary> summaries(const std::vector<DiffChange>& changes, bool backwards) {
  std::vector<Summary> result;
  for (const DiffChange& change : changes) result.push_back(summary(change, backwards));
  std::sort(result.begin(), result.end());
  return result;
}

void compare(const Definitions& before, const Definitions& after) {
  const std::vector<DiffChange> changes = compare_models(before.model, after.model);
  const std::vector<DiffChange> back = compare_models(after.model, before.model);
  if (summaries(changes, false) != summaries(back, true)) std::abort();
  show(before.model, after.model, changes);
  show(after.model, before.model, back);
}

/// Definitions that extend others collide with none of them.
void extend(const Definitions& standard, std::string_view aux_bytes) {
  const DefinitionFile aux = compiled_file("aux.ldf", aux_bytes);
  const bool extends = check_aux_file(aux, standard, RenderingPaths::kBoth).ok();
  if (extends != find_aux_collisions(aux, standard, RenderingPaths::kBoth).empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const std::size_t magic = input.rfind(kMagic);
  const std::size_t cut = magic == std::string_view::npos ? 0 : magic;
  const std::string_view old_bytes = input.substr(0, cut);
  const std::string_view new_bytes = input.substr(cut);
  if (!looks_like_ldf(new_bytes)) return 0;
  const Definitions after = read_definitions(compiled_file("new.ldf", new_bytes), {});
  if (!after.ok()) return 0;
  if (!compare_models(after.model, after.model).empty()) std::abort();
  if (!looks_like_ldf(old_bytes)) return 0;
  const Definitions before = read_definitions(compiled_file("old.ldf", old_bytes), {});
  if (!before.ok()) return 0;
  compare(before, after);
  extend(before, new_bytes);
  return 0;
}
