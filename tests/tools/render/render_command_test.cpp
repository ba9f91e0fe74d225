#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;
using RenderCommand = qzlog_test::RenderFixture;

constexpr const char* kFull = R"({"id":1001,"attributes":{"Name":"vol1","Free":0,"Total":4096}})";
constexpr const char* kFullMessage = "Disk vol1 is full: 0 of 4096 blocks free\n";

std::string line(const char* json) { return std::string(json) + "\n"; }

void expect_success(const CommandResult& result, const std::string& out) {
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderCommand, Source_OnBothPaths) {
  expect_success(render(line(kFull)), kFullMessage);
  expect_success(render(line(kFull), "--no-icu"), kFullMessage);
}

TEST_F(RenderCommand, CompiledFile_OnBothPaths) {
  write("entries.jsonl", line(kFull));
  ASSERT_EQ(run("$QZLOG compile storage.yaml -o storage.ldf").err, "");
  expect_success(run("$QZLOG render --definitions storage.ldf entries.jsonl"), kFullMessage);
  expect_success(run("$QZLOG render --definitions storage.ldf --no-icu entries.jsonl"), kFullMessage);
}

TEST_F(RenderCommand, CompiledFileThroughAPipe_IsRead) {
  write("entries.jsonl", line(kFull));
  expect_success(run("$QZLOG compile storage.yaml -o - | $QZLOG render --definitions - entries.jsonl"), kFullMessage);
}

TEST_F(RenderCommand, SourceOnStandardInput_IsCompiled) {
  write("entries.jsonl", line(kFull));
  expect_success(run("$QZLOG render --definitions - entries.jsonl <storage.yaml"), kFullMessage);
}

TEST_F(RenderCommand, StandardInput_WithDashAndWithout) {
  write("entries.jsonl", line(kFull));
  expect_success(run("$QZLOG render --definitions storage.yaml <entries.jsonl"), kFullMessage);
  expect_success(run("$QZLOG render --definitions storage.yaml - <entries.jsonl"), kFullMessage);
}

TEST_F(RenderCommand, NoInput_GivesNothing) { expect_success(render(""), ""); }

TEST_F(RenderCommand, LineEndsAndBlankLines_AreThoseOfEverySystem) {
  const std::string full = kFull;
  expect_success(render("\xEF\xBB\xBF" + full + "\r\n\r\n \t\n" + full), std::string(kFullMessage) + kFullMessage);
}

TEST_F(RenderCommand, SymbolicName_WithASource) {
  expect_success(render(R"({"id":"DISK_FULL","attributes":{"Name":"a","Free":1,"Total":2}})"),
                 "Disk a is full: 1 of 2 blocks free\n");
}

TEST_F(RenderCommand, Selector_IsChosenByValueByIndexOrNotAtAll) {
  const std::string attributes = R"("attributes":{"Name":"a","Free":1,"Total":2,"Reason":10}})";
  const std::string entries = R"({"id":1001,)" + attributes + "\n" + R"({"id":1001,"selector":2,)" + attributes + "\n" +
                              R"({"id":1001,"default":true,)" + attributes + "\n";
  const std::string messages = "The quota of a is used up\na is locked\nDisk a is full: 1 of 2 blocks free\n";
  expect_success(render(entries), messages);
  expect_success(render(entries, "--no-icu"), messages);
}

TEST_F(RenderCommand, Numbers_OfEveryType) {
  const std::string entry =
      R"({"id":1002,"attributes":{"U1":255,"S1":-128,"U2":65535,"S2":-32768,"U4":4000000,"S4":-2147483648,"F":2,"B":true}})";
  expect_success(render(entry), "255 -128 65535 -32768 4000000 -2147483648 2.\n");
  expect_success(render(entry, "--no-icu"), "255 -128 65535 -32768 4000000 -2147483648 2.000000.\n");
}

TEST_F(RenderCommand, Times_OnTheLocalClock) {
  const std::string entries = R"({"id":1005,"time":"2026-11-21T23:15:30Z"})";
  expect_success(render(entries, "--no-icu"), "At 2026-11-22 05:00:30.\n");
  const qz_test::SetEnv zone("TZ", "America/St_Johns");
  expect_success(render(entries, "--no-icu"), "At 2026-11-21 19:45:30.\n");
}

TEST_F(RenderCommand, Texts_AreUtf8WhateverTheProcesssLocaleIs) {
  const std::string entry = R"({"id":1003,"attributes":{"C":"Käse","M":"日本 \ud83d\ude00"}})";
  const std::string message = "Größe <Käse> <日本 😀>\n";
  for (const char* const locale : {"C", "POSIX", "C.UTF-8", "xx_XX.nonsense", "de_DE.ISO-8859-1", ""}) {
    SCOPED_TRACE(locale);
    const qz_test::SetEnv variable("LC_ALL", locale);
    expect_success(render(entry), message);
    expect_success(render(entry, "--no-icu"), message);
  }
}

TEST_F(RenderCommand, CodePage_OnBothPaths) {
  const std::string latin = R"({"id":1003,"attributes":{"C":"Käse","M":"Öl"}})";
  const std::string latin_bytes =
      "Gr\xF6\xDF"
      "e <K\xE4se> <\xD6l>\n";
  expect_success(render(latin, "--code-page ISO-8859-1"), latin_bytes);
  expect_success(render(latin, "--code-page ISO-8859-1 --no-icu"), latin_bytes);
  write("disk.yaml",
        "version: \"1.0\"\nentries:\n  - {id: 1, name: A, message: \"{N} \u306F\", attributes: "
        "[{name: N, type: MBChar32}]}\n");
  write("disk.jsonl", "{\"id\":1,\"attributes\":{\"N\":\"\u65E5\u672C\"}}");
  const std::string japanese_bytes = "\x93\xFA\x96\x7B \x82\xCD\n";
  expect_success(run("$QZLOG render --definitions disk.yaml --code-page Shift_JIS disk.jsonl"), japanese_bytes);
  expect_success(run("$QZLOG render --definitions disk.yaml --code-page Shift_JIS --no-icu disk.jsonl"),
                 japanese_bytes);
}

TEST_F(RenderCommand, LimitOfMBChar_CountsCharactersInTheCodePage) {
  std::string text;
  for (int count = 0; count < 32; ++count) text += "\u65E5";
  const std::string entry = R"({"id":1003,"attributes":{"C":"","M":")" + text + "\"}}";
  expect_success(render(entry), "Größe <> <" + text + ">\n");
  EXPECT_EQ(render(entry, "--code-page Shift_JIS").status, 0);
}

TEST_F(RenderCommand, Locale_SetsNumbers) {
  const std::string entry = R"({"id":1002,"attributes":{"U1":1,"S1":1,"U2":1,"S2":1,"U4":1000000,"S4":1,"F":1234.5}})";
  expect_success(render(entry, "--locale en_US"), "1 1 1 1 1000000 1 1,234.5.\n");
  expect_success(render(entry, "--locale de-DE"), "1 1 1 1 1000000 1 1.234,5.\n");
}

TEST_F(RenderCommand, Source_ShowsWarningsAboutTextsOnly) {
  write("storage.yaml",
        "version: \"1.0\"\naccept: [{rule: long-message, reason: none is}]\nentries:\n"
        "  - {id: 1001, name: A, message: \"%{N}\", attributes: [{name: N, type: UInt4}, {name: K, type: Bool}]}\n");
  write("entries.jsonl", "{\"id\":1001,\"attributes\":{\"N\":7}}\n");
  const CommandResult result = run("$QZLOG render --definitions storage.yaml entries.jsonl");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "%7\n");
  EXPECT_EQ(run("$QZLOG render --no-icu --definitions storage.yaml entries.jsonl").err,
            "storage.yaml:4:35: error: the narrow path cannot show a percent sign [literal-percent]\n"
            "    4 |   - {id: 1001, name: A, message: \"%{N}\", attributes: [{name: N, type: UInt4}, {name: K, type: "
            "Bool}]}\n"
            "      |                                   ^\n"
            "  hint: the format P shows a number with a percent sign\n");
}

TEST_F(RenderCommand, Auxiliary_SourceOrCompiledOnSourceOrCompiled) {
  write("site.yaml",
        "version: \"1.0\"\nentries:\n  - {id: 2001, name: SITE, message: \"At {Where}\", attributes: [{name: Where, "
        "type: Char32}]}\n  - {id: 1001, name: DISK_FULL, attributes: [{name: Rack, type: UInt1}]}\n"
        "accept: [{rule: unused-attribute, reason: rendering does not mind}]\n");
  write("entries.jsonl",
        "{\"id\":2001,\"attributes\":{\"Where\":\"home\"}}\n"
        "{\"id\":1001,\"attributes\":{\"Name\":\"a\",\"Free\":1,\"Total\":2,\"Rack\":3}}\n");
  ASSERT_EQ(run("$QZLOG compile storage.yaml -o storage.ldf && "
                "$QZLOG compile --aux-of storage.ldf site.yaml -o site.ldf")
                .err,
            "");
  for (const std::string standard : {"storage.yaml", "storage.ldf"}) {
    for (const std::string auxiliary : {"site.yaml", "site.ldf"}) {
      SCOPED_TRACE(standard + " " + auxiliary);
      expect_success(run("$QZLOG render --definitions " + standard + " --aux " + auxiliary + " entries.jsonl"),
                     "At home\nDisk a is full: 1 of 2 blocks free\n");
    }
  }
  write("named.jsonl", "{\"id\":\"SITE\",\"attributes\":{\"Where\":\"home\"}}");
  expect_success(run("$QZLOG render --definitions storage.ldf --aux site.yaml named.jsonl"), "At home\n");
}

TEST_F(RenderCommand, Catalog_InARelativeFolderAndForALocale) {
  std::filesystem::create_directory(folder_.path("messages"));
  write("root.txt", "root { STRING_TABLE { DISK_FULL { \"%s%Name% voll%_%TIMESTAMP%\" } } }");
  write("ja.txt", "ja { STRING_TABLE { DISK_FULL { \"\u6E80\u676F %s%Name%\" } } }");
  const CommandResult built = run("genrb --encoding UTF-8 -q -d messages root.txt ja.txt");
  if (built.status == 127) GTEST_SKIP() << "genrb is not installed";
  ASSERT_EQ(built.status, 0) << built.err;
  write("entries.jsonl", line(kFull));
  const std::string command = "$QZLOG render --definitions storage.yaml --catalog messages entries.jsonl --locale ";
  const CommandResult fallback = run(command + "en_US");
  EXPECT_EQ(fallback.out, "vol1 voll\n");
  EXPECT_EQ(fallback.err,
            "qzlog: the catalog 'messages' has no messages for the locale 'en_US'; what it falls back to is shown\n");
  expect_success(run(command + "ja_JP"), "\u6E80\u676F vol1\n");
}

TEST_F(RenderCommand, MessageWithLineBreaks_IsOneLine) {
  expect_success(render("{\"id\":1006}"), "first\\nsecond\\rthird\n");
  expect_success(render("{\"id\":1006}", "--no-icu"), "first\\nsecond\\rthird\n");
}

TEST_F(RenderCommand, TemporaryFile_IsGone) {
  std::filesystem::create_directory(folder_.path("temporary"));
  const qz_test::SetEnv variable("TMPDIR", folder_.path("temporary"));
  EXPECT_EQ(render(line(kFull)).status, 0);
  write("storage.yaml", "version: [");
  EXPECT_EQ(render(line(kFull)).status, 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("temporary")));
}

TEST_F(RenderCommand, EntriesOverTwoBuffers_AreAllRendered) {
  std::string entries;
  std::string messages;
  for (int number = 0; number < 20'000; ++number) {
    const std::string text = std::to_string(number);
    entries += R"({"id":1001,"attributes":{"Name":"n)" + text + R"(","Free":)" + text + R"(,"Total":7}})" + "\n";
    messages += "Disk n" + text + " is full: " + text + " of 7 blocks free\n";
  }
  expect_success(render(entries), messages);
}

}  // namespace
