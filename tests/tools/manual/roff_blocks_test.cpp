#include "tools/manual/roff_blocks.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string made_of(const std::string& page) { return qzlog_tool::roff_blocks(qzlog_tool::parse_markdown(page)); }

TEST(RoffBlocks, Headings_AreSectionsAndParts) {
  EXPECT_EQ(made_of("## What to *know*\none\n\ntwo\n### The `Part` of it\nthree\n## What `qzlog` does\n"),
            ".SH WHAT TO KNOW\none\n.PP\ntwo\n.SS The Part of it\nthree\n.SH What qzlog does\n");
}

TEST(RoffBlocks, Styles_AreFonts) { EXPECT_EQ(made_of("a `b-c` **d** *e*"), "a \\fBb\\-c\\fR \\fBd\\fR \\fIe\\fR\n"); }

TEST(RoffBlocks, Items_AreIndented) {
  EXPECT_EQ(made_of("- one\n- two\n\n1. first\n\nmore"),
            ".IP \\(bu 2\none\n.IP \\(bu 2\ntwo\n.IP 1. 4\nfirst\n.PP\nmore\n");
}

TEST(RoffBlocks, Code_StaysAsItIs) {
  EXPECT_EQ(made_of("a\n\n```\n  b\n```\n"), "a\n.PP\n.RS 2\n.nf\n  b\n.fi\n.RE\n");
}

TEST(RoffBlocks, NarrowTable_StaysATable) {
  EXPECT_EQ(made_of("| name | `n` | of |\n|---|---|---|\n| a | | \u00e9\u4e00 |\n| b | 10 |\n"),
            ".RS 2\n.nf\nname  n   of\na         \\[u00E9]\\[u4E00]\nb     10\n.fi\n.RE\n");
}

TEST(RoffBlocks, TableWithALongLastColumn_GoesOnInFurtherLines) {
  const std::string words = "one two three four five six seven eight nine ten eleven twelve thirteen";
  EXPECT_EQ(made_of("| o | s | field |\n|---|---|---|\n| 0 | 4 | " + words + " |\n| 4 | 8 | x |\n"),
            ".RS 2\n.nf\no  s  field\n0  4  one two three four five six seven eight nine ten eleven\n"
            "      twelve thirteen\n4  8  x\n.fi\n.RE\n");
}

TEST(RoffBlocks, TableOfTwoLongColumns_IsAList) {
  const std::string words = "one two three four five six seven eight nine ten eleven twelve thirteen";
  EXPECT_EQ(made_of("| what | means |\n|---|---|\n| `a` | " + words + " |\n| b | |\n"),
            ".TP\n\\fIwhat\\fR\nmeans\n.TP\n\\fBa\\fR\n" + words + "\n.TP\nb\n\\&\n");
}

TEST(RoffBlocks, WideTable_IsAListWithTheNamesOfItsColumns) {
  const std::string wide(40, 'w');
  EXPECT_EQ(made_of("| | kind | |\n|---|---|---|\n| a | " + wide + " | " + wide + " |\n| b | | c |\n"),
            ".TP\na\nkind: " + wide + ";\n" + wide + "\n.TP\nb\nc\n");
}

}  // namespace
