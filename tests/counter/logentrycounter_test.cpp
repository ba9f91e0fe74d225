#include "qzlog/logentrycounter.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "tests/counter/counter_fixture.h"

namespace {

using namespace qz_test;
using Element = _qz_LOG_EntryCounterElement;

const std::string kReserved = "\x01\x02\x03\x04\x05\x06\x07\xFE";

static_assert(sizeof(Element) == 32, "eight fields of 32 bits");

class IncreaseCount : public CounterTest {};

TEST_F(IncreaseCount, EmptyFile_AppendsARecordWithCountOne) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2019, 12, 31, 0x01020304), 0);
  const std::string expected("\0\0\0\x20\0\0\x07\xE3\0\0\0\x0C\0\0\0\x1F\x01\x02\x03\x04\0\0\0\x01\0\0\0\0\0\0\0\0",
                             32);
  EXPECT_TRUE(holds(expected));
}

TEST_F(IncreaseCount, SameArgumentsTwice_OneRecordWithCountTwo) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 2)));
}

TEST_F(IncreaseCount, SameKeyOtherDate_CountsForTheDateBefore) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 2)));
}

TEST_F(IncreaseCount, AnotherKeyBetween_DateIsLookedAtAgain) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 2) + record_bytes(2020, 1, 1, 8, 2) + record_bytes(2020, 1, 2, 7, 1)));
}

TEST_F(IncreaseCount, EachArgumentTellsRecordsApart) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2021, 1, 1, 8), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 2, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2021, 1, 2, 8), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, -7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2021, 1, 1, 8, 1) + record_bytes(2020, 2, 1, 7, 1) +
                    record_bytes(2021, 1, 2, 8, 1) + record_bytes(2020, 1, 1, -7, 1)));
}

TEST_F(IncreaseCount, RecordFound_KeepsSizeFieldAndReservedBytes) {
  open_with(record_bytes(2020, 1, 1, 7, 5, 99, kReserved));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 6, 99, kReserved)));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 7, 99, kReserved)));
}

TEST_F(IncreaseCount, HighestCount_GoesOnModulo) {
  open_with(record_bytes(2020, 1, 1, 7, INT_MAX) + record_bytes(2020, 1, 1, 8, -1));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, INT_MIN) + record_bytes(2020, 1, 1, 8, -1)));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, INT_MIN + 1) + record_bytes(2020, 1, 1, 8, 0)));
}

TEST_F(IncreaseCount, HighestCountOnTheFastPath_GoesOnModulo) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, INT_MAX), 0);
  EXPECT_EQ(counter_.IncreaseCount(1999, 9, 9, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, INT_MIN)));
}

TEST_F(IncreaseCount, FreeRecord_ReusedByTheNewOne) {
  open_with(record_bytes(2020, 1, 1, 7, 1) + free_record(kReserved) + free_record());
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 8), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 2, 8, 1) + free_record()));
}

TEST_F(IncreaseCount, RecordWithOnlyADayOrMonthOrYear_IsNotFree) {
  const std::string bytes = record_bytes(2020, 0, 0, 0, 0) + record_bytes(0, 1, 0, 0, 0) + record_bytes(0, 0, 1, 0, 0);
  open_with(bytes);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 8), 0);
  EXPECT_TRUE(holds(bytes + record_bytes(2020, 1, 2, 8, 1)));
}

TEST_F(IncreaseCount, DateOfZeros_CountsInAFreeRecordOfThatKey) {
  open_with(record_bytes(2020, 1, 1, 7, 1) + free_record());
  EXPECT_EQ(counter_.IncreaseCount(0, 0, 0, 0), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(0, 0, 0, 0, 1)));
}

TEST_F(IncreaseCount, SeveralEqualRecords_TheFirstCounts) {
  const std::string record = record_bytes(2020, 1, 1, 7, 1);
  open_with(free_record() + record + record);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(free_record() + record_bytes(2020, 1, 1, 7, 2) + record));
}

TEST_F(IncreaseCount, KeyMinusOneAtFirst_SearchedAsAnyOther) {
  const std::string other = record_bytes(2020, 1, 1, 5, 9);
  open_with(other);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, -1), 0);
  EXPECT_TRUE(holds(other + record_bytes(2020, 1, 1, -1, 1)));
}

// The position is known from the record that was added, but no record was counted yet.
TEST_F(IncreaseCount, KeyMinusOneAfterAnAddition_UsesNoUnsetRecord) {
  for (const int year : {0, 2020}) {
    write("");
    _qz_LOG_EntryCounter counter;
    EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
    Element element = {32, year, 0, 0, year == 0 ? 0 : -1, 4, {0, 0}};
    EXPECT_EQ(counter.addElement(&element), 0);
    EXPECT_EQ(counter.IncreaseCount(2021, 1, 1, -1), 0);
    const std::string counted = record_bytes(2021, 1, 1, -1, 1);
    EXPECT_TRUE(holds(year == 0 ? counted : record_bytes(2020, 0, 0, -1, 4) + counted));
  }
}

TEST_F(IncreaseCount, AdditionAtAnotherPosition_FastPathDoesNotMatch) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 2, 7, 10), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 2, 7, 11)));
}

TEST_F(IncreaseCount, AdditionOfAnEqualRecord_FastPathCountsThatOne) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  Element twin = {32, 2020, 1, 1, 7, 100, {0, 0}};
  EXPECT_EQ(counter_.addElement(&twin), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 9, 9, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 1, 7, 101)));
}

TEST_F(IncreaseCount, LastRecordDeleted_SearchedAgain) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 2, 7, 1)));
}

TEST_F(IncreaseCount, LastRecordChangedByAnother_SearchedAgain) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  const std::string others = record_bytes(2020, 1, 1, 6, 4) + record_bytes(2020, 1, 3, 7, 5);
  write(others);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 3, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 4) + record_bytes(2020, 1, 3, 7, 6)));
}

TEST_F(IncreaseCount, OnlyTheCountChangedByAnother_GoesOnFromThere) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  write(record_bytes(2020, 1, 1, 7, 41, 31, kReserved));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 42, 31, kReserved)));
}

TEST_F(IncreaseCount, FileCutByAnother_ShortReadIsNotTheLastRecord) {
  for (const std::size_t length : {0U, 1U, 12U, 31U, 32U, 33U, 52U, 63U}) {
    write("");
    _qz_LOG_EntryCounter counter;
    EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 7), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 8), 0);
    EXPECT_EQ(truncate(path().c_str(), static_cast<off_t>(length)), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 2, 8), 0);
    const std::string first = length < kRecordBytes ? "" : record_bytes(2020, 1, 1, 7, 1);
    EXPECT_TRUE(holds(first + record_bytes(2020, 1, 2, 8, 1))) << length;
  }
}

TEST_F(IncreaseCount, PieceOfARecordAtTheEnd_CompletedByTheNextOne) {
  const std::string first = record_bytes(2020, 1, 1, 7, 1);
  for (std::size_t piece = 1; piece < kRecordBytes; ++piece) {
    write(first + record_bytes(2020, 1, 1, 8, 5).substr(0, piece));
    _qz_LOG_EntryCounter counter;
    EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 8), 0);
    EXPECT_TRUE(holds(first + record_bytes(2020, 1, 1, 8, 1))) << piece;
  }
}

TEST_F(IncreaseCount, PieceAtTheEndAndAFreeRecord_PieceStays) {
  open_with(free_record() + "piece");
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 8, 1) + "piece"));
}

TEST_F(IncreaseCount, ManyRecords_EachFoundAgain) {
  open();
  std::string expected;
  for (int key = 0; key < 700; ++key) {
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, key), 0);
    expected += record_bytes(2020, 1, 1, key, 2);
  }
  for (int key = 699; key >= 0; --key) EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, key), 0);
  std::string last = record_bytes(2020, 1, 1, 699, 2);
  EXPECT_TRUE(holds(expected.replace(expected.size() - kRecordBytes, kRecordBytes, last)));
}

class UpdateEntryCount : public CounterTest {};

TEST_F(UpdateEntryCount, NoSuchRecord_AddedWithTheCount) {
  open();
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 123), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 8, -5), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 123) + record_bytes(2020, 1, 1, 8, -5)));
}

TEST_F(UpdateEntryCount, RecordFound_OnlyTheCountIsReplaced) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1, 77, kReserved));
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 0), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 0, 77, kReserved)));
}

TEST_F(UpdateEntryCount, SameKeyOtherDate_NoFastPath) {
  open();
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 5), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 2, 7, 6), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 5) + record_bytes(2020, 1, 2, 7, 6)));
}

TEST_F(UpdateEntryCount, RecordFound_LastRecordOfIncreaseCountStays) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 8, 50), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 8, 50) + record_bytes(2020, 1, 1, 7, 2)));
}

class DeleteOne : public CounterTest {};

TEST_F(DeleteOne, NoSuchRecord_ReturnsZeroAndChangesNothing) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3) + "piece";
  open_with(bytes);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 8), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2021, 1, 1, 7), 0);
  EXPECT_TRUE(holds(bytes));
}

TEST_F(DeleteOne, RecordFound_FreeWithSize32AndReservedBytesKept) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 3, 99, kReserved));
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 1) + free_record(kReserved)));
}

TEST_F(DeleteOne, NextNewRecord_TakesItsPlace) {
  open();
  for (const int key : {1, 2, 3}) EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, key), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 2), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 5, 4), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 1, 1) + record_bytes(2020, 1, 5, 4, 1) + record_bytes(2020, 1, 1, 3, 1)));
}

TEST_F(DeleteOne, EqualRecords_OnlyTheFirst) {
  const std::string record = record_bytes(2020, 1, 1, 7, 3);
  open_with(record + record);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), 0);
  EXPECT_TRUE(holds(free_record() + record));
}

class AddElement : public CounterTest {};

TEST_F(AddElement, Null_MinusOneAndNothingWritten) {
  open();
  EXPECT_EQ(counter_.addElement(nullptr), -1);
  EXPECT_EQ(read(), "");
}

TEST_F(AddElement, CallersElement_WrittenWholeAndNotChanged) {
  open();
  Element element = {5, 2020, -1, INT_MIN, INT_MAX, 0x01020304, {0x11111111, 0x22222222}};
  const Element copy = element;
  EXPECT_EQ(counter_.addElement(&element), 0);
  EXPECT_EQ(std::memcmp(&element, &copy, sizeof(copy)), 0);
  EXPECT_TRUE(holds(record_bytes(2020, -1, INT_MIN, INT_MAX, 0x01020304, 5, "\x11\x11\x11\x11\x22\x22\x22\x22")));
}

TEST_F(AddElement, ReservedFields_WrittenAsTheyLieInMemory) {
  open();
  Element element = {32, 2020, 1, 1, 7, 1, {0, 0}};
  std::memcpy(element.reserved, kReserved.data(), kReserved.size());
  EXPECT_EQ(counter_.addElement(&element), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1, 32, kReserved)));
}

TEST_F(AddElement, RecordOfTheSameDateAndKey_AddedAllTheSame) {
  open();
  Element element = {32, 2020, 1, 1, 7, 1, {0, 0}};
  EXPECT_EQ(counter_.addElement(&element), 0);
  EXPECT_EQ(counter_.addElement(&element), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 1, 7, 1)));
}

TEST_F(AddElement, FirstFreeRecord_Overwritten) {
  open_with(record_bytes(2020, 1, 1, 7, 1) + record_bytes(0, 0, 0, 9, 9, 9, kReserved) + free_record());
  Element element = {32, 2021, 2, 3, 4, 5, {0, 0}};
  EXPECT_EQ(counter_.addElement(&element), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2021, 2, 3, 4, 5) + free_record()));
}

class DeleteRange : public CounterTest {
 protected:
  int delete_range(const qz_Time& from, const qz_Time& to) { return counter_.DeleteEntryElement(from, to); }
};

TEST_F(DeleteRange, RightAfterOpening_EveryRecordInTheRange) {
  open_with(record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 10, 8, 2) + record_bytes(2020, 1, 20, 9, 3) +
            record_bytes(2020, 1, 31, 9, 4));
  EXPECT_EQ(delete_range(moment(2020, 1, 10), moment(2020, 1, 20)), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1) + free_record() + free_record() + record_bytes(2020, 1, 31, 9, 4)));
}

TEST_F(DeleteRange, AcrossTheTurnOfTheYear_FreesNothing) {
  const std::string bytes = record_bytes(2019, 12, 26, 7, 1) + record_bytes(2020, 1, 1, 7, 1);
  open_with(bytes);
  EXPECT_EQ(delete_range(moment(2019, 12, 25), moment(2020, 1, 5)), 0);
  EXPECT_TRUE(holds(bytes));
}

TEST_F(DeleteRange, SeveralMonths_IsABoxOverTheParts) {
  open_with(record_bytes(2020, 2, 10, 1, 1) + record_bytes(2020, 3, 9, 2, 1) + record_bytes(2020, 3, 21, 3, 1) +
            record_bytes(2020, 4, 20, 4, 1));
  EXPECT_EQ(delete_range(moment(2020, 2, 10), moment(2020, 4, 20)), 0);
  EXPECT_TRUE(holds(free_record() + record_bytes(2020, 3, 9, 2, 1) + record_bytes(2020, 3, 21, 3, 1) + free_record()));
}

TEST_F(DeleteRange, FromLaterThanTo_MinusOneAndNothingChanged) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 1);
  open_with(bytes);
  EXPECT_EQ(delete_range(moment(2020, 1, 2), moment(2020, 1, 1)), -1);
  EXPECT_EQ(delete_range(moment(2020, 1, 1, 13), moment(2020, 1, 1, 12)), -1);
  EXPECT_TRUE(holds(bytes));
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(free_record()));
}

TEST_F(DeleteRange, AfterAnIncrease_OnlyTheRecordsBehindIt) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1) + record_bytes(2020, 1, 1, 8, 1));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 2) + free_record()));
}

TEST_F(DeleteRange, AfterASecondIncreaseOnTheFastPath_OnlyTheRecordsBehindIt) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 6), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2099, 1, 1, 1), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 6), 0);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 3) + free_record()));
}

TEST_F(DeleteRange, AfterAnotherRangeDelete_NothingIsLeftToExamine) {
  const std::string bytes = record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1);
  open_with(bytes);
  EXPECT_EQ(delete_range(moment(2000, 1, 1), moment(2000, 1, 1)), 0);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(bytes));
}

TEST_F(DeleteRange, AfterADeleteOfNothing_NothingIsLeftToExamine) {
  const std::string bytes = record_bytes(2020, 1, 1, 6, 1);
  open_with(bytes);
  EXPECT_EQ(counter_.DeleteEntryElement(2099, 1, 1, 1), 0);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(bytes));
}

TEST_F(DeleteRange, AfterARefusedRange_PositionIsStillTheStart) {
  open_with(record_bytes(2020, 1, 1, 6, 1));
  EXPECT_EQ(delete_range(moment(2020, 1, 2), moment(2020, 1, 1)), -1);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(free_record()));
}

TEST_F(DeleteRange, PositionSetThroughTheStream_StartsThere) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1));
  EXPECT_EQ(fseek(counter_.GetFilePointer(), 32, SEEK_SET), 0);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 1) + free_record()));
}

TEST_F(DeleteRange, FreedRecord_Size32AndKeyAndCountZero) {
  open_with(record_bytes(2020, 1, 1, 6, 5, 99) + record_bytes(0, 0, 0, 3, 4, 98));
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(free_record() + record_bytes(0, 0, 0, 3, 4, 98)));
}

// The position lies behind the end of the file then: there is nothing to examine, and it stays.
TEST_F(DeleteRange, FileCutBeforeThePosition_PositionStays) {
  const std::string record = record_bytes(2020, 1, 1, 6, 1);
  open_with(record + record + record);
  EXPECT_EQ(counter_.DeleteEntryElement(2099, 1, 1, 1), 0);
  write(record);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_EQ(ftell(counter_.GetFilePointer()), 96);
  write(record + record + record + record);
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(record + record + record + free_record()));
}

TEST_F(DeleteRange, LocalTimes_TheirLocalDatesCount) {
  const TimeZone zone("Asia/Kathmandu");
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 2, 7, 1));
  qz_Time late_evening = moment(2020, 1, 1, 23);
  late_evening.GMT_to_local();
  EXPECT_EQ(delete_range(late_evening, late_evening), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 6, 1) + free_record()));
}

TEST_F(DeleteRange, PieceOfARecordAtTheEnd_Untouched) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2020, 1, 1, 7, 1).substr(0, 31));
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(free_record() + record_bytes(2020, 1, 1, 7, 1).substr(0, 31)));
}

TEST_F(DeleteRange, FreedRecords_TakenFirstByTheNextOnes) {
  open_with(record_bytes(2020, 1, 1, 6, 1) + record_bytes(2021, 1, 1, 6, 1) + record_bytes(2020, 1, 2, 6, 1));
  EXPECT_EQ(delete_range(moment(2020, 1, 1), moment(2020, 1, 31)), 0);
  for (const int key : {1, 2, 3}) EXPECT_EQ(counter_.IncreaseCount(2022, 1, 1, key), 0);
  EXPECT_TRUE(holds(record_bytes(2022, 1, 1, 1, 1) + record_bytes(2021, 1, 1, 6, 1) + record_bytes(2022, 1, 1, 2, 1) +
                    record_bytes(2022, 1, 1, 3, 1)));
}

}  // namespace
