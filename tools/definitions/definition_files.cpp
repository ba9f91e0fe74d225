#include "tools/definitions/definition_files.h"

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#include "qzlog/logcfg.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"
#include "tools/report/finding_printer.h"
#include "tools/report/library_text.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/memory_file.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::Finding;
using qzlog_compiler::MessagePath;

struct DefinitionFile {
  std::string path;
  std::string shown_path;  // in diagnostics
  std::string content;
  bool compiled = false;
};

// A file named as a compiled one is taken for one even when it does not begin like one: the library says what is wrong.
DefinitionFile read_definition_file(const std::string& path) {
  DefinitionFile file{path, display_name(path), read_file(path), false};
  file.compiled = qzlog_compiler::looks_like_ldf(file.content) || std::filesystem::path(path).extension() == ".ldf";
  return file;
}

/// What an auxiliary source extends; null for a standard one.
struct StandardDefinitions {
  const DefinitionModel* model = nullptr;
  const DefinitionFile* file = nullptr;
};

[[noreturn]] void refuse(const std::string& shown_path, std::string reason) {
  const Finding finding{
      shown_path, {}, qzlog_compiler::Severity::kError, qzlog_compiler::Rule::kBadDefinitionFile, std::move(reason)};
  FindingPrinter(stderr_has_colour()).print({&finding, 1}, std::cerr);
  throw CommandError(kExitFindings, "");
}

void report(const CompileResult& result, const DefinitionFile& file, const DefinitionFile* standard = nullptr) {
  FindingPrinter printer(stderr_has_colour());
  printer.add_source(file.shown_path, file.content);
  if (standard != nullptr) printer.add_source(standard->shown_path, standard->content);
  printer.print(result.diagnostics, std::cerr);
  if (!result.ok()) throw CommandError(kExitFindings, "");
}

void add_names(const DefinitionModel& model, LoadedDefinitions& loaded) {
  loaded.has_source = true;
  for (const auto& entry : model.entries) loaded.names.emplace(entry.name, entry.id);
}

// The library reads the file again and again, but through the one descriptor that it opens here.
void load_path(void (*load)(const char*), const std::string& path, const std::string& shown_path) {
  try {
    load(path.c_str());
  } catch (const qz_EXCEPTION_base& failure) {
    refuse(shown_path, library_text(failure));
  }
}

void load_bytes(void (*load)(const char*), const std::string& bytes, const std::string& shown_path) {
  const MemoryFile file(bytes);
  load_path(load, file.path(), shown_path);
}

// What came through a pipe cannot be read again, so it goes into a file first.
void load_compiled(void (*load)(const char*), const DefinitionFile& file) {
  std::error_code ignored;
  if (file.path != "-" && std::filesystem::is_regular_file(file.path, ignored)) {
    load_path(load, file.path, file.shown_path);
  } else {
    load_bytes(load, file.content, file.shown_path);
  }
}

/// Warns about texts only: whoever uses definitions did not write them.
DefinitionModel load_source(void (*load)(const char*), const DefinitionFile& file, MessagePath path,
                            const StandardDefinitions& standard, LoadedDefinitions& loaded) {
  CompileOptions options{path, standard.model, "", false};
  if (standard.file != nullptr) options.standard_file = standard.file->shown_path;
  CompileResult result = qzlog_compiler::compile_source(file.content, file.shown_path, options);
  report(result, file, standard.file);
  load_bytes(load, result.bytes, file.shown_path);
  add_names(result.model, loaded);
  return std::move(result.model);
}

DefinitionModel read_model(const DefinitionFile& file) {
  CompileResult result = qzlog_compiler::load_standard(file.content, file.shown_path);
  report(result, file);
  return std::move(result.model);
}

void load_auxiliary(const DefinitionFile& file, const StandardDefinitions& standard, MessagePath path,
                    LoadedDefinitions& loaded) {
  if (file.compiled) {
    load_compiled(qz_LOG_LogConfig::SetAuxDefinitionPath, file);
  } else {
    load_source(qz_LOG_LogConfig::SetAuxDefinitionPath, file, path, standard, loaded);
  }
}

}  // namespace

LoadedDefinitions load_definitions(const std::string& standard, const std::string& auxiliary, MessagePath path) {
  LoadedDefinitions loaded;
  const DefinitionFile file = read_definition_file(standard);
  const std::optional<DefinitionFile> auxiliary_file =
      auxiliary.empty() ? std::nullopt : std::optional(read_definition_file(auxiliary));
  DefinitionModel model;
  if (file.compiled) {
    load_compiled(qz_LOG_LogConfig::SetDefinitionPath, file);
    if (auxiliary_file && !auxiliary_file->compiled) model = read_model(file);
  } else {
    model = load_source(qz_LOG_LogConfig::SetDefinitionPath, file, path, {}, loaded);
  }
  if (auxiliary_file) load_auxiliary(*auxiliary_file, {&model, &file}, path, loaded);
  return loaded;
}

EntryNames load_entry_names(const std::string& source) {
  const DefinitionFile file = read_definition_file(source);
  if (file.compiled) {
    throw CommandError(kExitCannotRun, "'" + source + "' has no names: compiled files hold only IDs, give the source");
  }
  LoadedDefinitions loaded;
  add_names(read_model(file), loaded);
  return std::move(loaded.names);
}

}  // namespace qzlog_tool
