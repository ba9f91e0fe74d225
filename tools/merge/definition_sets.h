#ifndef QZLOG_TOOLS_MERGE_DEFINITION_SETS_H
#define QZLOG_TOOLS_MERGE_DEFINITION_SETS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/logs/line_reporter.h"
#include "tools/merge/definition_layers.h"
#include "tools/system/memory_file.h"

namespace qzlog_tool {

/// A standard definition file and an auxiliary one over it, which may be empty.
struct DefinitionPaths {
  std::string standard;
  std::string auxiliary;

  bool operator==(const DefinitionPaths&) const = default;
};

/// Has the library read each line of a log against those of several definitions that the line names, else against the
/// first that have its ID.
class DefinitionSets {
 public:
  using Warn = std::function<void(const std::string& text)>;

  /// Loads them, as load_definitions does with one. `warn` is told, once for each, of definitions that lines name and
  /// that are none of these, and once of lines that name none although an ID has several. One object at a time: the
  /// library's settings are the process's.
  DefinitionSets(const std::vector<DefinitionPaths>& paths, qzlog_compiler::RenderingPaths path, Warn warn,
                 const UseModel& use);

  /// Right before the line is read.
  void use_for(std::string_view line);

  /// What tells a set apart, as lines name it.
  const std::string& digest(std::size_t set) const { return digests_[set]; }
  /// How often the library was given other definitions.
  std::uint64_t switches() const { return switches_; }
  std::size_t layer_count() const { return files_.size(); }

 private:
  void add(const DefinitionPaths& paths, qzlog_compiler::RenderingPaths path, const UseModel& use);
  void make_layers();
  void use_for(std::string_view definitions, std::uint32_t id);
  void use_for_name(std::string_view definitions, const std::string& name);
  std::optional<std::size_t> find_set(std::string_view definitions);
  void complain(const std::string& definitions);
  void complain_of_none(std::uint32_t id);
  void load(std::size_t layer);

  Warn warn_;
  std::vector<qzlog_compiler::DefinitionModel> models_;  // until there are layers
  std::vector<std::string> digests_;
  std::optional<DefinitionLayers> layers_;
  std::vector<MemoryFile> files_;  // of the layers
  std::size_t loaded_ = 0;
  std::uint64_t switches_ = 0;
  std::string latest_;  // definitions that a line named, and which they are
  std::optional<std::size_t> latest_set_;
  std::set<std::string> unknown_;
  bool complained_of_none_ = false;
};

/// Loads definitions as the lines of logs are to be read: one as load_definitions does, several as `sets`, whose
/// warnings go to `reporter`, which has to outlive them.
void load_definitions(const std::vector<DefinitionPaths>& paths, qzlog_compiler::RenderingPaths path,
                      LineReporter& reporter, const UseModel& use, std::optional<DefinitionSets>& sets);

/// For readers of whole files: uses the definitions of each line that they are about to read.
class LineDefinitions : private qz_LOG_LineChoice {
 public:
  /// `sets` is null where there are no several definitions; `choice`, which may be null, is asked first. Both have to
  /// outlive this object.
  LineDefinitions(DefinitionSets* sets, qz_LOG_LineChoice* choice) : sets_(sets), choice_(choice) {}

  /// For the reader; null where there is nothing to do.
  qz_LOG_LineChoice* line_choice() { return sets_ != nullptr ? this : choice_; }

 private:
  bool TakesLine(const char* line, std::size_t length) override {
    if (choice_ != nullptr && !choice_->TakesLine(line, length)) return false;
    sets_->use_for({line, length});
    return true;
  }
  bool TakesLastLine(const char* line, std::size_t length) override {
    if (choice_ != nullptr && !choice_->TakesLastLine(line, length)) return false;
    sets_->use_for({line, length});
    return true;
  }

  DefinitionSets* sets_;
  qz_LOG_LineChoice* choice_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_DEFINITION_SETS_H
