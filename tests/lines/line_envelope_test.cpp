#include "lines/line_envelope.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "foundation/sha256.h"
#include "lines/line_writer.h"
#include "lines/moment_text.h"
#include "tests/entry/entry_fixture.h"
#include "tests/support/seeded_random.h"
#include "tests/support/strict_json.h"

namespace qzlog {
namespace {

using namespace qz_test;

std::string head_of(LineEnvelope& envelope, unsigned long long seq, const std::timespec& written) {
  std::string head;
  envelope.append_head(head, seq, written);
  return head;
}

class LineEnvelopeTest : public EntryTest {};

TEST_F(LineEnvelopeTest, Head_BeforeAnyoneAskedForTheDigest) {
  LineEnvelope envelope("host/123/20261121T081530");
  EXPECT_EQ(head_of(envelope, 1, {1795248930, 5}),
            R"({"writer":"host/123/20261121T081530","seq":1,"written":"2026-11-21T08:15:30.000000005Z",)");
  EXPECT_EQ(head_of(envelope, 18446744073709551615ULL, {1795248931, 999999999}),
            R"({"writer":"host/123/20261121T081530","seq":18446744073709551615,)"
            R"("written":"2026-11-21T08:15:31.999999999Z",)");
  EXPECT_EQ(head_of(envelope, 0, {0, 123456789}),
            R"({"writer":"host/123/20261121T081530","seq":0,"written":"1970-01-01T00:00:00.123456789Z",)");
}

TEST_F(LineEnvelopeTest, HeadAndBody_AreALine) {
  LineEnvelope envelope("a\"b/1/2");
  std::string body;
  append_entry_body(qz_LOG_LogEntry(kId, 3), false, 0, body);
  const JsonNode line = StrictJson::parse(head_of(envelope, 7, {1795248930, 0}) + body);
  EXPECT_EQ(line.names(), " writer seq written definitions id level attributes");
  EXPECT_EQ(line.find("writer")->text, "a\"b/1/2");
  EXPECT_EQ(line.find("definitions")->text, qz_LOG_LogConfig::GetDefinitionTable()->definitions_digest());
}

TEST_F(LineEnvelopeTest, TimesBackAndForth_EachItsOwn) {
  LineEnvelope envelope("a/1/2");
  for (const std::time_t second : {0, 1, 1, 0, -1, 1795248930}) {
    char text[kMomentText];
    write_moment(text, second);
    EXPECT_NE(head_of(envelope, 1, {second, 0}).find(std::string(text, kMomentText)), std::string::npos) << second;
  }
}

/// In front of a body.
std::string head_before(LineEnvelope& envelope, unsigned long long seq, const std::timespec& written) {
  std::string line(LineEnvelope::kMaxHead, ' ');
  line += "body";
  char* const body = line.data() + LineEnvelope::kMaxHead;
  char* const head = envelope.write_head_before(body, seq, written);
  EXPECT_EQ(line.substr(LineEnvelope::kMaxHead), "body");
  return std::string(head, body);
}

TEST_F(LineEnvelopeTest, NumbersThatCountUp_EachItsOwn) {
  LineEnvelope envelope("a/1/2");
  for (unsigned long long seq = 1; seq <= 1100; ++seq) {
    const std::string number = std::to_string(seq);
    EXPECT_EQ(head_before(envelope, seq, {0, 7}),
              R"({"writer":"a/1/2","seq":)" + number + R"(,"written":"1970-01-01T00:00:00.000000007Z",)");
  }
}

TEST_F(LineEnvelopeTest, NumbersAndTimesByChance_AsThoseOfANewEnvelope) {
  SeededRandom random;
  LineEnvelope envelope("host/1/2");
  unsigned long long seq = 0;
  std::timespec now = {1795248930, 0};
  for (int round = 0; round < 20000; ++round) {
    const auto choice = static_cast<int>(random.below(20));
    if (choice == 0) seq = ULLONG_MAX >> random.below(64);
    if (choice > 1) ++seq;
    if (choice == 2) now.tv_sec += static_cast<std::time_t>(random.below(100)) - 30;
    now.tv_nsec = static_cast<long>(random.below(1000000000));
    if (choice == 3 && round % 5 == 0) load_auxiliary({.entries = {{.id = random.one_in(2) ? 5U : 6U}}});
    if (choice == 4) qz_LOG_LogConfig::GetDefinitionTable()->definitions_digest();
    LineEnvelope fresh("host/1/2");
    const std::string expected = head_of(fresh, seq, now);
    ASSERT_EQ(choice % 2 == 0 ? head_of(envelope, seq, now) : head_before(envelope, seq, now), expected);
  }
}

TEST_F(LineEnvelopeTest, LongestHead_StaysInItsBound) {
  LineEnvelope envelope(std::string(1000, '\x01'));
  load_auxiliary({.entries = {{.id = 5}}});
  qz_LOG_LogConfig::GetDefinitionTable()->definitions_digest();
  const std::string head = head_of(envelope, 18446744073709551615ULL, {253402300799, 999999999});
  EXPECT_LE(head.size(), LineEnvelope::kMaxHead);
  EXPECT_EQ(StrictJson::parse(head + "\"x\":1}").names(), " writer seq written definitions x");
}

TEST_F(LineEnvelopeTest, LongWriter_CutBehindACharacter) {
  std::string long_name;
  for (int i = 0; i < 100; ++i) long_name += "\u20AC";
  for (const char* const beginning : {"", "x", "xx"}) {
    LineEnvelope envelope(std::string(beginning) + long_name);
    const JsonNode line = StrictJson::parse(head_of(envelope, 1, {0, 0}) + "\"x\":1}");
    const std::string& writer = line.find("writer")->text;
    EXPECT_LE(writer.size(), LineEnvelope::kMaxWriter);
    EXPECT_GT(writer.size(), LineEnvelope::kMaxWriter - 3);
  }
}

TEST_F(LineEnvelopeTest, NoUtf8InTheWriter_Replaced) {
  LineEnvelope envelope("\xFF/1/2");
  EXPECT_EQ(StrictJson::parse(head_of(envelope, 1, {0, 0}) + "\"x\":1}").find("writer")->text, "\uFFFD/1/2");
}

TEST_F(LineEnvelopeTest, EachAllocationFails_ThrowsMemoryAlloc) {
  EXPECT_GT(FailEveryAllocation([] { LineEnvelope("a host whose name needs memory/1/2"); }), 0U);
}

}  // namespace
}  // namespace qzlog
