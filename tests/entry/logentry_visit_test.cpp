#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;

/// Writes down each call as "kind name type value".
class Recorder : public qz_LOG_AttributeVisitor {
 public:
  void VisitBool(const char* name, qz_AttributeType type, bool value) override {
    note("bool", name, type, value ? "true" : "false");
  }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned int value) override {
    note("unsigned", name, type, std::to_string(value));
  }
  void VisitSigned(const char* name, qz_AttributeType type, int value) override {
    note("signed", name, type, std::to_string(value));
  }
  void VisitFloat(const char* name, qz_AttributeType type, double value) override {
    note("float", name, type, std::to_string(value));
  }
  void VisitText(const char* name, qz_AttributeType type, const char* text, unsigned int length) override {
    EXPECT_EQ(text[length], '\0');
    note("text", name, type, std::string(text, length));
  }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time& value) override {
    note("time", name, type, std::to_string(value.unix_seconds()));
  }

  std::vector<std::string> calls;

 private:
  void note(const std::string& kind, const std::string& name, int type, const std::string& value) {
    calls.push_back(kind + " " + name + " " + std::to_string(type) + " " + value);
  }
};

std::vector<std::string> visited(const qz_LOG_LogEntry& entry) {
  Recorder recorder;
  entry.VisitAttributes(recorder);
  return recorder.calls;
}

class VisitAttributes : public EntryTest {};

TEST_F(VisitAttributes, NothingSet_NothingVisited) {
  EXPECT_EQ(visited(qz_LOG_LogEntry(kId, 0)), Texts());
  EXPECT_EQ(visited(qz_LOG_LogEntry()), Texts());
}

TEST_F(VisitAttributes, EveryType_VisitedWithNameTypeAndValueInOrderOfDefinition) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttribTime("TypeTimestamp", qz_Time::from_unix_seconds(23));
  entry.AddAttribTime("TypeTime", qz_Time::from_unix_seconds(22));
  entry.AddAttribTime("TypeDate", qz_Time::from_unix_seconds(21));
  for (int code = TypeMBChar2K; code >= TypeMBChar32; --code) entry.AddAttribMBStr(type_name(code), "mb\n");
  for (int code = TypeChar2K; code >= TypeChar32; --code) entry.AddAttribStr(type_name(code), "");
  entry.AddAttribFloat8("TypeFloat", 2.5);
  entry.AddAttrib4("TypeSInt4", -2147483647 - 1);
  entry.AddAttrib4u("TypeUInt4", 4294967295U);
  entry.AddAttrib2("TypeSInt2", -32768);
  entry.AddAttrib2u("TypeUInt2", 65535);
  entry.AddAttrib1("TypeSInt1", -128);
  entry.AddAttrib1u("TypeUInt1", 255);
  entry.AddAttribBool("TypeBool", true);
  EXPECT_EQ(visited(entry), Texts({"bool TypeBool 1 true",
                                   "unsigned TypeUInt1 2 255",
                                   "signed TypeSInt1 3 -128",
                                   "unsigned TypeUInt2 4 65535",
                                   "signed TypeSInt2 5 -32768",
                                   "unsigned TypeUInt4 6 4294967295",
                                   "signed TypeSInt4 7 -2147483648",
                                   "float TypeFloat 8 2.500000",
                                   "text TypeChar32 9 ",
                                   "text TypeChar64 10 ",
                                   "text TypeChar128 11 ",
                                   "text TypeChar256 12 ",
                                   "text TypeChar1K 13 ",
                                   "text TypeChar2K 14 ",
                                   "text TypeMBChar32 15 mb\\n",
                                   "text TypeMBChar64 16 mb\\n",
                                   "text TypeMBChar128 17 mb\\n",
                                   "text TypeMBChar256 18 mb\\n",
                                   "text TypeMBChar1K 19 mb\\n",
                                   "text TypeMBChar2K 20 mb\\n",
                                   "time TypeDate 21 21",
                                   "time TypeTime 22 22",
                                   "time TypeTimestamp 23 23"}));
}

TEST_F(VisitAttributes, OwnAndGlobal_OwnComeFirst) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.SetComputerInfo("host");
  entry.AddAttrib4u("GlobalTypeUInt4", 1);
  entry.AddAttrib4u("TypeUInt4", 2);
  entry.AddAttrib4u("GlobalTypeUInt4", 3);
  entry.SetReasonCode(-4);
  EXPECT_EQ(visited(entry), Texts({"unsigned TypeUInt4 6 2", "text COMPUTER_NAME 16 host", "signed REASON_CODE 7 -4",
                                   "unsigned GlobalTypeUInt4 6 3"}));
}

TEST_F(VisitAttributes, OwnThatShadowsAGlobal_VisitedOnceAmongTheOwn) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.SetComputerInfo("host");
  entry.AddAttrib4u("Shadowed", 1);
  EXPECT_EQ(visited(entry), Texts({"unsigned Shadowed 6 1", "text COMPUTER_NAME 16 host"}));
}

TEST_F(VisitAttributes, NamesTheNewIdDoesNotKnow_ComeLastByName) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.AddAttribBool("TypeBool", false);
  entry.AddAttrib4("TypeSInt4", 2);
  entry.SetReasonCode(3);
  entry.SetEntryID(kPlainId);
  EXPECT_EQ(visited(entry), Texts({"signed REASON_CODE 7 3", "bool TypeBool 1 false", "signed TypeSInt4 7 2",
                                   "unsigned TypeUInt4 6 1"}));
}

TEST_F(VisitAttributes, NameThatTheNewIdTypesOtherwise_VisitedWithItsStoredType) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.SetEntryID(kOtherTypesId);
  EXPECT_EQ(visited(entry), Texts({"unsigned TypeUInt4 6 1"}));
}

TEST_F(VisitAttributes, AfterAFailedNewId_EverythingIsStillVisited) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.AddAttribBool("TypeBool", true);
  EXPECT_NE(thrown_by([&] { entry.SetEntryID(kUnknownId); }), "nothing");
  EXPECT_EQ(visited(entry), Texts({"bool TypeBool 1 true", "unsigned TypeUInt4 6 1"}));
}

TEST_F(VisitAttributes, DefinitionsCleared_OwnInOrderThenTheRestByName) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.SetReasonCode(3);
  entry.SetComputerInfo("host");
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.AddAttribBool("TypeBool", true);
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(visited(entry), Texts({"bool TypeBool 1 true", "unsigned TypeUInt4 6 1", "text COMPUTER_NAME 16 host",
                                   "signed REASON_CODE 7 3"}));
}

TEST_F(VisitAttributes, TimestampSet_VisitsItsTwoAttributes) {
  const TimeZone zone("Asia/Kathmandu");
  qz_LOG_LogEntry entry(kId, 0);
  entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930), true);
  EXPECT_EQ(visited(entry), Texts({"signed TIMEZONE_DIFFERENCE 5 345", "bool DAYLIGHT_SAVING_ACTIVE 1 false"}));
}

TEST_F(VisitAttributes, VisitorThrows_TheExceptionReachesTheCaller) {
  class Thrower : public Recorder {
    void VisitUnsigned(const char* name, qz_AttributeType, unsigned int) override { throw std::runtime_error(name); }
  };
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttribBool("TypeBool", true);
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.AddAttrib4("TypeSInt4", 2);
  Thrower thrower;
  std::string caught;
  try {
    entry.VisitAttributes(thrower);
  } catch (const std::runtime_error& error) {
    caught = error.what();
  }
  EXPECT_EQ(caught, "TypeUInt4");
  EXPECT_EQ(thrower.calls, Texts({"bool TypeBool 1 true"}));
}

TEST_F(VisitAttributes, EachAllocationFails_ThrowsMemoryAllocAndTheEntryStays) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib4u("TypeUInt4", 1);
  entry.SetReasonCode(3);
  class Counter : public Recorder {
    void VisitUnsigned(const char*, qz_AttributeType, unsigned int) override {}
    void VisitSigned(const char*, qz_AttributeType, int) override {}
  } counter;
  FailEveryAllocation([&] { entry.VisitAttributes(counter); });
  EXPECT_EQ(visited(entry), Texts({"unsigned TypeUInt4 6 1", "signed REASON_CODE 7 3"}));
}

}  // namespace
