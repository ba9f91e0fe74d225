#include "tools/definitions/loaded_definitions.h"

#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#include "qzlog/logcfg.h"
#include "tools/compiler/file/ldf_names.h"
#include "tools/compiler/source/compiler.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/report/finding_printer.h"
#include "tools/report/library_text.h"
#include "tools/report/passed_over.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/memory_file.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;

/// Gives the library the file of a name.
using LoadFile = void (*)(const char* path);

// The library reads the file again and again, but through the one descriptor that it opens here.
void load_path(LoadFile load, const std::string& path, const std::string& shown_path) {
  try {
    load(path.c_str());
  } catch (const qz_EXCEPTION_base& failure) {
    const Finding finding{shown_path,
                          {},
                          qzlog_compiler::Severity::kError,
                          qzlog_compiler::Rule::kBadDefinitionFile,
                          library_text(failure)};
    FindingPrinter(stderr_has_colour()).print({&finding, 1}, std::cerr);
    throw CommandError(kExitFindings, "");
  }
}

void load_bytes(LoadFile load, const std::string& bytes, const std::string& shown_path) {
  const MemoryFile file(bytes);
  load_path(load, file.path(), shown_path);
}

// What came through a pipe cannot be read again, and git's objects are no files.
void load_compiled(LoadFile load, const DefinitionFile& file) {
  std::error_code ignored;
  if (names_file(file.path) && std::filesystem::is_regular_file(file.path, ignored)) {
    load_path(load, file.path, file.shown_path);
  } else {
    load_bytes(load, file.content, file.shown_path);
  }
}

/// The library passes over a damaged names section without a word. The records are read only where what is behind them
/// may be one.
void warn_of_damaged_names(const DefinitionFile& file) {
  const auto names = qzlog_compiler::read_ldf_names(file.content, file.content.size());
  if (names && !names->damage) return;
  const auto warnings = qzlog_compiler::warnings_of(qzlog_compiler::read_ldf(file.content), file.shown_path);
  for (const Finding& warning : warnings) {
    passed_over().add_at("names section", warning.rule.name(), warning.file, warning.offset.value_or(0));
  }
  FindingPrinter(stderr_has_colour()).print(warnings, std::cerr);
}

/// Of the warnings it prints those about texts only: whoever uses definitions did not write them.
Definitions load_source(LoadFile load, DefinitionFile file, ReadingOptions options) {
  options.surprises = false;
  Definitions definitions = read_definitions(std::move(file), options);
  print_findings(definitions, options.standard);
  if (!definitions.ok()) throw CommandError(kExitFindings, "");
  load_bytes(load, definitions.bytes, definitions.shown_path);
  return definitions;
}

}  // namespace

void load_definitions(const std::string& standard, const std::string& auxiliary, qzlog_compiler::RenderingPaths path,
                      const UseModel& use) {
  DefinitionFile file = read_definition_file(standard);
  std::optional<DefinitionFile> auxiliary_file;
  if (!auxiliary.empty()) auxiliary_file = read_definition_file(auxiliary);
  ReadingOptions options{.path = path};
  Definitions extended;
  if (file.is_source) {
    extended = load_source(qz_LOG_LogConfig::SetDefinitionPath, std::move(file), options);
  } else {
    load_compiled(qz_LOG_LogConfig::SetDefinitionPath, file);
    warn_of_damaged_names(file);
    const bool is_extended = auxiliary_file && auxiliary_file->is_source;
    if (is_extended || use) extended = read_without_errors(std::move(file), {}, kExitFindings);
  }
  if (use) use(extended.model);
  if (!auxiliary_file) return;
  options.standard = &extended;
  if (auxiliary_file->is_source) {
    const Definitions extending =
        load_source(qz_LOG_LogConfig::SetAuxDefinitionPath, std::move(*auxiliary_file), options);
    if (use) use(extending.model);
    return;
  }
  load_compiled(qz_LOG_LogConfig::SetAuxDefinitionPath, *auxiliary_file);
  warn_of_damaged_names(*auxiliary_file);
  if (use) use(read_without_errors(std::move(*auxiliary_file), {}, kExitFindings).model);
}

}  // namespace qzlog_tool
