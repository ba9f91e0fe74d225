#include "tools/command_line.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>

#include "qzlog/qz_exception.h"
#include "qzlog/version.h"
#include "tools/catalog/catalog_command.h"
#include "tools/check/check_command.h"
#include "tools/compile/compile_command.h"
#include "tools/complete/complete_command.h"
#include "tools/count/count_command.h"
#include "tools/diff/diff_command.h"
#include "tools/explain/explain_command.h"
#include "tools/inspect/inspect_command.h"
#include "tools/known_rules.h"
#include "tools/manual/help_layout.h"
#include "tools/options/quiet_option.h"
#include "tools/render/render_command.h"
#include "tools/report/command_message.h"
#include "tools/report/library_text.h"
#include "tools/report/passed_over.h"
#include "tools/ship/ship_command.h"
#include "tools/stats/stats_command.h"
#include "tools/system/command_error.h"
#include "tools/system/out_of_memory.h"
#include "tools/system/standard_output.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

namespace {

#define QZLOG_TEXT_OF(number) #number
#define QZLOG_TEXT(number) QZLOG_TEXT_OF(number)

constexpr const char* kProgramName = "qzlog";
constexpr const char* kProgramDescription = "Definition-driven structured event logging";
constexpr const char* kProgramFooter =
    R"(Definitions are read from files, from standard input (-), or from git: git:REV:PATH is PATH at the revision REV, as in
git:HEAD:storage.yaml. What begins as a compiled file, or is named *.ldf, is compiled; everything else is a source in YAML.

Exit status: 0 success; 1 findings or bad input; 2 wrong usage, or a file that cannot be read or written.
'qzlog COMMAND --help' shows a command's options and examples.)";

void add_explain(CLI::App& app, int& exit_status) { add_explain_command(app, exit_status, all_known_rules); }
void add_complete(CLI::App& app, int& exit_status) { add_complete_command(app, exit_status, all_known_rules); }

/// Each adds one subcommand, which runs while the command line is parsed.
constexpr void (*kCommands[])(CLI::App& app, int& exit_status) = {
    add_compile_command, add_inspect_command, add_check_command,   add_diff_command, add_explain,  add_render_command,
    add_stats_command,   add_count_command,   add_catalog_command, add_ship_command, add_complete,
};

/// To each that runs, but for what completions ask.
void add_quiet_options(CLI::App& command) {
  const std::vector<CLI::App*> own = command.get_subcommands({});
  if (own.empty() && !command.get_group().empty()) add_quiet_option(command);
  for (CLI::App* const subcommand : own) add_quiet_options(*subcommand);
}

/// A subcommand stores its exit status in `exit_status`, which has to outlive `app`.
void add_commands(CLI::App& app, int& exit_status) {
  app.formatter(std::make_shared<HelpLayout>());
  app.description(kProgramDescription);
  app.footer(kProgramFooter);
  app.set_version_flag("--version", std::string("qzlog ") + kVersionNumber);
  app.require_subcommand(1);
  for (const auto add_command : kCommands) add_command(app, exit_status);
  for (CLI::App* const command : app.get_subcommands({})) add_quiet_options(*command);
}

void print_error(std::string_view text) { print_command_message(qzlog_compiler::Severity::kError, text); }

// The parser complains about what is missing before it complains about what is unknown, which is the likelier mistake.
std::string usage_error(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  if (error.get_name() != "RequiredError" || unknown.empty()) return error.what();
  std::string text = "'" + unknown.front() + "' was not expected";
  if (!app.get_subcommands().empty()) return text;
  text += "; the commands are";
  for (const CLI::App* const command : app.get_subcommands({})) {
    if (!command->get_group().empty()) text += ' ' + command->get_name();
  }
  return text;
}

int parse_and_run(const std::vector<std::string>& arguments) {
  int exit_status = kExitSuccess;
  CLI::App app("", kProgramName);
  add_commands(app, exit_status);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(error);
    print_error(usage_error(app, error) + "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.");
    return kExitCannotRun;
  }
  return exit_status;
}

// A command's own results, and the texts of --help and --version, may still be on their way.
int finish_output(int exit_status) {
  flush_standard_output();
  return exit_status;
}

int run_reporting_errors(const std::vector<std::string>& arguments) {
  try {
    return finish_output(parse_and_run(arguments));
  } catch (const CommandError& error) {
    if (*error.what() != '\0') print_error(error.what());
    return error.exit_status();
  } catch (const std::bad_alloc&) {
    print_out_of_memory();
  } catch (const qz_EXCEPTION_base& failure) {
    print_error(library_text(failure));
  } catch (const std::exception& error) {
    print_error(error.what());
  }
  return kExitCannotRun;
}

}  // namespace

const char* const kVersionNumber =
    QZLOG_TEXT(QZLOG_VERSION_MAJOR) "." QZLOG_TEXT(QZLOG_VERSION_MINOR) "." QZLOG_TEXT(QZLOG_VERSION_PATCH);

int run_command_line(const std::vector<std::string>& arguments) {
  passed_over().clear();
  const int exit_status = run_reporting_errors(arguments);
  tell_passed_over();
  return exit_status == kExitSuccess && !passed_over().is_empty() ? kExitFindings : exit_status;
}

CommandNode command_line_tree() {
  int unused_status = 0;
  CLI::App app("", kProgramName);
  add_commands(app, unused_status);
  return read_command_tree(app);
}

}  // namespace qzlog_tool
