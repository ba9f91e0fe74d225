#include "tools/catalog/po_lines.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace qzlog_catalog {
namespace {

using Lines = std::vector<std::size_t>;

struct LinesCase {
  const char* name;
  const char* po;
  Lines lines;
};

void PrintTo(const LinesCase& lines, std::ostream* out) { *out << lines.name; }

const LinesCase kCases[] = {
    {"Nothing", "", {}},
    {"Header", "msgid \"\"\nmsgstr \"\"\n", {1}},
    {"ContextsCount", "\n\nmsgctxt \"a\"\nmsgid \"b\"\nmsgstr \"c\"\n\nmsgid \"d\"\n", {3, 7}},
    {"SeveralOnALine", "msgid \"a\" msgstr \"b\" msgctxt \"c\" msgid \"d\" msgstr \"e\"", {1, 1}},
    {"KeywordsInTexts", "msgid \"msgid\"\n\"\\\"msgid\"\nmsgstr \"msgid \\\\\"\nmsgid \"x\"\n", {1, 4}},
    {"KeywordsInComments", "# msgid\n#. msgid\n#: msgid\n#| msgid \"old\"\n#, fuzzy\nmsgid \"x\"\n", {6}},
    {"PluralsAreNoMessages", "msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[0] \"c\"\n", {1}},
    {"Obsolete", "#~ msgctxt \"a\"\n#~ msgid \"b\"\n#~ msgstr \"c\"\n#~| msgid \"old\"\n#~ msgid \"d\"\n", {1, 5}},
    {"OpenTextEndsWithItsLine", "msgid \"open\nmsgid \"b\\\nmsgid \"c\"\n", {1, 2, 3}},
    {"OpenTextAtTheEnd", "msgid \"open\\", {1}},
    {"WindowsLines", "msgid \"a\"\r\nmsgstr \"\"\r\n\r\nmsgid \"b\"\r\n", {1, 4}},
};

class PoLines : public ::testing::TestWithParam<LinesCase> {};

TEST_P(PoLines, File_GivesTheFirstLineOfEachMessage) { EXPECT_EQ(find_message_lines(GetParam().po), GetParam().lines); }

INSTANTIATE_TEST_SUITE_P(Files, PoLines, ::testing::ValuesIn(kCases),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(FindNulEscape, NumbersThatAreZeroInEightBits_AreFound) {
  for (const std::string escape : {"0", "00", "000", "0001", "400", "08", "x0", "x00", "x100", "xA00", "0x1"}) {
    EXPECT_EQ(find_nul_escape("msgid \"a\"\nmsgstr \"b\\" + escape + "\"\n"), 2u) << escape;
    EXPECT_EQ(find_nul_escape("#~ msgid \"\\" + escape), 1u) << escape;
  }
}

TEST(FindNulEscape, OtherEscapesAndComments_AreNone) {
  for (const std::string escape :
       {"1", "001", "377", "40", "100", "x1", "x01", "x001", "x", "\\0", "\\x0", "n0", "\"0", ""}) {
    EXPECT_EQ(find_nul_escape("msgid \"a\"\nmsgstr \"b\\" + escape + "\"\n"), 0u) << escape;
    EXPECT_EQ(find_nul_escape("# \"\\0\"\nmsgid \"\\" + escape), 0u) << escape;
  }
}

}  // namespace
}  // namespace qzlog_catalog
