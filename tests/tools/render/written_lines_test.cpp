// Lines that the library writes, as others read them: the command, simdjson and nlohmann::json.
#include <gtest/gtest.h>
#include <simdjson.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/command_fixture.h"

namespace {

using qz_test::SeededRandom;

constexpr std::string_view kSource = R"(
version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - id: 7
    name: EVERYTHING
    message: "At {TIMESTAMP}: {Byte} {Short} {Word} {SignedWord} {Real} {Text} {Wide} {Day}"
    attributes:
      - {name: Flag,        type: Bool}
      - {name: Byte,        type: UInt1}
      - {name: SignedByte,  type: SInt1}
      - {name: Short,       type: UInt2}
      - {name: SignedShort, type: SInt2}
      - {name: Word,        type: UInt4}
      - {name: SignedWord,  type: SInt4}
      - {name: Real,        type: Float}
      - {name: Text,        type: Char256}
      - {name: Wide,        type: MBChar256}
      - {name: Day,         type: Date}
    selector:
      attribute: Byte
      messages:
        - {index: 1, value: 200, id: everything.two_hundred, text: "Two hundred: {Text}"}
)";

class WrittenLines : public qzlog_test::CommandFixture {
 protected:
  WrittenLines() {
    write("all.yaml", kSource);
    EXPECT_EQ(run("$QZLOG compile all.yaml -o all.ldf").status, 0);
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_EN_US);
    qz_LOG_LogConfig::SetDefinitionPath(folder_.path("all.ldf").c_str());
  }
  ~WrittenLines() override {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  }
};

/// Characters of each length in UTF-8, some of which JSON escapes.
std::string random_characters(SeededRandom& random) {
  static constexpr std::string_view kPieces[] = {"a", "B7",     " ",      "\"",         "\\",   "\t",
                                                 "/", "\u00E4", "\u20AC", "\U0001F600", "\x7F", "\x01"};
  std::string text = "<";
  for (std::size_t count = random.below(20); count > 0; --count) text += kPieces[random.below(std::size(kPieces))];
  return text + '>';
}

void fill(qz_LOG_LogEntry& entry, SeededRandom& random) {
  entry.SetTimestamp(qz_Time::from_unix_seconds(random.between(0, 4000000000)), true);
  entry.AddAttribBool("Flag", random.one_in(2));
  entry.AddAttrib1u("Byte", static_cast<unsigned char>(random.between(0, 255)));
  entry.AddAttrib1("SignedByte", static_cast<char>(random.between(-128, 127)));
  entry.AddAttrib2u("Short", static_cast<unsigned short>(random.between(0, 65535)));
  entry.AddAttrib2("SignedShort", static_cast<short>(random.between(-32768, 32767)));
  entry.AddAttrib4u("Word", static_cast<unsigned>(random.between(0, 4294967295)));
  entry.AddAttrib4("SignedWord", static_cast<int>(random.between(-2147483648LL, 2147483647)));
  entry.AddAttribFloat8("Real", static_cast<double>(random.between(-1000000, 1000000)) / 1024);
  entry.AddAttribStr("Text", random_characters(random).c_str());
  entry.AddAttribMBStr("Wide", random_characters(random).c_str());
  entry.AddAttribTime("Day", qz_Time::from_unix_seconds(random.between(-2000000000, 4000000000)));
}

TEST_F(WrittenLines, Rendered_AreTheMessagesOfTheEntries) {
  SeededRandom random;
  std::string lines;
  std::string messages;
  for (int i = 0; i < 300; ++i) {
    qz_LOG_LogEntry entry(7, static_cast<unsigned>(random.below(10)));
    fill(entry, random);
    const bool use_default = random.one_in(4);
    const unsigned selector = random.one_in(4) ? 1 : 0;
    entry.AppendJson(lines, use_default, selector);
    lines += '\n';
    std::string message = entry.FormatMessage(use_default, selector);
    messages += message + '\n';
  }
  write("lines.jsonl", lines);
  const qzlog_test::CommandResult rendered = run("$QZLOG render --definitions all.ldf --locale en_US lines.jsonl");
  EXPECT_EQ(rendered.err, "");
  EXPECT_EQ(rendered.out, messages);
}

TEST_F(WrittenLines, OfAnyBytes_AreReadByOtherParsers) {
  SeededRandom random;
  simdjson::dom::parser parser;
  for (int i = 0; i < qz_test::rounds(5000); ++i) {
    qz_LOG_LogEntry entry(7, 3);
    fill(entry, random);
    entry.AddAttribStr("Text", random.text(random.below(100)).c_str());
    const double real = std::bit_cast<double>(static_cast<std::uint64_t>(
        random.between(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max())));
    entry.AddAttribFloat8("Real", real);
    const std::string line = entry.ToJson();

    simdjson::dom::element element;
    ASSERT_EQ(parser.parse(line).get(element), simdjson::SUCCESS) << line;
    EXPECT_EQ(element["id"].get_uint64().value(), 7U);
    EXPECT_EQ(std::string(element["attributes"]["Wide"].get_string().value()), entry.GetAttribMBStr("Wide"));
    EXPECT_EQ(element["attributes"]["SignedWord"].get_int64().value(), entry.GetAttrib4("SignedWord"));
    if (std::isfinite(real)) {
      EXPECT_EQ(element["attributes"]["Real"].get_double().value(), real) << line;
    }

    const nlohmann::json object = nlohmann::json::parse(line);
    EXPECT_EQ(object["attributes"].size(), 13U);
    EXPECT_EQ(object["attributes"]["Word"].get<unsigned>(), entry.GetAttrib4u("Word"));
    EXPECT_EQ(object["attributes"]["Wide"].get<std::string>(), entry.GetAttribMBStr("Wide"));
    if (std::isfinite(real)) {
      EXPECT_TRUE(object["attributes"]["Real"].is_number_float()) << line;
      EXPECT_EQ(object["attributes"]["Real"].get<double>(), real) << line;
    }
  }
}

}  // namespace
