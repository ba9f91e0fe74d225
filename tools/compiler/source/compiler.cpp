#include "tools/compiler/source/compiler.h"

#include <algorithm>
#include <utility>

#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/source/accepted_warnings.h"
#include "tools/compiler/source/aux_merge.h"
#include "tools/compiler/source/model_warnings.h"
#include "tools/compiler/source/source_loader.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

/// The first thing in a model that the library would count wrongly, empty when there is none.
std::string find_wrapping_count(const DefinitionModel& model) {
  if (model.globals.size() > kMaximumCount) return "more than 255 global attributes";
  for (const EntryDefinition& entry : model.entries) {
    if (entry.attributes.size() > kMaximumCount) return "more than 255 attributes in entry " + std::to_string(entry.id);
    if (entry.selector.messages.size() > kMaximumCount) {
      return "more than 255 selector messages in entry " + std::to_string(entry.id);
    }
  }
  return "";
}

/// Parses and checks, without writing.
DefinitionModel analyse(std::string_view text, const CompileOptions& options, AcceptedWarnings& accepted,
                        Findings& diagnostics) {
  text = without_byte_order_mark(text);
  const std::optional<YamlTree> tree = parse_yaml(text, diagnostics);
  if (!tree) return {};
  std::optional<ModelIndex> standard;
  if (options.standard != nullptr) standard.emplace(*options.standard);
  DefinitionModel model =
      load_source(text, *tree, options.path, standard ? &*standard : nullptr, accepted, diagnostics);
  if (standard) check_aux_merge(model, *standard, options.standard_file, diagnostics);
  return model;
}

void add_model_warnings(const DefinitionModel& model, const std::string& file_name, const CompileOptions& options,
                        Findings& diagnostics) {
  for (ModelWarning& found : find_model_warnings(model, options.standard, options.path)) {
    Finding& warning =
        diagnostics.warning(found.position, found.rule, std::move(found.text)).with_hint(std::move(found.hint));
    for (ModelWarning::Place& place : found.places) {
      const std::string& file = place.in_standard ? options.standard_file : file_name;
      warning.notes.push_back({file, place.position, std::move(place.text)});
    }
  }
}

}  // namespace

CompileResult compile_source(std::string_view text, const std::string& file_name, const CompileOptions& options) {
  Findings diagnostics(file_name);
  AcceptedWarnings accepted;
  CompileResult result;
  result.model = analyse(text, options, accepted, diagnostics);
  const bool complete = !diagnostics.has_errors();
  if (complete) result.bytes = write_ldf(result.model);
  if (complete && options.names) append_names(result.model, result.bytes);
  if (complete && options.surprises) add_model_warnings(result.model, file_name, options, diagnostics);
  accepted.remove_accepted(diagnostics);
  if (complete && options.surprises) accepted.report_unused(options.path, diagnostics);
  result.diagnostics = diagnostics.take_sorted();
  return result;
}

CompileResult compile_merged(DefinitionModel standard, const std::string& standard_file, std::string_view text,
                             const std::string& file_name, RenderingPaths path, bool names) {
  CompileResult aux =
      compile_source(text, file_name, {.path = path, .standard = &standard, .standard_file = standard_file});
  // What the library forgets when it reads an entry of two files again cannot be forgotten of one file.
  std::erase_if(aux.diagnostics, [](const Finding& found) { return found.rule == Rule::kAuxSharedEntries; });
  CompileResult merged;
  merged.diagnostics = std::move(aux.diagnostics);
  if (!merged.ok()) return merged;
  merged.model = merge_models(std::move(standard), aux.model);
  merged.bytes = write_ldf(merged.model);
  if (names) append_names(merged.model, merged.bytes);
  return merged;
}

Finding names_warning(const LdfDamage& damage, const std::string& file_name) {
  const std::string detail = damage.detail.empty() ? "" : " (" + damage.detail + ")";
  Finding warning{
      file_name, {}, Severity::kWarning, Rule::kBadNamesSection, damage.reason + detail + " and is ignored"};
  warning.offset = damage.offset;
  return warning;
}

std::vector<Finding> warnings_of(const LdfFile& file, const std::string& file_name) {
  if (!file.names_damage) return {};
  return {names_warning(*file.names_damage, file_name)};
}

std::vector<Finding> errors_of(const LdfFile& file, const std::string& file_name) {
  const std::string reason = file.damage ? file.damage->reason + ", at offset " + std::to_string(file.damage->offset)
                                         : find_wrapping_count(file.model);
  if (reason.empty()) return {};
  return {{file_name, {}, Severity::kError, Rule::kBadDefinitionFile, reason}};
}

}  // namespace qzlog_compiler
