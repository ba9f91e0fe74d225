#include "tools/shown/presentation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/thrown_by.h"
#include "tests/tools/shown/shown_fixture.h"
#include "tools/compiler/text/display_width.h"
#include "tools/shown/shown_options.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_test::ShownFixture;
using qzlog_tool::CommandError;
using qzlog_tool::ShownOptions;
using qzlog_tool::ShownPlace;

constexpr std::string_view kFull =
    R"({"writer":"web1/4711/1795853730","seq":7,"written":"2026-11-21T08:15:30.000120000Z","definitions":"0123456789abcdef","id":1001,"level":7,"time":"2026-11-21T08:15:29Z","attributes":{"Name":"vol1","Free":0}})"
    "\n";
constexpr std::string_view kKinds =
    R"({"id":7,"level":2,"attributes":{"B":true,"U1":255,"S1":-128,"U2":65535,"S2":-32768,"U4":4294967295,"S4":-2147483648,"F":0.1,"C":"a\"b\n","D":"2026-11-21T20:15:30Z","T":"2026-11-21T20:15:30Z","S":"2026-11-21T20:15:30Z"}})"
    "\n";
constexpr std::string_view kLoss =
    R"({"writer":"web1/4711/1795853730","seq":8,"written":"2026-11-21T08:15:31Z","lost":[{"id":7,"level":2,"count":3}]})"
    "\n";

constexpr std::string_view kHeld =
    R"({"writer":"web1/4711/1795853730","seq":9,"written":"2026-11-21T08:15:32Z","held":[{"id":7,"level":2,"count":5}]})"
    "\n";

class PresentationTest : public ShownFixture {
 protected:
  static ShownOptions output(const std::string& name) {
    ShownOptions options;
    options.output = name;
    return options;
  }
  static ShownOptions format(const std::string& text) {
    ShownOptions options;
    options.format = text;
    return options;
  }
  std::string formatted(const std::string& text, std::string_view line = kFull) const {
    return show(line, format(text));
  }
  std::string refusal(const ShownOptions& options) const {
    try {
      show("", options);
    } catch (const CommandError& error) {
      EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
      return error.what();
    }
    return "";
  }
};

TEST_F(PresentationTest, Text_IsTheMessageAlone) {
  EXPECT_EQ(show(kFull, output("text")), "Disk vol1 is full: 0 blocks free\n");
  EXPECT_EQ(show(kLoss, output("text")), "lost: 3 of entry ID 7, level 2\n");
}

TEST_F(PresentationTest, Short_IsOneLineWithTimeLevelNameAndMessage) {
  EXPECT_EQ(show(std::string(kFull) + std::string(kKinds) + std::string(kLoss), output("short")),
            "2026-11-21T14:00:29+05:45 error    DISK_FULL Disk vol1 is full: 0 blocks free\n"
            "- info     KINDS Kinds\n"
            "2026-11-21T14:00:31+05:45 -        - lost: 3 of entry ID 7, level 2\n");
}

TEST_F(PresentationTest, Long_HasEverything) {
  EXPECT_EQ(show(kFull, output("long")),
            "2026-11-21T14:00:29+05:45 error DISK_FULL (1001)\n"
            "  Disk vol1 is full: 0 blocks free\n"
            "  meaning: A volume has no free blocks left.\n"
            "  Name: \"vol1\" (MBChar2K)\n"
            "  Free: 0 (UInt4)\n"
            "  mask 0x00000005, writer web1/4711/1795853730, seq 7, written 2026-11-21T14:00:30.000120000+05:45, "
            "definitions 0123456789abcdef, line 1\n"
            "\n");
  EXPECT_EQ(show(kKinds, output("long")),
            "- info KINDS (7)\n"
            "  Kinds\n"
            "  B: true (Bool)\n"
            "  U1: 255 (UInt1)\n"
            "  S1: -128 (SInt1)\n"
            "  U2: 65535 (UInt2)\n"
            "  S2: -32768 (SInt2)\n"
            "  U4: 4294967295 (UInt4)\n"
            "  S4: -2147483648 (SInt4)\n"
            "  F: 0.1 (Float)\n"
            "  C: \"a\\\"b\\\\n\" (Char32)\n"
            "  D: 2026-11-21 (Date)\n"
            "  T: 20:15:30 (Time)\n"
            "  S: 2026-11-22T02:00:30+05:45 (Timestamp)\n"
            "  mask 0x00000001, line 1\n"
            "\n");
  EXPECT_EQ(show(kLoss, output("long")),
            "2026-11-21T14:00:31+05:45 lost entries\n"
            "  lost: 3 of entry ID 7, level 2\n"
            "  writer web1/4711/1795853730, seq 8, written 2026-11-21T14:00:31+05:45, line 1\n"
            "\n");
}

TEST_F(PresentationTest, Long_HasTheZoneOfTheClockWhereTheLineDoes) {
  const auto has_zone = [&](const char* line) {
    const std::string shown = show(line, output("long"));
    return shown.find("  TIMEZONE_DIFFERENCE: 90 (SInt2)\n") != std::string::npos &&
           shown.find("  DAYLIGHT_SAVING_ACTIVE: true (Bool)\n") != std::string::npos;
  };
  EXPECT_TRUE(has_zone("{\"id\":7,\"attributes\":{\"TIMEZONE_DIFFERENCE\":90,\"DAYLIGHT_SAVING_ACTIVE\":true}}\n"));
  const std::string named =
      show("{\"id\":7,\"time\":\"2026-11-21T08:15:29Z\",\"attributes\":{\"C\":\"\\\"TIMEZONE_DIFFERENCE\\\": 5\"}}\n",
           output("long"));
  EXPECT_EQ(named.find("  TIMEZONE_DIFFERENCE"), std::string::npos) << named;
  EXPECT_EQ(named.find("  DAYLIGHT_SAVING_ACTIVE"), std::string::npos) << named;
}

TEST_F(PresentationTest, LineOfHeldEntries_IsNoEntryInAnyForm) {
  EXPECT_EQ(show(kHeld, output("short")), "2026-11-21T14:00:32+05:45 -        - held back: 5 of entry ID 7, level 2\n");
  EXPECT_EQ(show(kHeld, output("long")),
            "2026-11-21T14:00:32+05:45 entries held back\n"
            "  held back: 5 of entry ID 7, level 2\n"
            "  writer web1/4711/1795853730, seq 9, written 2026-11-21T14:00:32+05:45, line 1\n"
            "\n");
  EXPECT_EQ(show(kHeld, output("json")),
            std::string(kHeld.substr(0, kHeld.size() - 2)) + ",\"message\":\"held back: 5 of entry ID 7, level 2\"}\n");
  EXPECT_EQ(show(kHeld, output("csv")),
            "time,level,level_name,id,name,message\r\n"
            "2026-11-21T14:00:32+05:45,,,,,\"held back: 5 of entry ID 7, level 2\"\r\n");
  EXPECT_EQ(show(kHeld, output("table")),
            "time                       level_name  name       message\n"
            "2026-11-21T14:00:32+05:45  -           -          held back: 5 of entry ID 7, level 2\n");
  EXPECT_EQ(formatted("{level} {level_name} {id} {name} {mask} {summary} {Name} {seq}", kHeld), "- - - - - - - 9\n");
}

TEST_F(PresentationTest, Json_IsTheLineWithMore) {
  const std::string line(kFull.substr(0, kFull.size() - 2));
  EXPECT_EQ(
      show(kFull, output("json")),
      line + ",\"level_name\":\"error\",\"name\":\"DISK_FULL\",\"message\":\"Disk vol1 is full: 0 blocks free\"}\n");
  EXPECT_EQ(show(" {\"id\":7,\t\"name\":\"KINDS\"\r} \t\n", output("json")),
            " {\"id\":7,\t\"name\":\"KINDS\" ,\"level_name\":\"debug\",\"message\":\"Kinds\"}\n");
  EXPECT_EQ(show(kLoss, output("json")),
            std::string(kLoss.substr(0, kLoss.size() - 2)) + ",\"message\":\"lost: 3 of entry ID 7, level 2\"}\n");
}

TEST_F(PresentationTest, Csv_HasAHeadingAndQuotes) {
  EXPECT_EQ(show(kFull, output("csv")),
            "time,level,level_name,id,name,message\r\n"
            "2026-11-21T14:00:29+05:45,7,error,1001,DISK_FULL,Disk vol1 is full: 0 blocks free\r\n");
  ShownOptions options = output("csv");
  options.columns = "id,C,Name,F";
  EXPECT_EQ(show(kKinds, options), "id,C,Name,F\r\n7,\"a\"\"b\\n\",,0.1\r\n");
  options.columns = "Name";
  EXPECT_EQ(show(kKinds, options), "Name\r\n\"\"\r\n");
  options.columns = "id,attribute:Name,Name";
  EXPECT_EQ(show(kFull, options), "id,attribute:Name,Name\r\n1001,vol1,vol1\r\n");
}

TEST_F(PresentationTest, Table_IsAsWideAsTheDefinitionsSay) {
  EXPECT_EQ(show(kFull, output("table")),
            "time                       level_name  name       message\n"
            "2026-11-21T14:00:29+05:45  error       DISK_FULL  Disk vol1 is full: 0 blocks free\n");
  ShownOptions options = output("table");
  options.columns = "Name,Free,level,id";
  EXPECT_EQ(show(kFull, options),
            "Name                            Free  level    id\n"
            "vol1                               0      7  1001\n");
}

TEST_F(PresentationTest, TableOnATerminal_FitsIt) {
  for (const std::size_t columns : {1u, 10u, 20u, 40u, 60u, 80u, 200u}) {
    const std::string shown = show(kFull, output("table"), {true, columns});
    for (std::size_t at = 0; at < shown.size();) {
      const std::size_t end = shown.find('\n', at);
      EXPECT_LE(qzlog_compiler::display_width(std::string_view(shown).substr(at, end - at)), columns) << shown;
      at = end + 1;
    }
  }
}

TEST_F(PresentationTest, NarrowTable_TakesFromTextsFirst) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(show(kFull, output("table"), {true, 60}),
            "time                       level_name  name       message\n"
            "2026-11-21T14:00:29+05:45  error       DISK_FULL  Disk vol1\u2026\n");
  EXPECT_EQ(show(kFull, output("table"), {true, 50}),
            "time                       level_na\u2026  name   mess\u2026\n"
            "2026-11-21T14:00:29+05:45  error      DISK\u2026  Disk\u2026\n");
  ShownOptions options = output("table");
  options.columns = "Name,U4,F,written,mask";
  EXPECT_EQ(show(std::string(kFull) + std::string(kKinds), options, {true, 80}),
            "Name           U4             F  written                              mask\n"
            "vol1            -             -  2026-11-21T14:00:30.000120000+05:45  0x00000005\n"
            "-      4294967295           0.1  -                                    0x00000001\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PresentationTest, ColumnsThatHaveNoRoom_AreLeftOutAndTold) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(show(kFull, output("table"), {true, 46}),
            "time                       level_name  message\n"
            "2026-11-21T14:00:29+05:45  error       Disk v\u2026\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qzlog: --output table: 46 columns have no room for name\n");
  testing::internal::CaptureStderr();
  EXPECT_EQ(show(kFull, output("table"), {true, 38}),
            "time                       message\n"
            "2026-11-21T14:00:29+05:45  Disk vol1 \u2026\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "qzlog: --output table: 38 columns have no room for level_name, name\n");
}

// What is too wide for the place is the end of the line, and cut there.
TEST_F(PresentationTest, NumberThatIsLongerThanItsColumn_IsWhole) {
  ShownOptions options = output("table");
  options.columns = "F,seq,message";
  const std::string line =
      R"({"writer":"w/1/x","seq":12345678901234567890,"id":7,"attributes":{"F":-1.2345678901234567e-100}})"
      "\n";
  EXPECT_EQ(show(line, options, {true, 60}),
            "           F       seq  message\n"
            "-1.2345678901234567e-100  12345678901234567890  Kinds\n");
}

TEST_F(PresentationTest, Format_HasFieldsForEverything) {
  EXPECT_EQ(
      formatted("{time} {time:local} {level} {level_name} {level:name} {id} {name} {message}"),
      "2026-11-21T14:00:29+05:45 2026-11-21 14:00:29 7 error error 1001 DISK_FULL Disk vol1 is full: 0 blocks free\n");
  EXPECT_EQ(formatted("{writer} {host} {pid} {seq} {written} {definitions} {file}|{line} {mask} {summary}"),
            "web1/4711/1795853730 web1 4711 7 2026-11-21T14:00:30.000120000+05:45 0123456789abcdef -|1 0x00000005 "
            "A volume has no free blocks left.\n");
  EXPECT_EQ(formatted("{Name}{attribute:Free}{{{attribute:time}}}{COMPUTER_NAME}"), "vol10{-}-\n");
  EXPECT_EQ(formatted("{B} {U1} {S1} {U2} {S2} {U4} {S4} {F} {C} {D} {T} {S}", kKinds),
            "true 255 -128 65535 -32768 4294967295 -2147483648 0.1 a\"b\\n 2026-11-21 20:15:30 "
            "2026-11-22T02:00:30+05:45\n");
}

TEST_F(PresentationTest, FormatWithLayouts_CountsColumns) {
  EXPECT_EQ(formatted("[{Name:<6}][{Name:>6}][{Name:^6}][{Name:6}][{Name:.3}][{Name:<6.3}][{Name:.0}][{level:>2}]"),
            "[vol1  ][  vol1][ vol1 ][vol1  ][vo\u2026][vo\u2026   ][][ 7]\n");
  EXPECT_EQ(
      formatted("[{Name:<6}][{Name:>6.5}]", "{\"id\":1001,\"attributes\":{\"Name\":\"\u4E2De\u0301\u200B\u6587x\"}}\n"),
      "[\u4E2De\u0301\u200B\u6587x][  \u4E2De\u0301\u200B\u2026]\n");
}

TEST_F(PresentationTest, FormatThatCannotBe_IsRefusedWithItsPlace) {
  EXPECT_EQ(refusal(format("{time} {mesage}")),
            "--format: unknown field 'mesage'\n"
            "  {time} {mesage}\n"
            "          ^\n"
            "  hint: did you mean 'message'?");
  EXPECT_EQ(refusal(format("{attribute:Fre}")),
            "--format: the definitions have no attribute 'Fre'\n"
            "  {attribute:Fre}\n"
            "   ^\n"
            "  hint: did you mean 'Free'?");
  EXPECT_EQ(refusal(format("\u00E4{")),
            "--format: '{' without '}' (write '{{' for the character)\n"
            "  \u00E4{\n"
            "   ^");
  EXPECT_EQ(refusal(format("a}")),
            "--format: '}' without '{' (write '}}' for the character)\n"
            "  a}\n"
            "   ^");
  EXPECT_EQ(refusal(format("{Name:=4}")),
            "--format: no layout of a field\n"
            "  {Name:=4}\n"
            "        ^\n"
            "  hint: write '<40', '>8' or '^20' for columns and a side, '.60' for columns at most, '<40.40' for both");
  EXPECT_EQ(refusal(format("a\033b")),
            "--format: a control character\n"
            "  a\\u001Bb\n"
            "   ^");
  for (const char* const wrong :
       {"{Name:}", "{Name:<}", "{Name:0}", "{Name:<0}", "{Name:.}", "{Name:4.}", "{Name:10001}", "{Name:4:4}",
        "{Name:-4}", "{Name:4.4.4}", "{Name:99999999999999999999}"}) {
    EXPECT_NE(refusal(format(wrong)).find("no layout of a field"), std::string::npos) << wrong;
  }
  EXPECT_NE(refusal(format("{}")).find("unknown field ''"), std::string::npos);
  EXPECT_NE(refusal(format("{xyzzyplugh}")).find("hint: fields are message, time"), std::string::npos);
  EXPECT_NE(refusal(format(std::string(5000, 'x'))).find("longer than 4096 bytes"), std::string::npos);
}

TEST_F(PresentationTest, ColumnsThatCannotBe_AreRefusedWithTheirPlace) {
  ShownOptions options = output("csv");
  options.columns = "id,Nmae";
  EXPECT_EQ(refusal(options),
            "--columns: unknown field 'Nmae'\n"
            "  id,Nmae\n"
            "     ^\n"
            "  hint: did you mean 'name'?");
  options.columns = "id,";
  EXPECT_NE(refusal(options).find("a name is missing"), std::string::npos);
}

TEST_F(PresentationTest, FieldThatHidesAnAttribute_SaysSo) {
  testing::internal::CaptureStderr();
  formatted("{time}");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "qzlog: --format: 'time' is the field; the attribute of that name is 'attribute:time'\n");
  ShownOptions options = output("csv");
  options.columns = "time";
  testing::internal::CaptureStderr();
  show("", options);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "qzlog: --columns: 'time' is the field; the attribute of that name is 'attribute:time'\n");
}

TEST_F(PresentationTest, FieldAndTheAttributeThatItHides_NeedNoWord) {
  ShownOptions options = output("csv");
  options.columns = "time,attribute:time,time";
  testing::internal::CaptureStderr();
  EXPECT_EQ(show("", options), "time,attribute:time,time\r\n");
  formatted("{attribute:time} {time}");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
