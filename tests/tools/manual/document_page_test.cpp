#include "tools/manual/document_page.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qzlog_tool::document_page;
using qzlog_tool::DocumentPage;
using qzlog_tool::EnvironmentRow;

const qzlog_tool::CommandNode kRoot{"tool", "Does things", "Exit status: 0 success; 2 trouble.", {}, {}, {}};
const std::vector<EnvironmentRow> kEnvironment = {
    {"`A`, `B`", "the library; `tool`", "at the start", "Says how."},
    {"`C`", "`tool`", "once", "Says what."},
};

std::string references_without(std::string_view name) {
  std::string list = ".SH SEE ALSO\n\\fBtool\\fR(1)";
  for (const DocumentPage& page : qzlog_tool::all_document_pages()) {
    if (page.name == name) continue;
    std::string escaped(page.name);
    if (const std::size_t at = escaped.find('-'); at != std::string::npos) escaped.insert(at, "\\");
    list += ",\n\\fB" + escaped + "\\fR(" + std::to_string(page.section) + ")";
  }
  return list + "\n";
}

TEST(DocumentPage, AboutAFormat_HasEverySection) {
  const DocumentPage page{"x.md", "qzlog-x", 5, "a file", "B"};
  EXPECT_EQ(page.file_name(), "qzlog-x.5");
  EXPECT_EQ(document_page(page, "# The file\n\nHas bytes.\n\n## Bytes\n\n- one\n", kEnvironment, kRoot, "1.2"),
            R"(.TH QZLOG\-X 5 "" "qzlog 1.2" "File Formats"
.SH NAME
qzlog\-x \- a file
.SH DESCRIPTION
Has bytes.
.SH BYTES
.IP \(bu 2
one
.SH ENVIRONMENT
.TP
\fBA\fR, \fBB\fR
Says how.
Read at the start.
.PP
The variables that the library reads are in
\fBqzlog\fR(7),
those of the command on the pages of its subcommands.
.SH EXIT STATUS
That of the command, as long as no page of a subcommand says more:
.TP
\fB0\fR
success.
.TP
\fB2\fR
trouble.
)" + references_without(""));
}

TEST(DocumentPage, AboutAFormatThatNoVariableChanges_SaysSo) {
  const std::string page = document_page({"x.md", "qzlog-ldf", 5, "a file", ""}, "text", kEnvironment, kRoot, "1");
  EXPECT_NE(page.find(".SH ENVIRONMENT\nThe form of the file does not depend on the environment.\nThe variables"),
            std::string::npos)
      << page;
  EXPECT_TRUE(page.ends_with(references_without("qzlog-ldf"))) << page;
}

TEST(DocumentPage, AboutTheLibrary_HasItsVariables) {
  const std::string page = document_page({"x.md", "qzlog", 7, "all", ""}, "text", kEnvironment, kRoot, "1");
  EXPECT_NE(page.find(" 7 \"\" \"qzlog 1\" \"Miscellaneous Information\"\n"), std::string::npos) << page;
  EXPECT_NE(page.find("\\fBA\\fR, \\fBB\\fR\n"), std::string::npos) << page;
  EXPECT_EQ(page.find("\\fBC\\fR"), std::string::npos) << page;
  EXPECT_NE(page.find(".PP\nThose of the command are on the pages of its subcommands.\n"), std::string::npos) << page;
}

}  // namespace
