#include "tools/compile/compile_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/compile/dependency_file.h"
#include "tools/compiler/model/model_json.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/message_path_option.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/long_job.h"
#include "tools/system/output_file.h"
#include "tools/system/standard_input.h"

namespace qzlog_tool {
namespace {

constexpr const char* kCompileFooter =
    "The message that a reader sees is the text that the source holds, or there is a diagnostic. Where one stored "
    "text\n"
    "cannot serve both rendering paths, --path says which one counts; for 'both' the compiler warns and writes the "
    "text for\n"
    "the ICU path. Nothing is written when there is an error, and a file that would not change is not rewritten.\n"
    "\n"
    "Behind the records stand the names and summaries of the entries, and which attributes are sensitive: where the "
    "file is,\n"
    "commands need no source beside it.\n"
    "\n"
    "Exit status: 0 success, 1 errors in a source, 2 wrong usage or a file that cannot be read or written.\n"
    "\n"
    "Examples:\n"
    "  qzlog compile storage.yaml -o storage.ldf\n"
    "  qzlog compile storage.yaml -o storage.ldf --path icu\n"
    "  qzlog compile site.yaml -o site.ldf --aux-of storage.ldf\n"
    "  qzlog compile storage.yaml --merge site.yaml -o all.ldf\n"
    "  qzlog compile storage.yaml --emit-json\n"
    "  qzlog compile storage.yaml -o storage.ldf --depfile storage.d\n"
    "  qzlog compile git:v2.5:storage.yaml -o storage-2.5.ldf\n"
    "  qzlog compile - -o - < storage.yaml > storage.ldf";

struct CompileCommandOptions {
  std::string source;
  std::string output;
  std::string standard;
  std::string auxiliary;
  std::string path = "both";
  std::string json;
  std::string dependencies;
  bool strip = false;
};

std::vector<std::string> given(std::initializer_list<std::string> paths) {
  std::vector<std::string> result;
  std::copy_if(paths.begin(), paths.end(), std::back_inserter(result), [](const auto& path) { return !path.empty(); });
  return result;
}

std::vector<std::string> inputs_of(const CompileCommandOptions& options) {
  return given({options.source, options.standard, options.auxiliary});
}

std::vector<std::string> outputs_of(const CompileCommandOptions& options) {
  return given({options.output, options.json, options.dependencies});
}

bool is_device(const std::string& path) {
  std::error_code missing;
  return path != "-" && std::filesystem::exists(path, missing) && !std::filesystem::is_regular_file(path, missing);
}

/// Of two results in one place only the second would be left.
void refuse_shared_output(const CompileCommandOptions& options) {
  const std::vector<std::string> outputs = outputs_of(options);
  for (auto path = outputs.begin(); path != outputs.end(); ++path) {
    const bool again = std::any_of(path + 1, outputs.end(), [&](const auto& name) { return same_file(*path, name); });
    if (!again || is_device(*path)) continue;
    throw CommandError(kExitCannotRun, "two results cannot both go to '" + *path + "'");
  }
}

void check_usage(const CompileCommandOptions& options) {
  for (const std::string& output : outputs_of(options)) {
    for (const std::string& input : inputs_of(options)) refuse_overwriting(input, output);
  }
  refuse_repeated_standard_input(inputs_of(options));
  refuse_shared_output(options);
  if (!options.dependencies.empty() && options.output == "-") {
    throw CommandError(kExitCannotRun, "--depfile says what a file depends on; name one with -o");
  }
}

/// Compiles the source, and says what is to be said about it. None where there is an error.
std::optional<Definitions> compile_source(const CompileCommandOptions& options) {
  ReadingOptions reading{.path = message_path_of(options.path), .names = !options.strip};
  Definitions standard;
  if (!options.standard.empty()) {
    standard = read_without_errors(read_definition_file(options.standard), {}, kExitFindings);
    reading.standard = &standard;
  }
  Definitions definitions;
  {
    const LongJob job("compiling " + display_name(options.source));
    definitions = read_definitions(read_definition_source(options.source), reading);
  }
  print_findings(definitions, reading.standard);
  return definitions.ok() ? std::optional(std::move(definitions)) : std::nullopt;
}

std::optional<Definitions> merge_source(const Definitions& standard, const CompileCommandOptions& options) {
  Definitions merged;
  {
    const LongJob job("compiling " + display_name(options.auxiliary));
    merged = merge_definitions(standard, read_definition_source(options.auxiliary), message_path_of(options.path),
                               !options.strip);
  }
  print_findings(merged, &standard);
  return merged.ok() ? std::optional(std::move(merged)) : std::nullopt;
}

void write_outputs(const CompileCommandOptions& options, const Definitions& result) {
  std::vector<OutputFile> outputs;
  if (!options.output.empty()) outputs.push_back({options.output, result.bytes});
  std::string json;
  if (!options.json.empty()) {
    json = qzlog_compiler::json_text(qzlog_compiler::to_json(result.model));
    outputs.push_back({options.json, json});
  }
  std::string rule;
  if (!options.dependencies.empty()) {
    std::vector<std::string> inputs = inputs_of(options);
    std::erase_if(inputs, [](const std::string& path) { return !names_file(path); });
    rule = dependency_rule(options.output, inputs);
    outputs.push_back({options.dependencies, rule});
  }
  write_files(outputs);
}

int compile(const CompileCommandOptions& options) {
  check_usage(options);
  std::optional<Definitions> result = compile_source(options);
  if (result && !options.auxiliary.empty()) result = merge_source(*result, options);
  if (!result) return kExitFindings;
  write_outputs(options, *result);
  return kExitSuccess;
}

}  // namespace

void add_compile_command(CLI::App& app, int& exit_status) {
  const auto options = std::make_shared<CompileCommandOptions>();
  CLI::App* const command = app.add_subcommand("compile", "Compile a definition source into a log definition file");
  command->add_option("SRC", options->source, "Definition source (YAML); - is standard input")->required();
  CLI::Option* const output =
      command->add_option("-o,--output", options->output, "Log definition file to write; - is standard output")
          ->check(check_not_empty)
          ->type_name("OUT.ldf");
  CLI::Option* const standard =
      command
          ->add_option("--aux-of", options->standard,
                       "Compile an auxiliary source: check that it extends these definitions, compiled or source")
          ->check(check_not_empty)
          ->type_name("STD");
  command
      ->add_option("--merge", options->auxiliary, "Compile this auxiliary source too, and both into one standard file")
      ->check(check_not_empty)
      ->type_name("AUX.yaml")
      ->excludes(standard);
  add_message_path_option(*command, options->path, "Rendering path that the texts have to come out right on");
  command->add_flag("--strip", options->strip,
                    "Leave the names section out: the file then knows entries by ID and no attribute as sensitive");
  command->add_flag(
      "--emit-json{-}", options->json,
      "Write the definitions with all defaults filled in as JSON: to standard output, or =FILE to a file");
  command
      ->add_option("--depfile", options->dependencies,
                   "Write the files that OUT.ldf depends on, as make and ninja "
                   "read them")
      ->check(check_not_empty)
      ->type_name("FILE")
      ->needs(output);
  command->footer(kCompileFooter);
  command->callback([options, &exit_status] {
    if (outputs_of(*options).empty()) throw CLI::RequiredError("-o OUT.ldf or --emit-json");
    exit_status = compile(*options);
  });
}

}  // namespace qzlog_tool
