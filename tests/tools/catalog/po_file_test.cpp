#include "tools/catalog/po_file.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/printed_findings.h"
#include "tools/system/command_error.h"

namespace qzlog_catalog {
namespace {

const std::string kHeader =
    "msgid \"\"\nmsgstr \"\"\n\"Language: de\\n\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n";

const std::string kFull = kHeader + R"(
# Mine.
# Two lines.
#. Theirs.
#: a.yaml:3 b.yaml
#, fuzzy, c-format
#| msgctxt "was"
#| msgid "old"
msgctxt "key"
msgid ""
"Größe\n"
"\"q\" \\ 	 %d"
msgstr "漢字 😀"

#~ msgctxt "gone"
#~ msgid "a"
#~ msgstr "b"
)";

PoFile parsed(const std::string& text) {
  Findings findings;
  const std::optional<PoFile> file = parse_po(text, "f.po", findings);
  EXPECT_EQ(printed(findings), "");
  return file.value_or(PoFile());
}

TEST(ParsePo, EveryPartOfAMessage_IsThere) {
  const PoFile file = parsed(kFull);
  ASSERT_EQ(file.messages.size(), 3u);
  const PoMessage& message = file.messages[1];
  EXPECT_EQ(message.context, "key");
  EXPECT_EQ(message.source, "Größe\n\"q\" \\ \t %d");
  EXPECT_EQ(message.translation, "漢字 😀");
  EXPECT_EQ(message.comments, "Mine.\nTwo lines.\n");
  EXPECT_EQ(message.extracted_comments, "Theirs.\n");
  EXPECT_EQ(message.references, (std::vector<PoReference>{{"a.yaml", 3}, {"b.yaml", std::nullopt}}));
  EXPECT_EQ(message.previous_context, "was");
  EXPECT_EQ(message.previous_source, "old");
  EXPECT_EQ(message.formats, std::vector<std::string>{"c-format"});
  EXPECT_TRUE(message.fuzzy);
  EXPECT_FALSE(message.obsolete);
  EXPECT_TRUE(file.messages[2].obsolete);
  EXPECT_EQ(file.messages[2].context, "gone");
}

TEST(ParsePo, Lines_AreThoseOfTheMessages) {
  const PoFile file = parsed(kFull);
  EXPECT_EQ(file.lines, (std::vector<std::size_t>{1, 13, 19}));
  EXPECT_EQ(file.line_of(1), 13u);
  EXPECT_EQ(file.line_of(3), 0u);
}

TEST(ParsePo, WhatWasWritten_IsReadAgain) {
  const PoFile file = parsed(kFull);
  const std::string written = write_po(file);
  EXPECT_EQ(parsed(written).messages, file.messages);
  EXPECT_EQ(write_po(parsed(written)), written);
}

std::string with_translation(const std::string& escaped) {
  return kHeader + "\nmsgctxt \"k\"\nmsgid \"a\"\nmsgstr \"" + escaped + "\"\n";
}

TEST(ParsePo, UntranslatedAndFuzzyOrObsolete_CanBeWritten) {
  const std::string text = "msgctxt \"k\"\nmsgid \"a\"\nmsgstr \"\"\n";
  const std::string obsolete = "#~ msgctxt \"gone\"\n#~ msgid \"b\"\n#~ msgstr \"\"\n";
  const PoFile file = parsed(kHeader + "\n#, fuzzy\n" + text + "\n#, fuzzy\n" + obsolete);
  ASSERT_EQ(file.messages.size(), 3u);
  EXPECT_FALSE(file.messages[1].fuzzy);
  EXPECT_EQ(write_po(file), kHeader + "\n" + text);
}

TEST(ParsePo, EscapesThatMakeUtf8_AreRead) {
  EXPECT_EQ(parsed(with_translation("\\xc3\\xa4\\303\\266")).messages[1].translation, "äö");
}

// Written again they would be bytes, which are refused.
TEST(ParsePo, EscapesThatMakeOtherBytes_AreRefused) {
  for (const char* const part : {"msgctxt \"\\x82\"\nmsgid \"a\"\nmsgstr \"b\"\n", "msgid \"\\202\"\nmsgstr \"b\"\n",
                                 "msgid \"a\"\nmsgstr \"\\xc3\"\n", "#| msgid \"\\xff\"\nmsgid \"a\"\nmsgstr \"b\"\n",
                                 "#| msgctxt \"\\xff\"\n#| msgid \"a\"\nmsgid \"a\"\nmsgstr \"b\"\n"}) {
    Findings findings;
    EXPECT_FALSE(parse_po(kHeader + '\n' + part, "f.po", findings)) << part;
    ASSERT_EQ(findings.all().size(), 1u) << part;
    EXPECT_EQ(findings.all()[0].text, "the escapes of this message make a text that is not UTF-8") << part;
    EXPECT_GE(findings.all()[0].place.line, 6u) << part;
  }
}

// libgettextpo would lose what stands behind.
TEST(ParsePo, EscapesForNul_AreRefused) {
  for (const char* const escape : {"\\0", "\\000", "\\400", "\\x0", "\\x100"}) {
    Findings findings;
    EXPECT_FALSE(parse_po(with_translation(std::string("b") + escape + "gone"), "f.po", findings)) << escape;
    ASSERT_EQ(findings.all().size(), 1u) << escape;
    EXPECT_EQ(findings.all()[0].text, "an escape for a NUL character, which no text can hold") << escape;
    EXPECT_EQ(findings.all()[0].place.line, 8u) << escape;
  }
}

TEST(ParsePo, EscapesForNulInAPreviousText_AreRefused) {
  const std::string message = "msgid \"a\"\nmsgstr \"b\"\n";
  for (const std::string previous :
       {"#| msgid \"a\\0b\"\n", "#| msgctxt \"\\000\"\n#| msgid \"a\"\n", "#| msgid \"\"\n#| \"b\\x00\"\n"}) {
    Findings findings;
    EXPECT_FALSE(parse_po(kHeader + '\n' + previous + message, "f.po", findings)) << previous;
    ASSERT_EQ(findings.all().size(), 1u) << previous;
    EXPECT_EQ(findings.all()[0].text, "an escape for a NUL character, which no text can hold") << previous;
  }
}

TEST(ParsePo, EscapesForNulInAComment_MeanNothing) {
  parsed(kHeader + "\n# \"\\0\"\n#. \"\\0\"\nmsgid \"a\"\nmsgstr \"b\"\n");
}

TEST(ParsePo, FileFromWindows_ReadsLikeAnyOther) {
  std::string windows = "\uFEFF";
  for (const char character : kFull) windows += character == '\n' ? "\r\n" : std::string(1, character);
  const PoFile file = parsed(windows);
  EXPECT_EQ(file.messages, parsed(kFull).messages);
  EXPECT_EQ(file.lines, parsed(kFull).lines);
}

TEST(ParsePo, RandomTexts_SurviveWritingAndReading) {
  qz_test::SeededRandom random;
  const std::string kPieces[] = {"a",   " ",  "\n",   "\t",   "\r",     "\"",     "\\",
                                 "\\n", "%s", "#",    "~",    "msgid ", "{",      "ß",
                                 "漢",  "😀",  "\x01", "\x7F", "\u2028", "\uFEFF", "a rather long word "};
  const auto text = [&] {
    std::string result = "x";
    for (long long i = random.between(0, 40); i > 0; --i) result += kPieces[random.between(0, std::size(kPieces) - 1)];
    return result;
  };
  for (int round = 0; round < 50; ++round) {
    PoFile file = parsed(kHeader);
    for (int i = 0; i < 10; ++i) {
      PoMessage message;
      message.context = std::to_string(i) + text();
      message.source = text();
      message.translation = text();
      message.fuzzy = random.one_in(3);
      if (random.one_in(3)) message.previous_source = text();
      file.messages.push_back(message);
    }
    const std::string written = write_po(file);
    ASSERT_EQ(parsed(written).messages, file.messages) << written;
  }
}

// A reader of files from outside has to survive each of them.
TEST(ParsePo, EveryPrefixOfAFile_IsReadOrRefused) {
  std::size_t refused = 0;
  for (std::size_t size = 0; size < kFull.size(); ++size) {
    Findings findings;
    const bool read = parse_po(kFull.substr(0, size), "f.po", findings).has_value();
    ASSERT_NE(read, findings.has_errors()) << size;
    if (!read) ++refused;
  }
  EXPECT_GT(refused, kFull.size() / 2);
}

TEST(ParsePo, FlippedBytes_AreReadOrRefused) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 500; ++round) {
    std::string damaged = kFull;
    for (int i = 0; i < 3; ++i) {
      damaged[static_cast<std::size_t>(random.between(0, static_cast<long long>(kFull.size()) - 1))] =
          static_cast<char>(random.between(0, 255));
    }
    Findings findings;
    const bool read = parse_po(damaged, "f.po", findings).has_value();
    ASSERT_NE(read, findings.has_errors()) << damaged;
  }
}

TEST(ParsePo, HugeText_IsRead) {
  const std::string text(500'000, 'x');
  const PoFile file = parsed(kHeader + "msgctxt \"k\"\nmsgid \"" + text + "\"\nmsgstr \"\"\n");
  ASSERT_EQ(file.messages.size(), 2u);
  EXPECT_EQ(file.messages[1].source, text);
}

TEST(ParsePo, ManyMessages_AreRead) {
  std::string text = kHeader;
  for (int i = 0; i < 20'000; ++i) text += "msgctxt \"" + std::to_string(i) + "\"\nmsgid \"a\"\nmsgstr \"b\"\n";
  const PoFile file = parsed(text);
  EXPECT_EQ(file.messages.size(), 20'001u);
  EXPECT_EQ(file.lines.back(), 5u + 3 * 19'999);
}

TEST(ParsePo, NoDescriptorLeft_IsAnErrorAndNoEmptyFile) {
  for (const rlim_t descriptors : std::initializer_list<rlim_t>{3, 4}) {
    Findings findings;
    const qz_test::ResourceLimit limit(RLIMIT_NOFILE, descriptors);
    try {
      parse_po(kHeader, "f.po", findings);
      ADD_FAILURE() << descriptors;
    } catch (const qzlog_tool::CommandError& error) {
      EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
      EXPECT_NE(std::string(error.what()).find(": Too many open files"), std::string::npos) << error.what();
    }
  }
}

// libgettextpo trims and splits them; that must not be taken for a file that is cut off.
TEST(WritePo, OddFileNamesAndComments_AreWritten) {
  for (const std::string name : {"./a.yaml", "././a.yaml", "my dir/a.yaml", "a:3", ":a", "a:0:3", " a", "a ", "a\"b"}) {
    PoFile file = parsed(kHeader);
    PoMessage& message = file.messages.emplace_back();
    message.context = "k";
    message.source = "a";
    message.comments = " a  b \n";
    message.extracted_comments = "c \n";
    message.references = {{name, 3}, {name, 5}, {name, 3}};
    EXPECT_NE(write_po(file).find("msgctxt \"k\""), std::string::npos) << name;
  }
}

TEST(WritePo, FileThatIsTooLarge_IsAnErrorAndNoHalfFile) {
  const PoFile file = parsed(kHeader + "\nmsgctxt \"k\"\nmsgid \"" + std::string(10'000, 'x') + "\"\nmsgstr \"\"\n");
  const std::size_t whole = write_po(file).size();
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, whole - 1}) {
    const qz_test::ResourceLimit limit(RLIMIT_FSIZE, size);
    try {
      write_po(file);
      ADD_FAILURE() << size;
    } catch (const qzlog_tool::CommandError& error) {
      EXPECT_EQ(error.exit_status(), qzlog_tool::kExitFindings) << size;
      EXPECT_EQ(std::string(error.what()).substr(0, 62),
                "cannot make a PO file: libgettextpo has not written all of it,");
    }
  }
}

// libgettextpo opens the file and makes a copy of its descriptor, without which it would end the process.
TEST(WritePo, FewDescriptorsLeft_IsTheFileOrAnError) {
  const PoFile file = parsed(kFull);
  const std::string whole = write_po(file);
  for (unsigned spare = 0; spare < 4; ++spare) {
    const qz_test::DescriptorLimit limit(spare);
    try {
      write_po(file);
      ADD_FAILURE() << spare;
    } catch (const qzlog_tool::CommandError& error) {
      EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun) << spare;
      EXPECT_NE(std::string(error.what()).find(": Too many open files"), std::string::npos) << error.what();
    }
  }
  const qz_test::DescriptorLimit limit(4);
  EXPECT_EQ(write_po(file), whole);
}

TEST(HeaderField, SetAndMissing) {
  EXPECT_EQ(header_field("A: b\nLanguage: de\n", "Language"), "de");
  EXPECT_EQ(header_field("A: b\n", "Language"), "");
  EXPECT_EQ(with_header_field("A: b\nLanguage: \nC: d\n", "Language", "de"), "A: b\nLanguage: de\nC: d\n");
}

}  // namespace
}  // namespace qzlog_catalog
