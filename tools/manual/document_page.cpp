#include "tools/manual/document_page.h"

#include <sstream>

#include "tools/manual/help_footer.h"
#include "tools/manual/markdown.h"
#include "tools/manual/page_sections.h"
#include "tools/manual/roff.h"
#include "tools/manual/roff_blocks.h"

namespace qzlog_tool {

namespace {

constexpr int kFormats = 5;

constexpr DocumentPage kPages[] = {
    {"user-guide.md", "qzlog", 7, "definition-driven structured event logging from C++", ""},
    {"configuration.md", "qzlog-config", kFormats, "the configuration file of products that log with qzlog", ""},
    {"counter-file.md", "qzlog-counter", kFormats, "the file that counts log entries (.cnt)", "TZ"},
    {"definition-source.md", "qzlog-definitions", kFormats, "log definitions, written in YAML", ""},
    {"entries-jsonl.md", "qzlog-entries", kFormats, "log entries as JSON Lines", ""},
    {"definition-file.md", "qzlog-ldf", kFormats, "compiled log definitions (.ldf)", ""},
};

std::string_view volume_of(int section) { return section == kFormats ? "File Formats" : "Miscellaneous Information"; }

bool names_one_of(std::string_view variables, std::string_view cell) {
  std::istringstream words{std::string(variables)};
  for (std::string word; words >> word;) {
    if (cell.find('`' + word + '`') != std::string_view::npos) return true;
  }
  return false;
}

class DocumentWriter {
 public:
  DocumentWriter(const DocumentPage& page, const std::vector<EnvironmentRow>& environment, const CommandNode& root)
      : page_(page), environment_(environment), root_(root) {}

  std::string write(std::string_view markdown, std::string_view version) {
    out_ << page_beginning(page_.name, page_.section, volume_of(page_.section), page_.description, version);
    out_ << ".SH DESCRIPTION\n";
    std::vector<MarkdownBlock> blocks = parse_markdown(markdown);
    std::erase_if(blocks, [](const MarkdownBlock& block) { return block.level == 1; });
    out_ << roff_blocks(blocks);
    write_environment();
    write_exit_status();
    write_references();
    return out_.str();
  }

 private:
  bool is_about_a_format() const { return page_.section == kFormats; }

  void write_environment() {
    std::vector<EnvironmentRow> rows;
    for (const EnvironmentRow& row : environment_) {
      const bool matters =
          is_about_a_format() ? names_one_of(page_.variables, row.variables) : row.is_read_by_library();
      if (matters) rows.push_back(row);
    }
    out_ << environment_section(rows) << (rows.empty() ? "" : ".PP\n");
    if (!is_about_a_format()) {
      out_ << "Those of the command are on the pages of its subcommands.\n";
      return;
    }
    out_ << (rows.empty() ? "The form of the file does not depend on the environment.\n" : "")
         << "The variables that the library reads are in\n"
         << page_reference("qzlog", 7) << ",\nthose of the command on the pages of its subcommands.\n";
  }

  void write_exit_status() {
    out_ << ".SH EXIT STATUS\n"
         << "That of the command, as long as no page of a subcommand says more:\n";
    out_ << exit_status_list(parse_help_footer(root_.footer).exit_status);
  }

  void write_references() {
    out_ << ".SH SEE ALSO\n" << page_reference(root_.name, 1);
    for (const DocumentPage& other : kPages) {
      if (other.name != page_.name) out_ << ",\n" << page_reference(other.name, other.section);
    }
    out_ << '\n';
  }

  const DocumentPage& page_;
  const std::vector<EnvironmentRow>& environment_;
  const CommandNode& root_;
  std::ostringstream out_;
};

}  // namespace

std::span<const DocumentPage> all_document_pages() { return kPages; }

std::string document_page(const DocumentPage& page, std::string_view markdown,
                          const std::vector<EnvironmentRow>& environment, const CommandNode& root,
                          std::string_view version) {
  return DocumentWriter(page, environment, root).write(markdown, version);
}

}  // namespace qzlog_tool
