#include "tools/render/kept_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qzlog/logcfg.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/render/entry_builder.h"
#include "tools/render/entry_error.h"
#include "tools/render/json_entry.h"
#include "tools/render/library_call.h"
#include "tools/system/line_reader.h"

namespace {

using qzlog_tool::EntryBuilder;
using qzlog_tool::EntryError;
using qzlog_tool::EntryRule;
using qzlog_tool::EntryShape;
using qzlog_tool::JsonAttribute;
using qzlog_tool::JsonAttributes;
using qzlog_tool::JsonEntry;
using qzlog_tool::JsonEntryParser;

class EntryShapeTest : public ::testing::Test {
 protected:
  /// A source with these attributes, valid until the next call.
  JsonEntry source(const std::vector<const char*>& names, const char* time = nullptr) {
    attributes_.clear();
    for (const char* const name : names) attributes_.push_back({name, {}, false});
    JsonEntry entry;
    entry.time = time;
    entry.attributes = JsonAttributes(attributes_);
    return entry;
  }

  /// The shape of an entry 7 with A and B.
  EntryShapeTest() {
    shape_.begin(7, false);
    shape_.add("A", TypeUInt4);
    shape_.add("B", TypeChar32);
    shape_.complete();
  }

  std::vector<JsonAttribute> attributes_;
  EntryShape shape_;
};

TEST_F(EntryShapeTest, New_MatchesNothing) {
  const EntryShape shape;
  EXPECT_FALSE(shape.matches(0, source({})));
  EXPECT_FALSE(shape.matches(7, source({"A"})));
}

TEST_F(EntryShapeTest, SameIdNamesAndOrder_MatchesWithTheTypes) {
  EXPECT_TRUE(shape_.matches(7, source({"A", "B"})));
  EXPECT_EQ(shape_.type(0), TypeUInt4);
  EXPECT_EQ(shape_.type(1), TypeChar32);
}

TEST_F(EntryShapeTest, AnythingDifferent_DoesNotMatch) {
  EXPECT_FALSE(shape_.matches(8, source({"A", "B"})));
  EXPECT_FALSE(shape_.matches(7, source({"A", "B"}, "2026-11-21T08:15:30Z")));
  EXPECT_FALSE(shape_.matches(7, source({"B", "A"})));
  EXPECT_FALSE(shape_.matches(7, source({"A"})));
  EXPECT_FALSE(shape_.matches(7, source({"A", "B", "C"})));
  EXPECT_FALSE(shape_.matches(7, source({"A", "b"})));
  EXPECT_FALSE(shape_.matches(7, source({"A", "BB"})));
  EXPECT_FALSE(shape_.matches(7, source({})));
}

TEST_F(EntryShapeTest, Forgotten_MatchesNothingUntilComplete) {
  shape_.forget();
  EXPECT_FALSE(shape_.matches(7, source({"A", "B"})));
  shape_.begin(8, true);
  shape_.add("C", TypeBool);
  EXPECT_FALSE(shape_.matches(8, source({"C"}, "2026-11-21T08:15:30Z")));
  shape_.complete();
  EXPECT_TRUE(shape_.matches(8, source({"C"}, "2026-11-21T08:15:30Z")));
  EXPECT_FALSE(shape_.matches(8, source({"C"})));
}

TEST_F(EntryShapeTest, AttributesNotReadYet_DoNotMatch) {
  JsonEntryParser parser;
  const std::string line = R"({"id":7,"attributes":{"A":1,"B":"x"}})";
  const std::string padded = line + std::string(qzlog_tool::LineReader::kPaddingBytes, ' ');
  EXPECT_TRUE(shape_.matches(7, parser.parse(std::string_view(padded).substr(0, line.size()))));
  EXPECT_FALSE(shape_.matches(7, parser.parse_any(std::string_view(padded).substr(0, line.size()))));
}

// ---- kept entries against entries that are built anew ----

constexpr std::string_view kSource = R"yaml(
version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - {id: 7, name: SEVEN, mask: 1, message: "seven {A} {B} {C} {TIMEZONE_DIFFERENCE} {DAYLIGHT_SAVING_ACTIVE}", attributes: [
      {name: A, type: UInt1}, {name: B, type: Char32}, {name: C, type: Float}, {name: D, type: Timestamp},
      {name: E, type: Bool}]}
  - {id: 71, name: SEVENTY_ONE, mask: 2, message: "also {A} {B}", attributes: [
      {name: A, type: SInt4}, {name: B, type: MBChar32}]}
  - {id: 8, name: EIGHT, mask: 4, message: "eight {B}", attributes: [{name: B, type: SInt2}]}
)yaml";

/// Says everything that can be read from an entry.
class Description : public qz_LOG_AttributeVisitor {
 public:
  explicit Description(const qz_LOG_LogEntry& entry)
      : text_(std::to_string(entry.GetEntryID()) + " level " + std::to_string(entry.GetLogLevel()) + " mask " +
              std::to_string(entry.GetPropertyMask()) + " time " +
              std::to_string(entry.GetTimestamp(true).unix_seconds())) {
    entry.VisitAttributes(*this);
    text_ += ": " + entry.FormatMessage();
  }
  const std::string& text() const { return text_; }

  void VisitBool(const char* name, qz_AttributeType, bool value) override { add(name, value ? "true" : "false"); }
  void VisitUnsigned(const char* name, qz_AttributeType, unsigned value) override { add(name, std::to_string(value)); }
  void VisitSigned(const char* name, qz_AttributeType, int value) override { add(name, std::to_string(value)); }
  void VisitFloat(const char* name, qz_AttributeType, double value) override { add(name, std::to_string(value)); }
  void VisitText(const char* name, qz_AttributeType, const char* text, unsigned) override { add(name, text); }
  void VisitTime(const char* name, qz_AttributeType, const qz_Time& value) override {
    add(name, std::to_string(value.unix_seconds()));
  }

 private:
  void add(const char* name, const std::string& value) { text_ += std::string(" ") + name + "=" + value; }
  std::string text_;
};

class KeptEntryTest : public ::testing::Test {
 protected:
  KeptEntryTest() {
    qz_LOG_LogConfig::SetICUEnabled(false);
    const std::string path = folder_.write("kept.yaml", kSource);
    definitions_ = qzlog_tool::load_definitions(path, "", qzlog_compiler::RenderingPaths::kNarrow);
  }
  ~KeptEntryTest() override {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetICUEnabled(true);
  }

  std::string built(EntryBuilder& builder, const std::string& line) {
    const std::string padded = line + std::string(qzlog_tool::LineReader::kPaddingBytes, ' ');
    std::string text;
    try {
      qzlog_tool::call_for_entry(EntryRule::kRefusedValue, [&] {
        text = Description(builder.build(parser_.parse(std::string_view(padded).substr(0, line.size())))).text();
      });
    } catch (const EntryError& error) {
      return std::string(rule_info(error.rule).name) + ": " + error.text;
    }
    return text;
  }

  /// What an entry becomes that nothing was built into before.
  std::string built_anew(const std::string& line) {
    EntryBuilder builder(&definitions_.names, nullptr);
    return built(builder, line);
  }

  void expect_as_anew(const std::string& line) { ASSERT_EQ(built(builder_, line), built_anew(line)) << line; }

  qz_test::TimeZone zone_{"America/St_Johns"};
  qz_test::TempDir folder_;
  qzlog_tool::LoadedDefinitions definitions_;
  JsonEntryParser parser_;
  EntryBuilder builder_{&definitions_.names, nullptr};
};

TEST_F(KeptEntryTest, SameShapeAgain_HoldsTheNewValues) {
  EXPECT_EQ(built(builder_, R"({"id":8,"level":3,"attributes":{"B":5}})"), "8 level 3 mask 4 time 0 B=5: eight 5");
  EXPECT_EQ(built(builder_, R"({"id":8,"level":4,"attributes":{"B":-6}})"), "8 level 4 mask 4 time 0 B=-6: eight -6");
  EXPECT_EQ(built(builder_, R"({"id":8,"attributes":{"B":7}})"), "8 level 0 mask 4 time 0 B=7: eight 7");
}

TEST_F(KeptEntryTest, AfterARefusedValue_NothingOfItIsLeft) {
  built(builder_, R"({"id":71,"attributes":{"A":1,"B":"x"}})");
  EXPECT_EQ(built(builder_, R"({"id":71,"level":9,"attributes":{"A":2,"B":5}})"),
            "wrong-kind: attribute 'B': MBChar32 takes a text, not an integer");
  EXPECT_EQ(built(builder_, R"({"id":71,"attributes":{"A":3,"B":"y"}})"), "71 level 0 mask 2 time 0 A=3 B=y: also 3 y");
}

TEST_F(KeptEntryTest, IdsThatShareAPlace_EachAsNew) {
  for (const char* const line :
       {R"({"id":7,"attributes":{"A":1,"B":"x"}})", R"({"id":71,"attributes":{"A":1,"B":"x"}})",
        R"({"id":7,"attributes":{"A":1,"B":"x"}})"}) {
    ASSERT_NO_FATAL_FAILURE(expect_as_anew(line));
  }
}

TEST_F(KeptEntryTest, RandomLines_AsEntriesBuiltAnew) {
  qz_test::SeededRandom random;
  const auto one_of = [&random](const std::vector<std::string>& texts) { return texts[random.below(texts.size())]; };
  for (int round = 0; round < 5000; ++round) {
    std::string line = "{\"id\":" + one_of({"7", "7", "7", "71", "8", "\"SEVEN\"", "9", "\"NINE\""});
    if (random.below(2) == 0) line += ",\"level\":" + std::to_string(random.below(10));
    // Winter and summer, so that the zone's fields change, and a text that is no time.
    if (random.below(2) == 0) {
      line += ",\"time\":\"" + one_of({"2026-11-21T08:15:30Z", "2026-07-01T00:00:00Z", "2026-07-01T00:00:01Z", "now"}) +
              "\"";
    }
    std::string attributes;
    for (std::size_t count = random.below(4); count > 0; --count) {
      attributes +=
          (attributes.empty() ? "" : ",") +
          one_of({"\"A\":5", "\"A\":255", "\"A\":256", "\"A\":\"x\"", "\"B\":\"text\"", "\"B\":\"te\\u0078t\"",
                  "\"B\":7", "\"C\":1", "\"C\":0.5", "\"D\":\"2026-11-21T08:15:30Z\"", "\"E\":true", "\"E\":false",
                  "\"TIMEZONE_DIFFERENCE\":60", "\"DAYLIGHT_SAVING_ACTIVE\":true", "\"Z\":1"});
    }
    line += ",\"attributes\":{" + attributes + "}}";
    ASSERT_NO_FATAL_FAILURE(expect_as_anew(line)) << round;
  }
}

}  // namespace
