#include "tools/definitions/definitions.h"

#include <iostream>
#include <stdexcept>
#include <utility>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"
#include "tools/report/finding_printer.h"
#include "tools/report/passed_over.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::Finding;
using qzlog_compiler::RenderingPaths;

Definitions read_compiled(DefinitionFile file) {
  Definitions definitions;
  definitions.shown_path = std::move(file.shown_path);
  definitions.bytes = std::move(file.content);
  qzlog_compiler::LdfFile read = qzlog_compiler::read_ldf(definitions.bytes);
  definitions.is_whole = !read.damage;
  definitions.diagnostics = qzlog_compiler::errors_of(read, definitions.shown_path);
  for (Finding& warning : qzlog_compiler::warnings_of(read, definitions.shown_path)) {
    passed_over().add_at("names section", warning.rule.name(), warning.file, warning.offset.value_or(0));
    definitions.diagnostics.push_back(std::move(warning));
  }
  definitions.model = std::move(read.model);
  return definitions;
}

/// `compile` makes a CompileResult of the text and the name of a file.
template <class Compile>
Definitions compile_file(DefinitionFile file, Compile compile) {
  try {
    CompileResult result = compile(file.content, file.shown_path);
    const bool is_whole = result.ok();
    return {std::move(file.shown_path),
            true,
            is_whole,
            std::move(file.content),
            std::move(result.bytes),
            std::move(result.model),
            std::move(result.diagnostics)};
  } catch (const std::length_error& error) {
    throw CommandError(kExitFindings, file.shown_path + ": " + error.what());
  }
}

}  // namespace

Definitions read_definitions(DefinitionFile file, const ReadingOptions& options) {
  if (!file.is_source) return read_compiled(std::move(file));
  CompileOptions compiler_options{.path = options.path, .surprises = options.surprises, .names = options.names};
  if (options.standard != nullptr) {
    compiler_options.standard = &options.standard->model;
    compiler_options.standard_file = options.standard->shown_path;
  }
  return compile_file(std::move(file), [&](const std::string& text, const std::string& name) {
    return qzlog_compiler::compile_source(text, name, compiler_options);
  });
}

Definitions read_errors_only(DefinitionFile file, ReadingOptions options) {
  options.surprises = false;
  Definitions definitions = read_definitions(std::move(file), options);
  std::erase_if(definitions.diagnostics, [](const Finding& found) {
    return !is_error(found) && found.rule != qzlog_compiler::Rule::kBadNamesSection;
  });
  return definitions;
}

Definitions read_without_errors(DefinitionFile file, const ReadingOptions& options, int exit_status) {
  Definitions definitions = read_errors_only(std::move(file), options);
  print_findings(definitions, options.standard);
  if (!definitions.ok()) throw CommandError(exit_status, "");
  return definitions;
}

Definitions merge_definitions(const Definitions& standard, DefinitionFile auxiliary, RenderingPaths path, bool names) {
  return compile_file(std::move(auxiliary), [&](const std::string& text, const std::string& name) {
    return qzlog_compiler::compile_merged(standard.model, standard.shown_path, text, name, path, names);
  });
}

void print_findings(const Definitions& definitions, const Definitions* standard) {
  FindingPrinter printer(stderr_has_colour());
  printer.add_source(definitions.shown_path, definitions.source);
  if (standard != nullptr) printer.add_source(standard->shown_path, standard->source);
  printer.print(definitions.diagnostics, std::cerr);
}

}  // namespace qzlog_tool
