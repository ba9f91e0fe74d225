#include <gtest/gtest.h>

#include "qzlog/logentry.h"
#include "qzlog/qz_exception.h"
#include "tests/lines/lines_fixture.h"

namespace {

using EventNameTest = qz_test::LinesTest;

TEST_F(EventNameTest, NameOfTheDefinitions_IsThatOfTheEntry) {
  qz_LOG_LogEntry entry(7, 3);
  EXPECT_STREQ(entry.GetEventName(), "EVERY_TYPE");
  entry.SetEntryID(71);
  EXPECT_STREQ(entry.GetEventName(), "SEVENTY_ONE");
}

TEST_F(EventNameTest, DefinitionsWithoutTheName_Empty) { EXPECT_STREQ(qz_LOG_LogEntry(8, 3).GetEventName(), ""); }

TEST_F(EventNameTest, OtherDefinitionsAreLoaded_EntryKeepsTheName) {
  const qz_LOG_LogEntry entry(7, 3);
  EXPECT_STREQ(entry.GetEventName(), "EVERY_TYPE");
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_STREQ(entry.GetEventName(), "EVERY_TYPE");
}

TEST_F(EventNameTest, EntryWithoutAnId_Throws) {
  EXPECT_THROW((void)qz_LOG_LogEntry().GetEventName(), QZX_logging_misc);
}

}  // namespace
