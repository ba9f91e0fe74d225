#include "tools/compile_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/command_error.h"
#include "tools/compiler/compiler.h"
#include "tools/file_descriptor.h"
#include "tools/output_file.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::Diagnostic;
using qzlog_compiler::MessagePath;

constexpr const char* kFooter =
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
    "  qzlog compile - -o - < storage.yaml > storage.ldf";

struct CompileArguments {
  std::string source;
  std::string output;
  std::string standard;
  std::string path = "both";
};

std::string display_name(const std::string& path) { return path == "-" ? "<stdin>" : path; }

MessagePath path_of(const std::string& name) {
  if (name == "icu") return MessagePath::kIcu;
  return name == "narrow" ? MessagePath::kNarrow : MessagePath::kBoth;
}

void print(const std::vector<Diagnostic>& diagnostics) {
  for (const Diagnostic& diagnostic : diagnostics) std::cerr << diagnostic << '\n';
}

int compile(const CompileArguments& arguments) {
  refuse_overwriting(arguments.source, arguments.output);
  refuse_overwriting(arguments.standard, arguments.output);
  const std::string source = read_file(arguments.source);
  CompileOptions options;
  options.path = path_of(arguments.path);
  CompileResult standard;
  if (!arguments.standard.empty()) {
    standard = qzlog_compiler::load_standard(read_file(arguments.standard), display_name(arguments.standard));
    print(standard.diagnostics);
    if (!standard.ok()) return kExitFindings;
    options.standard = &standard.model;
  }
  const CompileResult result = qzlog_compiler::compile_source(source, display_name(arguments.source), options);
  print(result.diagnostics);
  if (!result.ok()) return kExitFindings;
  write_file(arguments.output, result.bytes);
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
  command->add_option("-o,--output", arguments->output, "Log definition file to write; - is standard output")
      ->required()
      ->type_name("OUT.ldf");
  command
      ->add_option("--aux-of", arguments->standard,
                   "Compile an auxiliary source: check that it extends these definitions, compiled or source")
      ->type_name("STD");
  command->add_option("--path", arguments->path, "Rendering path that the texts have to come out right on")
      ->check(CLI::IsMember({"icu", "narrow", "both"}).description(""))
      ->type_name("icu|narrow|both")
      ->capture_default_str();
  command->footer(kFooter);
  command->callback([arguments, &exit_status] { exit_status = run(*arguments); });
}

}  // namespace qzlog_tool
