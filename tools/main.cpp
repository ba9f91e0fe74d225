#include <CLI/CLI.hpp>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "qzlog/qz_exception.h"
#include "tools/command_error.h"
#include "tools/commands.h"
#include "tools/library_call.h"
#include "tools/terminal.h"

namespace qzlog_tool {

namespace {

// Templates are stored in UTF-8, and ICU reads them in the character set of the process's locale.
void use_utf8() {
  for (const char* const name : {"C.UTF-8", "en_US.UTF-8", ""}) {
    if (std::setlocale(LC_CTYPE, name) != nullptr) return;
  }
}

void print_error(const std::string& text) { std::cerr << "qzlog: " << coloured_error("error:") << ' ' << text << '\n'; }

// The parser complains about what is missing before it complains about what is unknown, which is the likelier mistake.
std::string usage_error(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  if (error.get_name() != "RequiredError" || unknown.empty()) return error.what();
  std::string text = "'" + unknown.front() + "' was not expected";
  if (!app.get_subcommands().empty()) return text;
  text += "; the commands are";
  for (const CLI::App* const command : app.get_subcommands({})) text += ' ' + command->get_name();
  return text;
}

int parse_and_run(int argc, char** argv) {
  int exit_status = kExitSuccess;
  CLI::App app("", "qzlog");
  add_commands(app, exit_status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(error);
    print_error(usage_error(app, error) + "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.");
    return kExitCannotRun;
  }
  return exit_status;
}

// A command's own results, and the texts of --help and --version, may still be on their way.
int finish_output(int exit_status) {
  if (std::cout.flush()) return exit_status;
  print_error(std::string("cannot write to standard output: ") + std::strerror(errno));
  return kExitCannotRun;
}

int run(int argc, char** argv) {
  try {
    return finish_output(parse_and_run(argc, argv));
  } catch (const CommandError& error) {
    if (*error.what() != '\0') print_error(error.what());
    return error.exit_status();
  } catch (const std::bad_alloc&) {
    print_error("out of memory");
  } catch (const qz_EXCEPTION_base& failure) {
    print_error(library_text(failure));
  } catch (const std::exception& error) {
    print_error(error.what());
  }
  return kExitCannotRun;
}

}  // namespace

}  // namespace qzlog_tool

int main(int argc, char** argv) {
  qzlog_tool::use_utf8();
  return qzlog_tool::run(argc, argv);
}
