#include "lines/kept_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lines/line_parser.h"
#include "tests/lines/lines_fixture.h"

namespace {

using qzlog::EntryShape;
using qzlog::LineAttribute;
using qzlog::LineAttributes;
using qzlog::LineFields;
using qzlog::LineParser;

class EntryShapeTest : public ::testing::Test {
 protected:
  /// A source with these attributes, valid until the next call.
  LineFields source(const std::vector<const char*>& names, const char* time = nullptr) {
    attributes_.clear();
    for (const char* const name : names) attributes_.push_back({name, {}, 0, false});
    LineFields entry;
    entry.time = time;
    entry.attributes = LineAttributes(attributes_);
    return entry;
  }

  /// The shape of an entry 7 with A and B.
  EntryShapeTest() {
    shape_.begin(7, false);
    shape_.add("A", {TypeUInt4, 3, 0});
    shape_.add("B", {TypeChar32, 4, 1});
    shape_.complete();
  }

  std::vector<LineAttribute> attributes_;
  EntryShape shape_;
};

TEST_F(EntryShapeTest, New_MatchesNothing) {
  const EntryShape shape;
  EXPECT_FALSE(shape.matches(0, source({})));
  EXPECT_FALSE(shape.matches(7, source({"A"})));
}

TEST_F(EntryShapeTest, SameIdNamesAndOrder_MatchesWithTheTypes) {
  EXPECT_TRUE(shape_.matches(7, source({"A", "B"})));
  EXPECT_EQ(shape_.attribute(0).type, TypeUInt4);
  EXPECT_EQ(shape_.attribute(1).type, TypeChar32);
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
  shape_.add("C", {TypeBool, 0, 0});
  EXPECT_FALSE(shape_.matches(8, source({"C"}, "2026-11-21T08:15:30Z")));
  shape_.complete();
  EXPECT_TRUE(shape_.matches(8, source({"C"}, "2026-11-21T08:15:30Z")));
  EXPECT_FALSE(shape_.matches(8, source({"C"})));
}

TEST_F(EntryShapeTest, AttributesNotReadYet_DoNotMatch) {
  LineParser parser;
  LineFields fields;
  const std::string line = R"({"id":7,"attributes":{"A":1,"B":"x"}})";
  parser.parse(line, fields);
  EXPECT_TRUE(shape_.matches(7, fields));
  parser.parse_any(line, fields);
  EXPECT_FALSE(shape_.matches(7, fields));
}

// ---- kept entries against entries that are built anew ----

class KeptEntryTest : public qz_test::LinesTest {
 protected:
  /// What an entry becomes that nothing was built into before.
  std::string built_anew(const std::string& line) {
    qz_LOG_EntryLine anew;
    return outcome(anew, line);
  }

  void expect_as_anew(const std::string& line) { ASSERT_EQ(outcome(line), built_anew(line)) << line; }

  qz_test::TimeZone summer_{"America/St_Johns"};
};

TEST_F(KeptEntryTest, SameShapeAgain_HoldsTheNewValues) {
  EXPECT_EQ(outcome(R"({"id":8,"level":3,"attributes":{"B":5}})"), "8 level 3 mask 4 time 0: B/5=5");
  EXPECT_EQ(outcome(R"({"id":8,"level":4,"attributes":{"B":-6}})"), "8 level 4 mask 4 time 0: B/5=-6");
  EXPECT_EQ(outcome(R"({"id":8,"attributes":{"B":7}})"), "8 level 0 mask 4 time 0: B/5=7");
}

TEST_F(KeptEntryTest, AfterARefusedValue_NothingOfItIsLeft) {
  outcome(R"({"id":71,"attributes":{"A":1,"B":"x"}})");
  EXPECT_EQ(outcome(R"({"id":71,"level":9,"attributes":{"A":2,"B":5}})"),
            "wrong-kind: attribute 'B': MBChar32 takes a text, not an integer");
  EXPECT_EQ(outcome(R"({"id":71,"attributes":{"A":3,"B":"y"}})"), "71 level 0 mask 2 time 0: A/7=3 B/15=y(1)");
}

TEST_F(KeptEntryTest, IdsThatShareAPlace_EachAsNew) {
  for (const char* const line :
       {R"({"id":7,"attributes":{"U1":1,"C":"x"}})", R"({"id":71,"attributes":{"A":1,"B":"x"}})",
        R"({"id":7,"attributes":{"U1":1,"C":"x"}})"}) {
    ASSERT_NO_FATAL_FAILURE(expect_as_anew(line));
  }
}

TEST_F(KeptEntryTest, RandomLines_AsEntriesBuiltAnew) {
  qz_test::SeededRandom random;
  const auto one_of = [&random](const std::vector<std::string>& texts) { return texts[random.below(texts.size())]; };
  for (int round = 0; round < 5000; ++round) {
    std::string line = "{\"id\":" + one_of({"7", "7", "7", "71", "8", "\"EVERY_TYPE\"", "9", "\"NINE\""});
    if (random.below(2) == 0) line += ",\"level\":" + std::to_string(random.below(10));
    // Winter and summer, so that the zone's fields change, and a text that is no time.
    if (random.below(2) == 0) {
      line += ",\"time\":\"" + one_of({"2026-11-21T08:15:30Z", "2026-07-01T00:00:00Z", "2026-07-01T00:00:01Z", "now"}) +
              "\"";
    }
    std::string attributes;
    for (std::size_t count = random.below(4); count > 0; --count) {
      attributes += (attributes.empty() ? "" : ",") + one_of({"\"U1\":5",
                                                              "\"U1\":255",
                                                              "\"U1\":256",
                                                              "\"A\":\"x\"",
                                                              "\"C\":\"text\"",
                                                              "\"C\":\"te\\u0078t\"",
                                                              "\"B\":7",
                                                              "\"F\":1",
                                                              "\"F\":0.5",
                                                              "\"F\":\"NaN\"",
                                                              "\"D\":\"2026-11-21T08:15:30Z\"",
                                                              "\"B\":true",
                                                              "\"B\":false",
                                                              "\"M\":\"long\"",
                                                              "\"A\":-3",
                                                              "\"Anywhere\":12",
                                                              "\"S1\":-1",
                                                              "\"S2\":-2",
                                                              "\"S4\":-4",
                                                              "\"U2\":2",
                                                              "\"U4\":4",
                                                              "\"M\":\"Gr\u00F6\u00DFe\"",
                                                              "\"TIMEZONE_DIFFERENCE\":60",
                                                              "\"DAYLIGHT_SAVING_ACTIVE\":true",
                                                              "\"Z\":1"});
    }
    line += ",\"attributes\":{" + attributes + "}}";
    ASSERT_NO_FATAL_FAILURE(expect_as_anew(line)) << round;
  }
}

}  // namespace
