#include "tools/compiler/compiler.h"

#include <algorithm>
#include <utility>

#include "tools/compiler/aux_merge.h"
#include "tools/compiler/ldf_reader.h"
#include "tools/compiler/ldf_writer.h"
#include "tools/compiler/source_loader.h"
#include "tools/compiler/utf8_text.h"
#include "tools/compiler/yaml_tree.h"

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

CompileResult load_standard_ldf(std::string_view bytes, std::string file_name) {
  LdfFile file = read_ldf(bytes);
  Diagnostics diagnostics(std::move(file_name));
  if (file.damage) {
    diagnostics.error({}, Rule::kBadDefinitionFile,
                      file.damage->reason + ", at offset " + std::to_string(file.damage->offset));
  } else if (std::string reason = find_wrapping_count(file.model); !reason.empty()) {
    diagnostics.error({}, Rule::kBadDefinitionFile, std::move(reason));
  }
  return {std::move(file.model), "", diagnostics.take_sorted()};
}

/// Parses and checks, without writing.
DefinitionModel analyse(std::string_view text, const CompileOptions& options, Diagnostics& diagnostics) {
  text = without_byte_order_mark(text);
  const std::optional<YamlTree> tree = parse_yaml(text, diagnostics);
  if (!tree) return {};
  std::optional<ModelIndex> standard;
  if (options.standard != nullptr) standard.emplace(*options.standard);
  DefinitionModel model = load_source(text, *tree, options.path, standard ? &*standard : nullptr, diagnostics);
  if (standard) check_aux_merge(model, *standard, diagnostics);
  return model;
}

}  // namespace

CompileResult compile_source(std::string_view text, std::string file_name, const CompileOptions& options) {
  Diagnostics diagnostics(std::move(file_name));
  CompileResult result;
  result.model = analyse(text, options, diagnostics);
  if (!diagnostics.has_errors()) result.bytes = write_ldf(result.model);
  result.diagnostics = diagnostics.take_sorted();
  return result;
}

CompileResult load_standard(std::string_view content, std::string file_name) {
  if (looks_like_ldf(content)) return load_standard_ldf(content, std::move(file_name));
  Diagnostics diagnostics(std::move(file_name));
  CompileResult result;
  result.model = analyse(content, {}, diagnostics);
  result.diagnostics = diagnostics.take_sorted();
  std::erase_if(result.diagnostics, [](const Diagnostic& found) { return found.severity != Severity::kError; });
  return result;
}

}  // namespace qzlog_compiler
