#include "tools/commands.h"

#include <CLI/CLI.hpp>
#include <string>

#include "qzlog/version.h"
#include "tools/catalog_command.h"
#include "tools/check_command.h"
#include "tools/compile_command.h"
#include "tools/count_command.h"
#include "tools/diff_command.h"
#include "tools/explain_command.h"
#include "tools/inspect_command.h"
#include "tools/render_command.h"

namespace qzlog_tool {

namespace {

#define QZLOG_TEXT_OF(number) #number
#define QZLOG_TEXT(number) QZLOG_TEXT_OF(number)

constexpr const char* kDescription = "Definition-driven structured event logging";
constexpr const char* kFooter =
    R"(Exit status: 0 success; 1 findings or bad input; 2 wrong usage, or a file that cannot be read or written.
'qzlog COMMAND --help' shows a command's options and examples.)";

/// Each adds one subcommand, which runs while the command line is parsed.
constexpr void (*kCommands[])(CLI::App& app, int& exit_status) = {
    add_compile_command, add_inspect_command, add_check_command, add_diff_command,
    add_explain_command, add_render_command,  add_count_command, add_catalog_command,
};

}  // namespace

const char* const kVersionNumber =
    QZLOG_TEXT(QZLOG_VERSION_MAJOR) "." QZLOG_TEXT(QZLOG_VERSION_MINOR) "." QZLOG_TEXT(QZLOG_VERSION_PATCH);

void add_commands(CLI::App& app, int& exit_status) {
  app.description(kDescription);
  app.footer(kFooter);
  app.set_version_flag("--version", std::string("qzlog ") + kVersionNumber);
  app.require_subcommand(1);
  for (const auto add_command : kCommands) add_command(app, exit_status);
}

}  // namespace qzlog_tool
