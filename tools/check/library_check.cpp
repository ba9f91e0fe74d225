#include "tools/check/library_check.h"

#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "definitions/definition_format.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tools/compiler/file/entry_map.h"
#include "tools/report/check_rules.h"
#include "tools/report/library_text.h"
#include "tools/system/memory_file.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::EntryMapPair;

/// What the library throws has one class for all that is wrong with a file: its text tells the kinds apart.
constexpr struct {
  std::string_view part_of_text;
  CheckRule rule;
} kRefusals[] = {
    {"definition file is corrupted", CheckRule::kRefusedEntryId},
    {" already exist.", CheckRule::kRefusedAttribute},
    {"selector_attribute name conflict", CheckRule::kRefusedSelectorAttribute},
    {"selector message index in AUX", CheckRule::kRefusedSelectorMessage},
};

qzlog_compiler::AnyRule rule_of(const std::string& text, CheckRule otherwise) {
  for (const auto& refusal : kRefusals) {
    if (text.find(refusal.part_of_text) != std::string::npos) return refusal.rule;
  }
  return otherwise;
}

/// The library's text where it throws, nothing where it does not.
template <class Function>
std::optional<std::string> refusal_of(Function&& function) {
  try {
    function();
    return std::nullopt;
  } catch (const QZX_logging_all& failure) {
    return library_text(failure);
  }
}

/// The library reads a record when it is asked for the first time.
void look_up_entries(const std::vector<EntryMapPair>& pairs, std::set<std::uint32_t> seen, CheckReport& report) {
  for (const EntryMapPair& pair : pairs) {
    if (!seen.insert(pair.id).second) continue;
    const auto refusal = refusal_of([&] { const qz_LOG_LogEntry entry(pair.id, 0); });
    if (!refusal) continue;
    report.about_entry(pair.id);
    report.error(rule_of(*refusal, CheckRule::kRefusedRecord), *refusal);
  }
}

/// An auxiliary file that is loaded part by part: its global attributes and the pairs that nothing can be wrong with
/// while it is loaded come first, then the pairs of entries that are known already and are merged, each alone.
class DividedFile {
 public:
  DividedFile(const std::string& bytes, const std::set<std::uint32_t>& standard_ids)
      : header_(bytes.substr(0, qzlog::ldf::kHeaderSize)),
        merged_(divide(bytes, standard_ids)),
        file_(with_map(bytes)) {}

  const std::vector<EntryMapPair>& merged() const { return merged_; }
  void load_new_entries() {
    load(map_offset_, new_.size());
    qzlog_compiler::leave_out_globals(header_);
  }
  void load_merged(std::size_t i) { load(map_offset_ + (new_.size() + i) * qzlog::ldf::kMapPairSize, 1); }

 private:
  std::vector<EntryMapPair> divide(const std::string& bytes, const std::set<std::uint32_t>& standard_ids) {
    std::set<std::uint32_t> known = standard_ids;
    std::vector<EntryMapPair> merged;
    for (const EntryMapPair& pair : qzlog_compiler::read_entry_map(bytes)) {
      (known.insert(pair.id).second ? new_ : merged).push_back(pair);
    }
    return merged;
  }

  std::string with_map(std::string bytes) {
    map_offset_ = qzlog_compiler::append_map_pairs(bytes, new_);
    qzlog_compiler::append_map_pairs(bytes, merged_);
    return bytes;
  }

  void load(std::size_t offset, std::size_t count) {
    qzlog_compiler::set_entry_map(header_, offset, count);
    file_.overwrite_beginning(header_);
    qz_LOG_LogConfig::SetAuxDefinitionPath(file_.path().c_str());
  }

  std::string header_;
  std::size_t map_offset_ = 0;
  std::vector<EntryMapPair> new_;
  std::vector<EntryMapPair> merged_;
  MemoryFile file_;
};

std::set<std::uint32_t> ids_of(const std::string& bytes) {
  std::set<std::uint32_t> ids;
  for (const EntryMapPair& pair : qzlog_compiler::read_entry_map(bytes)) ids.insert(pair.id);
  return ids;
}

/// Returns the IDs that are refused. What the library accepts stays loaded, so that a repeated ID meets what its first
/// record left, as it does in the whole file.
std::set<std::uint32_t> load_one_by_one(const std::string& bytes, const std::string& standard, CheckReport& report) {
  std::set<std::uint32_t> refused;
  if (bytes.size() < qzlog::ldf::kHeaderSize) return refused;
  DividedFile file(bytes, ids_of(standard));
  if (refusal_of([&] { file.load_new_entries(); })) return refused;
  for (std::size_t i = 0; i < file.merged().size(); ++i) {
    const auto refusal = refusal_of([&] { file.load_merged(i); });
    if (!refusal) continue;
    const std::uint32_t id = file.merged()[i].id;
    report.about_entry(id);
    report.error(rule_of(*refusal, CheckRule::kRefusedRecord), *refusal);
    refused.insert(id);
  }
  return refused;
}

void report_refused_file(const std::string& text, CheckReport& report) {
  report.about_file();
  report.error(CheckRule::kRefusedFile, text);
}

}  // namespace

bool check_standard_with_library(const std::string& bytes, CheckReport& report) {
  const MemoryFile file(bytes);
  qz_LOG_LogConfig::ClearDefinitions();
  if (const auto refusal = refusal_of([&] { qz_LOG_LogConfig::SetDefinitionPath(file.path().c_str()); })) {
    report_refused_file(*refusal, report);
    return false;
  }
  look_up_entries(qzlog_compiler::read_entry_map(bytes), {}, report);
  return true;
}

void check_auxiliary_with_library(const std::string& bytes, const std::string& standard, CheckReport& report) {
  const MemoryFile standard_file(standard);
  const MemoryFile file(bytes);
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(standard_file.path().c_str());
  const auto refusal = refusal_of([&] { qz_LOG_LogConfig::SetAuxDefinitionPath(file.path().c_str()); });
  const std::vector<EntryMapPair> pairs = qzlog_compiler::read_entry_map(bytes);
  std::set<std::uint32_t> refused;
  if (refusal) {
    qz_LOG_LogConfig::SetDefinitionPath(standard_file.path().c_str());  // entries before the refused one were merged
    refused = load_one_by_one(bytes, standard, report);
    if (refused.empty()) return report_refused_file(*refusal, report);
  }
  look_up_entries(pairs, std::move(refused), report);
}

}  // namespace qzlog_tool
