#include "tools/manual/manual_page.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>
#include <vector>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/manual/help_footer.h"

namespace qzlog_tool {

namespace {

/// What roff would replace by a typographic character or take for syntax.
constexpr std::array<std::pair<char, const char*>, 7> kEscapes = {{
    {'\\', "\\(rs"},
    {'-', "\\-"},
    {'\'', "\\(aq"},
    {'`', "\\(ga"},
    {'^', "\\(ha"},
    {'~', "\\(ti"},
    {'"', "\\(dq"},
}};

std::string escaped(char character) {
  for (const auto& [plain, escape] : kEscapes) {
    if (character == plain) return escape;
  }
  return std::string(1, character);
}

std::string escaped_code(char32_t code) { return "\\[u" + qzlog_compiler::hexadecimal(code, 4) + ']'; }

std::string escaped_line(std::string_view line) {
  // A line that begins with a full stop is a request; one with an apostrophe would be, were it not escaped.
  std::string result = line.substr(0, 1) == "." ? "\\&" : "";
  for (std::size_t i = 0; i < line.size();) {
    const qzlog_compiler::Utf8Character character = qzlog_compiler::decode_utf8(line, i);
    result += character.size > 1 ? escaped_code(character.code) : escaped(line[i]);
    i += std::max<std::size_t>(character.size, 1);
  }
  return result;
}

std::string bold(std::string_view text) { return "\\fB" + roff_text(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff_text(text) + "\\fR"; }

std::string page_name(const CommandNode& command) {
  std::string name = command.name;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string reference(const CommandNode& command) { return "\\fB" + roff_text(page_name(command)) + "\\fR(1)"; }

std::string upper_case(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
  return text;
}

/// "0 success; 1 findings or bad input" is two: each begins with a digit and a blank, behind "; " or ", ".
std::vector<std::string> separate_statuses(const std::string& text) {
  std::vector<std::string> statuses;
  std::size_t begin = 0;
  for (std::size_t i = 0; i + 3 < text.size(); ++i) {
    const bool ends_one = (text[i] == ';' || text[i] == ',') && text[i + 1] == ' ';
    if (!ends_one || text[i + 2] < '0' || text[i + 2] > '9' || text[i + 3] != ' ') continue;
    statuses.push_back(text.substr(begin, i - begin));
    begin = i + 2;
  }
  statuses.push_back(text.substr(begin));
  return statuses;
}

/// A paragraph in lines of less than 80 bytes.
std::string filled(std::string_view text) {
  constexpr std::size_t kMaximumLine = 79;
  std::istringstream words{std::string(text)};
  std::string result;
  std::size_t line_size = 0;
  for (std::string word; words >> word;) {
    const std::string shown = escaped_line(word);
    const bool fits = line_size + 1 + shown.size() <= kMaximumLine;
    if (!result.empty()) result += fits ? ' ' : '\n';
    line_size = fits && !result.empty() ? line_size + 1 + shown.size() : shown.size();
    result += shown;
  }
  return result;
}

std::string sentence(const std::string& text) { return filled(text + (text.empty() || text.back() != '.' ? "." : "")); }

class PageWriter {
 public:
  PageWriter(const CommandNode& root, const CommandNode& command)
      : root_(root), command_(command), footer_(parse_help_footer(command.footer)) {}

  std::string write(std::string_view version) {
    out_ << ".TH " << roff_text(upper_case(page_name(command_))) << " 1 \"\" \"qzlog " << roff_text(version)
         << "\" \"User Commands\"\n";
    out_ << ".SH NAME\n" << roff_text(page_name(command_)) << " \\- " << roff_text(command_.description) << '\n';
    write_synopsis();
    write_description();
    write_commands();
    write_options();
    write_exit_status();
    write_examples();
    write_references();
    return out_.str();
  }

 private:
  void write_synopsis() {
    out_ << ".SH SYNOPSIS\n" << bold(command_.name);
    for (const CommandOption& option : command_.options) {
      if (option.required) out_ << ' ' << names(option, option.names.size() - 1);
    }
    out_ << " [" << italic("OPTIONS") << ']';
    if (!command_.subcommands.empty()) out_ << ' ' << italic("COMMAND") << " ...";
    for (const CommandOption& positional : command_.positionals) {
      const std::string name = italic(positional.names.front()) + (positional.repeatable ? " ..." : "");
      out_ << ' ' << (positional.required ? name : "[" + name + "]");
    }
    out_ << '\n';
  }

  void write_description() {
    out_ << ".SH DESCRIPTION\n" << sentence(command_.description) << '\n';
    for (const HelpBlock& note : footer_.notes) {
      out_ << ".PP\n";
      if (note.literal) {
        write_literal(note.text);
      } else {
        out_ << filled(note.text) << '\n';
      }
    }
  }

  void write_literal(const std::string& text) { out_ << ".RS 2\n.nf\n" << roff_text(text) << "\n.fi\n.RE\n"; }

  void write_commands() {
    if (command_.subcommands.empty()) return;
    out_ << ".SH COMMANDS\n";
    for (const CommandNode& subcommand : command_.subcommands) {
      out_ << ".TP\n" << reference(subcommand) << '\n' << sentence(subcommand.description) << '\n';
    }
  }

  void write_options() {
    out_ << ".SH OPTIONS\n";
    for (const CommandOption& positional : command_.positionals) write_option(positional);
    for (const CommandOption& option : command_.options) write_option(option);
  }

  void write_option(const CommandOption& option) {
    out_ << ".TP\n" << (option.positional ? italic(option.names.front()) : names(option, 0)) << '\n';
    const std::string& value = option.default_value;
    out_ << sentence(option.description + (value.empty() ? "" : " (default: " + value + ")")) << '\n';
    write_relation("Needs", option.needs);
    write_relation("Excludes", option.excludes);
    if (option.required && !option.positional) out_ << "Required.\n";
    if (option.repeatable && !option.positional) out_ << "May be given more than once.\n";
  }

  void write_relation(const char* relation, const std::vector<std::string>& names) {
    for (const std::string& name : names) out_ << relation << ' ' << bold(name) << ".\n";
  }

  /// The option's names from one on, with its value.
  static std::string names(const CommandOption& option, std::size_t first) {
    std::string result;
    for (std::size_t i = first; i < option.names.size(); ++i) {
      result += (result.empty() ? "" : ", ") + bold(option.names[i]);
    }
    return result + (option.takes_value() ? " " + italic(option.value_name) : "");
  }

  /// "0 success; 1 findings or bad input", one line each; as a paragraph when it is written in another way.
  void write_exit_status() {
    const std::string own = footer_.exit_status;
    const std::string text = own.empty() ? parse_help_footer(root_.footer).exit_status : own;
    out_ << ".SH EXIT STATUS\n";
    for (const std::string& status : separate_statuses(text)) {
      const std::size_t blank = std::min(status.find(' '), status.size());
      if (blank != 1) return void(out_ << filled(status) << '\n');
      out_ << ".TP\n" << bold(status.substr(0, 1)) << '\n' << sentence(status.substr(2)) << '\n';
    }
  }

  void write_examples() {
    if (footer_.examples.empty()) return;
    out_ << ".SH EXAMPLES\n";
    write_literal(footer_.examples);
  }

  /// The other commands of the same parent, the parent and the subcommands.
  void write_references() {
    std::string list;
    for (const CommandNode* const other : all_commands(root_)) {
      const bool is_parent = command_.name.rfind(other->name + " ", 0) == 0;
      const bool is_child = parent_name(*other) == command_.name;
      const bool is_sibling = parent_name(*other) == parent_name(command_) && other != &command_;
      if (is_parent || is_child || is_sibling) list += (list.empty() ? "" : ",\n") + reference(*other);
    }
    if (!list.empty()) out_ << ".SH SEE ALSO\n" << list << '\n';
  }

  static std::string parent_name(const CommandNode& command) {
    const std::size_t blank = command.name.rfind(' ');
    return blank == std::string::npos ? "" : command.name.substr(0, blank);
  }

  const CommandNode& root_;
  const CommandNode& command_;
  HelpFooter footer_;
  std::ostringstream out_;
};

}  // namespace

std::string roff_text(std::string_view text) {
  std::string result;
  for (;;) {
    const std::size_t end = text.find('\n');
    result += escaped_line(text.substr(0, end));
    if (end == std::string_view::npos) return result;
    result += '\n';
    text.remove_prefix(end + 1);
  }
}

std::string manual_page_file_name(const CommandNode& command) { return page_name(command) + ".1"; }

std::string manual_page(const CommandNode& root, const CommandNode& command, std::string_view version) {
  return PageWriter(root, command).write(version);
}

}  // namespace qzlog_tool
