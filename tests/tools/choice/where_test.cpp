#include "tools/choice/where.h"

#include <optional>
#include <string>
#include <utility>

#include "tests/tools/choice/choice_fixture.h"

namespace {

using qzlog_tool::Where;

class WhereTest : public qz_test::ChoiceTest {
 protected:
  Where compiled(const std::string& expression) {
    qzlog_compiler::Findings findings("--where");
    std::optional<Where> where = Where::compile(expression, known_, qzlog_tool::process_clock(qz_test::kNow), findings);
    for (const qzlog_compiler::Finding& finding : findings.all()) ADD_FAILURE() << expression << ": " << finding.text;
    return std::move(where).value();
  }
  bool holds(const std::string& expression, const std::string& text) { return compiled(expression).holds(line(text)); }
};

const std::string kFull =
    R"({"writer":"host/12/34","seq":7,"id":1,"level":5,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":10,)"
    R"("Small":-3,"Mixed":5,"Load":0.5,"Flag":true,"When":"2026-11-20T18:15:00Z","odd name":9,"level":2}})";
const std::string kOk = R"({"id":2,"attributes":{"Name":"größe","Free":100000,"Mixed":"5"}})";

struct Case {
  const char* expression;
  bool of_full;
  bool of_ok;
};

TEST_F(WhereTest, Comparisons_HoldAsTheTypesSay) {
  const Case cases[] = {
      {"Free = 10", true, false},
      {"Free != 10", false, true},
      {"Free < 11", true, false},
      {"Free <= 10", true, false},
      {"Free > 10", false, true},
      {"Free >= 10", true, true},
      {"Free in (1, 10)", true, false},
      {"Free not in (1, 10)", false, true},
      {"Free = 100000", false, true},  // more than entry 1 can have
      {"Free < 70000", true, false},
      {"Small = -3", true, false},
      {"Small < 0", true, false},
      {"Load = 0.5", true, false},
      {"Load < 1", true, false},
      {"Flag = true", true, false},
      {"Flag != true", false, false},
      {"When < 2026-11-21", false, false},  // 2026-11-20 18:15 GMT is that midnight in Kathmandu, and not before
      {"When = 2026-11-21", true, false},
      {"When = \"today\"", true, false},
      {"When >= 2026-11-20T18:15:00Z", true, false},
      {"Name = \"vol1\"", true, false},
      {"Name = 'vol1'", true, false},
      {"Name ~ \"vol?\"", true, false},
      {"Name ~ \"gr??e\"", false, true},
      {"Name ~ \"gr?e\"", false, false},
      {"Name !~ \"vol*\"", false, true},
      {"Name = \"vol*\"", false, false},
      {"Name in (\"größe\", \"x\")", false, true},
      {"Mixed = 5", true, false},
      {"Mixed = \"5\"", false, true},
      {"Mixed != 5", false, true},  // a text is another value
      {"Mixed in (5, \"5\")", true, true},
      {"Mixed not in (5, \"6\")", false, true},
      {"`odd name` = 9", true, false},
      {"level = 2", true, false},
      {"@level = 5", true, false},
      {"@level = 0", false, true},
      {"@id in (2, 3)", false, true},
      {"@mask = 6", false, true},
      {"@name ~ \"DISK_*\"", true, true},
      {"@name = \"DISK_OK\"", false, true},
      {"@name != \"DISK_OK\"", true, false},
      {"@seq = 7", true, false},
      {"@seq > 6", true, false},
      {"@writer ~ \"host/*\"", true, false},
      {"@time = 2026-11-21T08:15:30Z", true, false},
      {"@time < \"now\"", false, false},
      {"@time >= \"-1s\"", true, false},
  };
  for (const Case& tested : cases) {
    EXPECT_EQ(holds(tested.expression, kFull), tested.of_full) << tested.expression;
    EXPECT_EQ(holds(tested.expression, kOk), tested.of_ok) << tested.expression;
  }
}

// Messages show them in GMT, wherever the reader is.
TEST_F(WhereTest, DaysAndTimesOfDay_AreComparedInGmt) {
  const std::string entry = R"({"id":2,"attributes":{"Day":"2026-11-21T00:00:00Z","Clock":"2026-11-21T08:15:30Z",)"
                            R"("Turn":"2026-11-21T08:15:30Z"}})";
  const std::string late = R"({"id":2,"attributes":{"Day":"1969-12-31T23:59:59Z","Clock":"1969-12-31T23:59:59Z"}})";
  for (const char* zone : {"Asia/Kathmandu", "America/New_York", "Pacific/Kiritimati", "Etc/GMT+12"}) {
    const qz_test::TimeZone reader_zone(zone);
    for (const char* expression :
         {"Day = 2026-11-21", "Day = '2026-11-21'", "Day >= 2026-11-21", "Day < 2026-11-22", "Day > 2026-11-20",
          "Day in (2026-11-20, 2026-11-21)", "Day not in (2026-11-20, 2026-11-22)", "Day = 2026-11-21T00:00:00Z",
          "Day < 2026-11-21T00:00:01Z", "Clock = '08:15:30'", "Clock > '08:15'", "Clock > 08:15", "Clock < 08:16",
          "Clock in (08:15:30)", "Clock != '08:15'", "Turn = 08:15:30", "Turn != 2026-11-21T08:15:30Z"}) {
      EXPECT_TRUE(holds(expression, entry)) << zone << ": " << expression;
      EXPECT_FALSE(holds("not " + std::string(expression), entry)) << zone << ": " << expression;
    }
    EXPECT_TRUE(holds("Day = 1969-12-31 and Clock = 23:59:59", late)) << zone;
    EXPECT_TRUE(holds("Turn = 2026-11-21T08:15:30Z and Turn != 08:15:30",
                      R"({"id":3,"attributes":{"Turn":"2026-11-21T08:15:30Z"}})"))
        << zone;
  }
}

// The present moment is the 21st in Kathmandu and the 20th twelve hours west of Greenwich.
TEST_F(WhereTest, PresentDay_IsThatOfTheReadersCalendar) {
  const std::string entry = R"({"id":2,"attributes":{"Day":"2026-11-21T00:00:00Z"}})";
  EXPECT_TRUE(holds("Day = 'today'", entry));
  EXPECT_TRUE(holds("Day > 'yesterday'", entry));
  const qz_test::TimeZone west("Etc/GMT+12");
  EXPECT_TRUE(holds("Day > 'today'", entry));
}

TEST_F(WhereTest, WhatIsMissing_MakesEveryComparisonFalse) {
  for (const char* expression :
       {"Pool = \"a\"", "Pool != \"a\"", "Pool ~ \"*\"", "Pool !~ \"*\"", "Pool in (\"a\")", "Pool not in (\"a\")",
        "exists(Pool)", "@writer != \"a\"", "@seq != 1", "@time != \"now\"", "exists(@time)", "Load != 1",
        "Load not in (1)", "Flag != true", "When > 1970-01-01"}) {
    EXPECT_FALSE(holds(expression, kOk)) << expression;
    EXPECT_TRUE(holds("not " + std::string(expression), kOk)) << expression;
  }
  EXPECT_TRUE(holds("missing(Pool) and missing(@seq) and missing(Reason) and exists(Name) and exists(@id)", kOk));
  EXPECT_TRUE(holds("missing(Pool) or Pool != \"x\"", kOk));
}

TEST_F(WhereTest, JoinedComparisons_BindAsExpected) {
  const Case cases[] = {
      {"Free = 1 or Free = 10 and Small = -3", true, false},
      {"Free = 10 or Free = 1 and Small = 5", true, false},
      {"(Free = 10 or Free = 1) and Small = 5", false, false},
      {"not Free = 10 or Flag = true", true, true},
      {"not (Free = 10 or Flag = true)", false, true},
      {"not (Free = 10 and Flag = false)", true, true},
      {"not not Free = 10", true, false},
      {"not (not (Free = 10) and not (Free = 100000))", true, true},
      {"Free < 20 and (Name ~ \"vol*\" or Reason = 10) and missing(Pool)", true, false},
  };
  for (const Case& tested : cases) {
    EXPECT_EQ(holds(tested.expression, kFull), tested.of_full) << tested.expression;
    EXPECT_EQ(holds(tested.expression, kOk), tested.of_ok) << tested.expression;
  }
}

TEST_F(WhereTest, Escapes_StandForTheirCharacters) {
  const std::string entry = R"({"id":1,"attributes":{"Name":"a\n\"b\\*"}})";
  EXPECT_TRUE(holds(R"(Name = "a\n\"b\\*")", entry));
  EXPECT_TRUE(holds(R"(Name = 'a\n"b\\\*')", entry));
  EXPECT_TRUE(holds(R"(Name ~ "a\n*\*")", entry));
  EXPECT_TRUE(holds(R"(Name ~ "?\n*b?*")", entry));
  EXPECT_FALSE(holds(R"(Name ~ "a\n\*")", entry));
  EXPECT_TRUE(holds(R"(Name ~ "*\\\*")", entry));
  // A line break is stored as two characters, as in entries that were written so.
  EXPECT_TRUE(holds(R"(Name = "a\\nb")", R"({"id":1,"attributes":{"Name":"a\nb"}})"));
  EXPECT_TRUE(holds(R"(Name = "a\nb")", R"({"id":1,"attributes":{"Name":"a\\nb"}})"));
}

TEST_F(WhereTest, FloatsThatAreNoNumbers_OnlyDiffer) {
  const std::string entry = R"({"id":1,"attributes":{"Load":"NaN"}})";
  EXPECT_FALSE(holds("Load = 1", entry));
  EXPECT_FALSE(holds("Load < 1", entry));
  EXPECT_FALSE(holds("Load >= 1", entry));
  EXPECT_TRUE(holds("Load != 1", entry));
  EXPECT_TRUE(holds("Load > 1e308", R"({"id":1,"attributes":{"Load":"Infinity"}})"));
}

TEST_F(WhereTest, TextsOfOtherCodePages_AreComparedByTheirCharacters) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_TRUE(holds("Name = \"größe\"", kOk));
  EXPECT_TRUE(holds("Name ~ \"gr??e\"", kOk));
  EXPECT_FALSE(
      holds("Name = \"gr\xEF\xBF\xBD\xEF\xBF\xBD"
            "e\"",
            kOk));
  qz_LOG_LogConfig::SetICUEnabled(false);
  EXPECT_TRUE(holds("Name = \"größe\"", kOk));
}

TEST_F(WhereTest, NamesOfLines_CountWhereTheDefinitionsHaveNone) {
  EXPECT_FALSE(holds("@name = \"DISK_OK\"", R"({"id":1,"name":"DISK_OK"})"));
  const std::string entry = R"({"id":1,"name":"OWN"})";
  load_without_names();
  EXPECT_TRUE(holds("@name = \"OWN\"", entry));
  EXPECT_FALSE(holds("@name != \"OWN\"", R"({"id":1})"));
}

TEST_F(WhereTest, MillionsOfLines_TakeNoMemoryEach) {
  Where where =
      compiled("Free < 10 and (Name ~ \"vol*\" or Reason in (1, 2)) or not (@name = \"DISK_OK\" and Load > 1)");
  const qz_LOG_EntryLine& entry = line(kFull);
  where.holds(entry);
  qz_test::AllocationFailure failure(1);
  EXPECT_TRUE(where.holds(entry));
}

}  // namespace
