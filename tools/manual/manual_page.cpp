#include "tools/manual/manual_page.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "tools/manual/document_page.h"
#include "tools/manual/help_footer.h"
#include "tools/manual/page_sections.h"
#include "tools/manual/roff.h"

namespace qzlog_tool {

namespace {

std::string page_name(const CommandNode& command) {
  std::string name = command.name;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string reference(const CommandNode& command) { return page_reference(page_name(command), 1); }

class PageWriter {
 public:
  PageWriter(const CommandNode& root, const CommandNode& command, const std::vector<EnvironmentRow>& environment)
      : root_(root), command_(command), environment_(environment), footer_(parse_help_footer(command.footer)) {}

  std::string write(std::string_view version) {
    out_ << page_beginning(page_name(command_), 1, "User Commands", command_.description, version);
    write_synopsis();
    write_description();
    write_commands();
    write_options();
    out_ << environment_section(environment_of_command());
    write_exit_status();
    write_examples();
    write_references();
    return out_.str();
  }

 private:
  void write_synopsis() {
    out_ << ".SH SYNOPSIS\n" << roff_bold(command_.name);
    for (const CommandOption& option : command_.options) {
      if (option.required) out_ << ' ' << names(option, option.names.size() - 1);
    }
    out_ << " [" << roff_italic("OPTIONS") << ']';
    if (!command_.subcommands.empty()) out_ << ' ' << roff_italic("COMMAND") << " ...";
    for (const CommandOption& positional : command_.positionals) {
      const std::string name = roff_italic(positional.names.front()) + (positional.repeatable ? " ..." : "");
      out_ << ' ' << (positional.required ? name : "[" + name + "]");
    }
    out_ << '\n';
  }

  void write_description() {
    out_ << ".SH DESCRIPTION\n" << roff_sentence(command_.description) << '\n';
    for (const HelpBlock& note : footer_.notes) {
      out_ << ".PP\n";
      if (note.literal) {
        out_ << roff_literal(note.text);
      } else {
        out_ << roff_filled(roff_text(note.text)) << '\n';
      }
    }
  }

  void write_commands() {
    if (command_.subcommands.empty()) return;
    out_ << ".SH COMMANDS\n";
    for (const CommandNode& subcommand : command_.subcommands) {
      out_ << ".TP\n" << reference(subcommand) << '\n' << roff_sentence(subcommand.description) << '\n';
    }
  }

  void write_options() {
    out_ << ".SH OPTIONS\n";
    for (const CommandOption& positional : command_.positionals) write_option(positional);
    for (const CommandOption& option : command_.options) write_option(option);
  }

  void write_option(const CommandOption& option) {
    out_ << ".TP\n" << (option.positional ? roff_italic(option.names.front()) : names(option, 0)) << '\n';
    const std::string& value = option.default_value;
    out_ << roff_sentence(option.description + (value.empty() ? "" : " (default: " + value + ")")) << '\n';
    write_relation("Needs", option.needs);
    write_relation("Excludes", option.excludes);
    if (option.required && !option.positional) out_ << "Required.\n";
    if (option.repeatable && !option.positional) out_ << "May be given more than once.\n";
  }

  void write_relation(const char* relation, const std::vector<std::string>& names) {
    for (const std::string& name : names) out_ << relation << ' ' << roff_bold(name) << ".\n";
  }

  /// The option's names from one on, with its value.
  static std::string names(const CommandOption& option, std::size_t first) {
    std::string result;
    for (std::size_t i = first; i < option.names.size(); ++i) {
      result += (result.empty() ? "" : ", ") + roff_bold(option.names[i]);
    }
    return result + (option.takes_value() ? " " + roff_italic(option.value_name) : "");
  }

  std::vector<EnvironmentRow> environment_of_command() const {
    std::vector<EnvironmentRow> rows;
    for (const EnvironmentRow& row : environment_) {
      if (row.is_read_by(command_.name)) rows.push_back(row);
    }
    return rows;
  }

  void write_exit_status() {
    const std::string own = footer_.exit_status;
    out_ << ".SH EXIT STATUS\n" << exit_status_list(own.empty() ? parse_help_footer(root_.footer).exit_status : own);
  }

  void write_examples() {
    if (footer_.examples.empty()) return;
    out_ << ".SH EXAMPLES\n" << roff_literal(footer_.examples);
  }

  /// The other commands of the same parent, the parent and the subcommands; of the command itself the pages about what
  /// it reads, too.
  void write_references() {
    std::string list;
    for (const CommandNode* const other : all_commands(root_)) {
      const bool is_parent = command_.name.rfind(other->name + " ", 0) == 0;
      const bool is_child = parent_name(*other) == command_.name;
      const bool is_sibling = parent_name(*other) == parent_name(command_) && other != &command_;
      if (is_parent || is_child || is_sibling) list += (list.empty() ? "" : ",\n") + reference(*other);
    }
    if (&command_ == &root_) list += references_to_documents(list.empty());
    if (!list.empty()) out_ << ".SH SEE ALSO\n" << list << '\n';
  }

  static std::string references_to_documents(bool are_first) {
    std::string list;
    for (const DocumentPage& page : all_document_pages()) {
      list.append(are_first && list.empty() ? "" : ",\n").append(page_reference(page.name, page.section));
    }
    return list;
  }

  static std::string parent_name(const CommandNode& command) {
    const std::size_t blank = command.name.rfind(' ');
    return blank == std::string::npos ? "" : command.name.substr(0, blank);
  }

  const CommandNode& root_;
  const CommandNode& command_;
  const std::vector<EnvironmentRow>& environment_;
  HelpFooter footer_;
  std::ostringstream out_;
};

}  // namespace

std::string manual_page_file_name(const CommandNode& command) { return page_name(command) + ".1"; }

std::string manual_page(const CommandNode& root, const CommandNode& command,
                        const std::vector<EnvironmentRow>& environment, std::string_view version) {
  return PageWriter(root, command, environment).write(version);
}

}  // namespace qzlog_tool
