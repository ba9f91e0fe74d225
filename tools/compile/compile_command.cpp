#include "tools/compile/compile_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <list>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/compile/dependency_file.h"
#include "tools/compiler/model/model_json.h"
#include "tools/compiler/source/compiler.h"
#include "tools/definitions/definition_input.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/output_file.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::MessagePath;

constexpr const char* kCompileFooter =
    "The message that a reader sees is the text that the source holds, or there is a diagnostic. Where one stored "
    "text\n"
    "cannot serve both rendering paths, --path says which one counts; for 'both' the compiler warns and writes the "
    "text for\n"
    "the ICU path. Nothing is written when there is an error, and a file that would not change is not rewritten.\n"
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
    "  qzlog compile - -o - < storage.yaml > storage.ldf";

struct CompileArguments {
  std::string source;
  std::string output;
  std::string standard;
  std::string auxiliary;
  std::string path = "both";
  std::string json;
  std::string dependencies;
};

/// The texts of the sources, which diagnostics show.
class Sources {
 public:
  std::string_view read(const std::string& path) {
    texts_.push_back(read_file(path));
    printer_.add_source(display_name(path), texts_.back());
    return texts_.back();
  }
  void print(const CompileResult& result) { printer_.print(result.diagnostics, std::cerr); }

 private:
  std::list<std::string> texts_;
  FindingPrinter printer_{stderr_has_colour()};
};

std::vector<std::string> given(std::initializer_list<std::string> paths) {
  std::vector<std::string> result;
  std::copy_if(paths.begin(), paths.end(), std::back_inserter(result), [](const auto& path) { return !path.empty(); });
  return result;
}

std::vector<std::string> inputs_of(const CompileArguments& arguments) {
  return given({arguments.source, arguments.standard, arguments.auxiliary});
}

std::vector<std::string> outputs_of(const CompileArguments& arguments) {
  return given({arguments.output, arguments.json, arguments.dependencies});
}

bool is_device(const std::string& path) {
  std::error_code missing;
  return path != "-" && std::filesystem::exists(path, missing) && !std::filesystem::is_regular_file(path, missing);
}

/// Standard input can be read once, and of two results in one place only the second would be left.
void refuse_sharing(const CompileArguments& arguments) {
  const std::vector<std::string> inputs = inputs_of(arguments);
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw CommandError(kExitCannotRun, "only one of the sources can come from standard input");
  }
  const std::vector<std::string> outputs = outputs_of(arguments);
  for (auto path = outputs.begin(); path != outputs.end(); ++path) {
    const bool again = std::any_of(path + 1, outputs.end(), [&](const auto& name) { return same_file(*path, name); });
    if (!again || is_device(*path)) continue;
    throw CommandError(kExitCannotRun, "two results cannot both go to '" + *path + "'");
  }
}

void check_usage(const CompileArguments& arguments) {
  for (const std::string& output : outputs_of(arguments)) {
    for (const std::string& input : inputs_of(arguments)) refuse_overwriting(input, output);
  }
  refuse_sharing(arguments);
  if (!arguments.dependencies.empty() && arguments.output == "-") {
    throw CommandError(kExitCannotRun, "--depfile says what a file depends on; name one with -o");
  }
}

CompileResult compile_main_source(const CompileArguments& arguments, CompileOptions options, Sources& sources) {
  CompileResult standard;
  if (!arguments.standard.empty()) {
    options.standard_file = display_name(arguments.standard);
    standard = qzlog_compiler::load_standard(sources.read(arguments.standard), options.standard_file);
    if (!standard.ok()) return standard;
    options.standard = &standard.model;
  }
  return qzlog_compiler::compile_source(sources.read(arguments.source), display_name(arguments.source), options);
}

CompileResult compile_inputs(const CompileArguments& arguments, Sources& sources) {
  const MessagePath path = message_path_of(arguments.path);
  CompileResult result = compile_main_source(arguments, {.path = path}, sources);
  if (!result.ok() || arguments.auxiliary.empty()) return result;
  return qzlog_compiler::compile_merged(std::move(result), display_name(arguments.source),
                                        sources.read(arguments.auxiliary), display_name(arguments.auxiliary), path);
}

void write_outputs(const CompileArguments& arguments, const CompileResult& result) {
  std::vector<OutputFile> outputs;
  if (!arguments.output.empty()) outputs.push_back({arguments.output, result.bytes});
  std::string json;
  if (!arguments.json.empty()) {
    json = qzlog_compiler::json_text(qzlog_compiler::to_json(result.model));
    outputs.push_back({arguments.json, json});
  }
  std::string rule;
  if (!arguments.dependencies.empty()) {
    std::vector<std::string> inputs = inputs_of(arguments);
    std::erase(inputs, "-");
    rule = dependency_rule(arguments.output, inputs);
    outputs.push_back({arguments.dependencies, rule});
  }
  write_files(outputs);
}

int compile(const CompileArguments& arguments) {
  check_usage(arguments);
  Sources sources;
  const CompileResult result = compile_inputs(arguments, sources);
  sources.print(result);
  if (!result.ok()) return kExitFindings;
  write_outputs(arguments, result);
  return kExitSuccess;
}

int run(const CompileArguments& arguments) {
  try {
    return compile(arguments);
  } catch (const CommandError& error) {
    std::cerr << "qzlog: " << error.what() << '\n';
    return error.exit_status();
  } catch (const std::length_error& error) {
    std::cerr << "qzlog: " << display_name(arguments.source) << ": " << error.what() << '\n';
    return kExitFindings;
  }
}

}  // namespace

void add_compile_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<CompileArguments>();
  CLI::App* const command = app.add_subcommand("compile", "Compile a definition source into a log definition file");
  command->add_option("SRC", arguments->source, "Definition source (YAML); - is standard input")->required();
  CLI::Option* const output =
      command->add_option("-o,--output", arguments->output, "Log definition file to write; - is standard output")
          ->check(check_not_empty)
          ->type_name("OUT.ldf");
  CLI::Option* const standard =
      command
          ->add_option("--aux-of", arguments->standard,
                       "Compile an auxiliary source: check that it extends these definitions, compiled or source")
          ->check(check_not_empty)
          ->type_name("STD");
  command
      ->add_option("--merge", arguments->auxiliary,
                   "Compile this auxiliary source too, and both into one standard file")
      ->check(check_not_empty)
      ->type_name("AUX.yaml")
      ->excludes(standard);
  command->add_option("--path", arguments->path, "Rendering path that the texts have to come out right on")
      ->check(CLI::IsMember({"icu", "narrow", "both"}).description(""))
      ->type_name("icu|narrow|both")
      ->capture_default_str();
  command->add_flag(
      "--emit-json{-}", arguments->json,
      "Write the definitions with all defaults filled in as JSON: to standard output, or =FILE to a file");
  command
      ->add_option("--depfile", arguments->dependencies,
                   "Write the files that OUT.ldf depends on, as make and ninja "
                   "read them")
      ->check(check_not_empty)
      ->type_name("FILE")
      ->needs(output);
  command->footer(kCompileFooter);
  command->callback([arguments, &exit_status] {
    if (outputs_of(*arguments).empty()) throw CLI::RequiredError("-o OUT.ldf or --emit-json");
    exit_status = run(*arguments);
  });
}

}  // namespace qzlog_tool
