#include "tools/merge/definition_sets.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "foundation/sha256.h"
#include "lines/envelope_form.h"
#include "qzlog/logcfg.h"
#include "tools/choice/byte_search.h"
#include "tools/choice/raw_line.h"
#include "tools/compiler/file/ldf_names.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/source/aux_merge.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/logs/line_members.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::DefinitionModel;
using qzlog_compiler::RenderingPaths;

constexpr std::size_t kMostComplaints = 100;

/// Of the records, as lines have it; the names behind them do not count.
std::string digest_of(const std::string& file) {
  const auto names = qzlog_compiler::read_ldf_names(file, file.size());
  qzlog::Sha256 hash;
  hash.add(file.data(), names && names->has_trailer ? names->begin : file.size());
  std::string digits(qzlog::kShortDigestDigits, '0');
  qzlog::write_short_digest(hash.digest(), digits.data());
  return digits;
}

/// Whether it may name its definitions elsewhere than writers of lines do.
bool may_name_definitions(std::string_view line) {
  return ByteSearch("\"definitions\"").find_in(line, 0) != std::string_view::npos ||
         ByteSearch("\\u").find_in(line, 0) != std::string_view::npos;
}

Definitions read_auxiliary(const std::string& path, const Definitions& standard, RenderingPaths rendering) {
  Definitions auxiliary = read_without_errors(
      read_definition_file(path), {.standard = &standard, .path = rendering, .surprises = false}, kExitFindings);
  if (auxiliary.is_source) return auxiliary;
  qzlog_compiler::Findings findings(auxiliary.shown_path);
  qzlog_compiler::check_aux_merge(auxiliary.model, qzlog_compiler::ModelIndex(standard.model), standard.shown_path,
                                  findings);
  if (!qzlog_compiler::has_errors(findings.all())) return auxiliary;
  auxiliary.diagnostics = findings.all();
  print_findings(auxiliary, &standard);
  throw CommandError(kExitFindings, "");
}

}  // namespace

DefinitionSets::DefinitionSets(const std::vector<DefinitionPaths>& paths, RenderingPaths path, Warn warn,
                               const UseModel& use)
    : warn_(std::move(warn)) {
  for (const DefinitionPaths& own : paths) add(own, path, use);
  make_layers();
  load(0);
}

// Sources count as what is compiled of them, so that the same definitions are alike however they are given.
void DefinitionSets::add(const DefinitionPaths& paths, RenderingPaths path, const UseModel& use) {
  Definitions standard =
      read_without_errors(read_definition_file(paths.standard), {.path = path, .surprises = false}, kExitFindings);
  if (use) use(standard.model);
  std::string digest = digest_of(standard.bytes);
  DefinitionModel set = qzlog_compiler::read_ldf(standard.bytes).model;
  if (!paths.auxiliary.empty()) {
    const Definitions auxiliary = read_auxiliary(paths.auxiliary, standard, path);
    if (use) use(auxiliary.model);
    digest += '+' + digest_of(auxiliary.bytes);
    set = qzlog_compiler::merge_models(std::move(set), qzlog_compiler::read_ldf(auxiliary.bytes).model);
  }
  models_.push_back(std::move(set));
  digests_.push_back(std::move(digest));
}

void DefinitionSets::make_layers() try {
  layers_.emplace(std::exchange(models_, {}));
  for (const DefinitionModel& layer : layers_->layers()) {
    std::string bytes = qzlog_compiler::write_ldf(layer);
    qzlog_compiler::append_names(layer, bytes);
    files_.emplace_back(bytes);
  }
} catch (const std::length_error& error) {
  throw CommandError(kExitFindings, std::string("the definitions are too large together: ") + error.what());
}

// Global attributes stay until all definitions are forgotten.
void DefinitionSets::load(std::size_t layer) {
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(files_[layer].path().c_str());
  loaded_ = layer;
  ++switches_;
}

void DefinitionSets::use_for(std::string_view line) {
  const RawLine raw(line);
  if (raw.has_id() && (raw.has_definitions() || !may_name_definitions(line))) {
    return use_for(raw.definitions(), raw.id());
  }
  const std::optional<LineMembers> members = read_line_members(line);
  if (!members) return;
  if (members->id) return use_for(members->definitions, *members->id);
  if (!members->symbolic_id.empty()) use_for_name(members->definitions, members->symbolic_id);
}

void DefinitionSets::use_for(std::string_view definitions, std::uint32_t id) {
  std::size_t set = 0;
  if (const std::optional<std::size_t> named = find_set(definitions)) {
    set = *named;
  } else {
    while (set < digests_.size() && !layers_->has(set, id)) ++set;
    if (set == digests_.size()) set = 0;
    if (definitions.empty()) complain_of_none(id);
  }
  const std::size_t layer = layers_->layer_of(set, id, loaded_);
  if (layer != loaded_) load(layer);
}

void DefinitionSets::use_for_name(std::string_view definitions, const std::string& name) {
  std::optional<std::size_t> set = find_set(definitions);
  for (std::size_t other = 0; !set && other < digests_.size(); ++other) {
    if (layers_->find_id(other, name)) set = other;
  }
  const std::optional<std::uint32_t> id = layers_->find_id(set.value_or(0), name);
  if (id && definitions.empty()) complain_of_none(*id);
  const std::size_t layer =
      id ? layers_->layer_of(set.value_or(0), *id, loaded_) : layers_->layer_without(name, set.value_or(0), loaded_);
  if (layer != loaded_) load(layer);
}

std::optional<std::size_t> DefinitionSets::find_set(std::string_view definitions) {
  if (definitions.empty()) return std::nullopt;
  if (definitions == latest_) return latest_set_;
  latest_ = definitions;
  const auto found = std::find(digests_.begin(), digests_.end(), definitions);
  latest_set_ =
      found != digests_.end() ? std::optional(static_cast<std::size_t>(found - digests_.begin())) : std::nullopt;
  if (!latest_set_ && qzlog::is_definitions_form(definitions)) complain(latest_);  // else the reader does
  return latest_set_;
}

void DefinitionSets::complain(const std::string& definitions) {
  if (unknown_.size() == kMostComplaints || !unknown_.insert(definitions).second) return;
  warn_("lines name the definitions " + definitions + ", which are not given: the first that have their IDs are used");
  if (unknown_.size() == kMostComplaints) warn_("of further definitions that lines name nothing is said");
}

void DefinitionSets::complain_of_none(std::uint32_t id) {
  if (complained_of_none_ || !layers_->is_contradicted(id)) return;
  complained_of_none_ = true;
  warn_("lines name no definitions, and the ID " + std::to_string(id) +
        " has several: the first that have their IDs are used");
}

void load_definitions(const std::vector<DefinitionPaths>& paths, RenderingPaths path, LineReporter& reporter,
                      const UseModel& use, std::optional<DefinitionSets>& sets) {
  if (paths.size() == 1) return load_definitions(paths.front().standard, paths.front().auxiliary, path, use);
  sets.emplace(
      paths, path, [&reporter](const std::string& text) { reporter.report(qzlog_compiler::Severity::kWarning, text); },
      use);
}

}  // namespace qzlog_tool
