#include "tools/diff/version_advice.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using namespace qzlog_compiler;

struct Move {
  std::string before;
  std::string after;
  std::optional<DiffRule> change;
  std::optional<DiffRule> finding;
  std::string advised;
};

constexpr std::optional<DiffRule> kNothing;
constexpr DiffRule kMajorChange = DiffRule::kEntryRemoved;
constexpr DiffRule kMinorChange = DiffRule::kEntryAdded;
constexpr DiffRule kFreeChange = DiffRule::kSummaryChanged;

const Move kMoves[] = {
    {"2.5", "2.5", kNothing, kNothing, "2.5"},
    {"2.5", "2.5", kFreeChange, kNothing, "2.5"},
    {"2.5", "2.6", kNothing, DiffRule::kVersionOverMoved, "2.5"},
    {"2.5", "2.6", kFreeChange, DiffRule::kVersionOverMoved, "2.5"},
    {"2.5", "2.5", kMinorChange, DiffRule::kVersionNotMoved, "2.6"},
    {"2.5", "2.6", kMinorChange, DiffRule::kVersionMoved, "2.6"},
    {"2.5", "2.9", kMinorChange, DiffRule::kVersionMoved, "2.6"},
    {"2.9", "2.10", kMinorChange, DiffRule::kVersionMoved, "2.10"},
    {"2.5", "3.0", kMinorChange, DiffRule::kVersionOverMoved, "2.6"},
    {"2.5", "2.5", kMajorChange, DiffRule::kVersionNotMoved, "3.0"},
    {"2.5", "2.6", kMajorChange, DiffRule::kVersionShort, "3.0"},
    {"2.5", "3.0", kMajorChange, DiffRule::kVersionMoved, "3.0"},
    {"2.5", "4.7", kMajorChange, DiffRule::kVersionMoved, "3.0"},
    {"2.5", "2.4", kNothing, DiffRule::kVersionMovedBack, "2.5"},
    {"2.5", "1.9", kMajorChange, DiffRule::kVersionMovedBack, "3.0"},
    {"2.10", "2.9", kMinorChange, DiffRule::kVersionMovedBack, "2.11"},
    {"2.5", "2.05", kNothing, DiffRule::kVersionMoved, "2.5"},
    {"2.5", "2.05", kMinorChange, DiffRule::kVersionNotMoved, "2.6"},
    {"2.5", "beta", kNothing, DiffRule::kVersionUnreadable, "2.5"},
    {"beta", "2.5", kMinorChange, DiffRule::kVersionUnreadable, ""},
    {"beta", "beta", kNothing, kNothing, ""},
    {"beta", "beta", kMinorChange, DiffRule::kVersionNotMoved, ""},
    {"", "2", kNothing, DiffRule::kVersionUnreadable, ""},
    {"99999.99", "1.2.3", kMajorChange, DiffRule::kVersionUnreadable, "100000.0"},
};

TEST(JudgeVersion, Moves_AreJudgedByTheLargestStep) {
  for (const Move& move : kMoves) {
    std::vector<DiffChange> changes;
    if (move.change) changes = {{kFreeChange, {}, {}, {}}, {*move.change, {}, {}, {}}, {kFreeChange, {}, {}, {}}};
    const VersionAdvice advice = judge_version(move.before, move.after, changes);
    const std::string trace = move.before + " -> " + move.after;
    EXPECT_EQ(advice.finding, move.finding) << trace;
    EXPECT_EQ(advice.advised, move.advised) << trace;
  }
}

TEST(VersionAdviceTest, Sufficient_UnlessTheFindingBreaksSomething) {
  EXPECT_TRUE(VersionAdvice().sufficient());
  EXPECT_TRUE((VersionAdvice{VersionStep::kMinor, "2.6", DiffRule::kVersionMoved}).sufficient());
  EXPECT_TRUE((VersionAdvice{VersionStep::kMinor, "2.6", DiffRule::kVersionOverMoved}).sufficient());
  EXPECT_FALSE((VersionAdvice{VersionStep::kMinor, "2.6", DiffRule::kVersionNotMoved}).sufficient());
  EXPECT_FALSE((VersionAdvice{VersionStep::kMajor, "3.0", DiffRule::kVersionShort}).sufficient());
}

}  // namespace
