#include "tools/manual/manual_page.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qzlog_tool::CommandNode;
using qzlog_tool::CommandOption;
using qzlog_tool::manual_page;

/// As docs/environment.md has them.
const std::vector<qzlog_tool::EnvironmentRow> kEnvironment = {
    {"`A`, `B`", "the library; `tool`", "at the start", "Says **how**."},
    {"`C`", "`tool show`", "once", "Says what."},
    {"`D`", "`tool hide`, `tools`", "never", "Nothing."},
    {"`E`", "the library", "always", "All."},
};

CommandNode example() {
  CommandNode root{"tool", "Does things", "Exit status: 0 success; 2 trouble.", {}, {}, {}};
  CommandNode show{"tool show", "Show a file", "A note\nin lines:\n  .literal\n\nExamples:\n  tool show f.x", {}, {},
                   {}};
  CommandOption file;
  file.names = {"FILE"};
  file.positional = true;
  file.value_name = "F.x";
  file.description = "The file";
  file.required = true;
  show.positionals = {file};
  CommandOption output;
  output.names = {"-o", "--output"};
  output.value_name = "OUT";
  output.description = "Where to";
  output.default_value = "x-y";
  output.excludes = {"--json"};
  show.options = {output};
  root.subcommands = {show, CommandNode{"tool hide", "Hide it", "Exit status: always 0.", {}, {}, {}}};
  return root;
}

TEST(ManualPage, OfASubcommand_HasEverySection) {
  const CommandNode root = example();
  EXPECT_EQ(manual_page_file_name(root.subcommands[0]), "tool-show.1");
  EXPECT_EQ(manual_page(root, root.subcommands[0], kEnvironment, "1.2"),
            R"(.TH TOOL\-SHOW 1 "" "qzlog 1.2" "User Commands"
.SH NAME
tool\-show \- Show a file
.SH SYNOPSIS
\fBtool show\fR [\fIOPTIONS\fR] \fIFILE\fR
.SH DESCRIPTION
Show a file.
.PP
A note in lines:
.PP
.RS 2
.nf
\&.literal
.fi
.RE
.SH OPTIONS
.TP
\fIFILE\fR
The file.
.TP
\fB\-o\fR, \fB\-\-output\fR \fIOUT\fR
Where to (default: x\-y).
Excludes \fB\-\-json\fR.
.SH ENVIRONMENT
.TP
\fBA\fR, \fBB\fR
Says \fBhow\fR.
Read at the start.
.TP
\fBC\fR
Says what.
Read once.
.SH EXIT STATUS
.TP
\fB0\fR
success.
.TP
\fB2\fR
trouble.
.SH EXAMPLES
.RS 2
.nf
tool show f.x
.fi
.RE
.SH SEE ALSO
\fBtool\fR(1),
\fBtool\-hide\fR(1)
)");
}

TEST(ManualPage, OfACommandWithSubcommands_ListsThem) {
  const CommandNode root = example();
  const std::string page = manual_page(root, root, kEnvironment, "1.2");
  EXPECT_NE(page.find(".SH SYNOPSIS\n\\fBtool\\fR [\\fIOPTIONS\\fR] \\fICOMMAND\\fR ...\n"), std::string::npos) << page;
  EXPECT_NE(page.find(".SH COMMANDS\n.TP\n\\fBtool\\-show\\fR(1)\nShow a file.\n"), std::string::npos) << page;
  EXPECT_NE(page.find(".SH SEE ALSO\n\\fBtool\\-show\\fR(1),\n\\fBtool\\-hide\\fR(1),\n\\fBqzlog\\fR(7),\n"),
            std::string::npos)
      << page;
  EXPECT_NE(page.find(".SH ENVIRONMENT\n.TP\n\\fBA\\fR, \\fBB\\fR\n"), std::string::npos) << page;
  EXPECT_EQ(page.find("\\fBC\\fR"), std::string::npos) << page;
}

TEST(ManualPage, ExitStatusInOtherWords_IsAParagraph) {
  const CommandNode root = example();
  EXPECT_NE(manual_page(root, root.subcommands[1], {}, "1").find(".SH EXIT STATUS\nalways 0.\n"), std::string::npos);
}

TEST(ManualPage, LongParagraphs_AreFilled) {
  CommandNode root{"tool", "Does things", "", {}, {}, {}};
  for (int i = 0; i < 100; ++i) root.footer += "--option .x ";
  const std::string page = manual_page(root, root, {}, "1");
  std::size_t begin = 0;
  for (std::size_t end = page.find('\n'); end != std::string::npos; end = page.find('\n', begin)) {
    EXPECT_LT(end - begin, 80U) << page.substr(begin, end - begin);
    begin = end + 1;
  }
  EXPECT_EQ(page.find("\n.x"), std::string::npos);
}

}  // namespace
