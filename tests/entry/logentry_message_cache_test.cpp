#include <gtest/gtest.h>

#include <string>

#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;

// The cached readable message: the short form fills the cache with the empty text; a buffer call that finds it leaves
// the buffer alone.

class MessageCache : public EntryTest {
 protected:
  MessageCache() { qz_LOG_LogConfig::SetICUEnabled(false); }

  static void fill_cache(const qz_LOG_LogEntry& entry) { EXPECT_STREQ(entry.GetReadableMessage(false, 0), ""); }
  static bool is_cached(const qz_LOG_LogEntry& entry, bool use_default = false, unsigned selector_index = 0) {
    char buffer[64] = "before";
    const char* message = entry.GetReadableMessage(buffer, 63, use_default, selector_index);
    if (message == buffer) {
      EXPECT_STREQ(buffer, "text");
      return false;
    }
    EXPECT_STREQ(message, "");
    EXPECT_STREQ(buffer, "before");
    return true;
  }
};

struct Change {
  const char* what;
  void (*run)(qz_LOG_LogEntry& entry);
};

TEST_F(MessageCache, NewEntry_IsNotCached) {
  const qz_LOG_LogEntry entry(kId, 0);
  EXPECT_FALSE(is_cached(entry));
  EXPECT_FALSE(is_cached(entry)) << "a buffer call fills the cache";
}

TEST_F(MessageCache, ShortForm_CachesForItsArgumentsOnly) {
  const qz_LOG_LogEntry entry(kId, 0);
  fill_cache(entry);
  EXPECT_TRUE(is_cached(entry));
  EXPECT_FALSE(is_cached(entry, true));
  EXPECT_TRUE(is_cached(entry)) << "a buffer call with other arguments changes nothing";
  EXPECT_STREQ(entry.GetReadableMessage(true, 0), "");
  EXPECT_FALSE(is_cached(entry));
  EXPECT_TRUE(is_cached(entry, true));
}

TEST_F(MessageCache, ConversionToText_IsTheShortForm) {
  const qz_LOG_LogEntry entry(kId, 0);
  const std::string text = static_cast<const char*>(entry);
  EXPECT_EQ(text, "");
  EXPECT_TRUE(is_cached(entry));
  EXPECT_EQ(entry.GetReadableMessage(false, 0), text);
}

TEST_F(MessageCache, EveryChange_MakesItStale) {
  const Change changes[] = {
      {"SetEntryID", [](qz_LOG_LogEntry& e) { e.SetEntryID(kId); }},
      {"SetLogLevel", [](qz_LOG_LogEntry& e) { e.SetLogLevel(0); }},
      {"SetEntry", [](qz_LOG_LogEntry& e) { e.SetEntry(kId, 0, ""); }},
      {"SetTimestamp", [](qz_LOG_LogEntry& e) { e.SetTimestamp(e.GetTimestamp(true), true); }},
      {"AddAttribBool", [](qz_LOG_LogEntry& e) { e.AddAttribBool("TypeBool", false); }},
      {"AddAttrib1u", [](qz_LOG_LogEntry& e) { e.AddAttrib1u("TypeUInt1", 0); }},
      {"AddAttrib1", [](qz_LOG_LogEntry& e) { e.AddAttrib1("TypeSInt1", 0); }},
      {"AddAttrib2u", [](qz_LOG_LogEntry& e) { e.AddAttrib2u("TypeUInt2", 0); }},
      {"AddAttrib2", [](qz_LOG_LogEntry& e) { e.AddAttrib2("TypeSInt2", 0); }},
      {"AddAttrib4u", [](qz_LOG_LogEntry& e) { e.AddAttrib4u("TypeUInt4", 0); }},
      {"AddAttrib4u again", [](qz_LOG_LogEntry& e) { e.AddAttrib4u("TypeUInt4", 0); }},
      {"AddAttrib4", [](qz_LOG_LogEntry& e) { e.AddAttrib4("TypeSInt4", 0); }},
      {"AddAttribFloat8", [](qz_LOG_LogEntry& e) { e.AddAttribFloat8("TypeFloat", 0); }},
      {"AddAttribTime", [](qz_LOG_LogEntry& e) { e.AddAttribTime("TypeDate", qz_Time()); }},
      {"AddAttribStr", [](qz_LOG_LogEntry& e) { e.AddAttribStr("TypeChar32", ""); }},
      {"AddAttribMBStr", [](qz_LOG_LogEntry& e) { e.AddAttribMBStr("TypeMBChar32", ""); }},
      {"RemoveAttrib", [](qz_LOG_LogEntry& e) { e.RemoveAttrib("TypeUInt4"); }},
      {"ClearAttribs", [](qz_LOG_LogEntry& e) { e.ClearAttribs(); }},
      {"operator=", [](qz_LOG_LogEntry& e) { e = qz_LOG_LogEntry(kId, 0); }},
      {"operator= itself", [](qz_LOG_LogEntry& e) { e = static_cast<const qz_LOG_LogEntry&>(e); }},
  };
  qz_LOG_LogEntry entry(kId, 0);
  for (const Change& change : changes) {
    fill_cache(entry);
    EXPECT_TRUE(is_cached(entry));
    change.run(entry);
    EXPECT_FALSE(is_cached(entry)) << change.what;
  }
}

TEST_F(MessageCache, WhatChangesNothing_LeavesIt) {
  const Change changes[] = {
      {"SetLogLevel", [](qz_LOG_LogEntry& e) { e.SetLogLevel(10); }},
      {"AddAttrib4u", [](qz_LOG_LogEntry& e) { e.AddAttrib4u("TypeSInt4", 0); }},
      {"AddAttrib4u", [](qz_LOG_LogEntry& e) { e.AddAttrib4u("Nowhere", 0); }},
      {"AddAttribStr", [](qz_LOG_LogEntry& e) { e.AddAttribStr("TypeChar32", std::string(33, 'x').c_str()); }},
      {"AddAttribStr", [](qz_LOG_LogEntry& e) { e.AddAttribStr("TypeChar32", nullptr); }},
      {"RemoveAttrib", [](qz_LOG_LogEntry& e) { e.RemoveAttrib("TypeUInt4"); }},
      {"GetAttrib4u", [](qz_LOG_LogEntry& e) { e.GetAttrib4u("TypeUInt4"); }},
      {"GetTimestamp", [](qz_LOG_LogEntry& e) { e.GetTimestamp(false); }},
      {"FormatMessage", [](qz_LOG_LogEntry& e) { e.FormatMessage(true, 0); }},
      {"copying it", [](qz_LOG_LogEntry& e) { qz_LOG_LogEntry copy(e); }},
  };
  qz_LOG_LogEntry entry(kId, 0);
  fill_cache(entry);
  for (const Change& change : changes) {
    static_cast<void>(thrown_by([&] { change.run(entry); }));
    EXPECT_TRUE(is_cached(entry)) << change.what;
  }
}

TEST_F(MessageCache, Copied_TheCopyIsCachedWhenTheSourceIs) {
  qz_LOG_LogEntry source(kId, 0);
  EXPECT_FALSE(is_cached(qz_LOG_LogEntry(source)));
  fill_cache(source);
  EXPECT_TRUE(is_cached(qz_LOG_LogEntry(source)));
  EXPECT_FALSE(is_cached(qz_LOG_LogEntry(source), true));
  EXPECT_STREQ(source.GetReadableMessage(true, 0), "");
  EXPECT_TRUE(is_cached(qz_LOG_LogEntry(source), true));
}

TEST_F(MessageCache, CopiedAfterAskingForASelectorMessage_TheIndexIsNotCopied) {
  load({.tag = "2.5",
        .entries = {{.id = kId,
                     .message_text = "text",
                     .selector = "Own",
                     .attributes = {{"Own", TypeUInt4}},
                     .selector_messages = {{.index = 7, .value = 1, .id = "seven", .text = "text"}}}}});
  const qz_LOG_LogEntry source(kId, 0);
  EXPECT_STREQ(source.GetReadableMessage(false, 7), "");
  const qz_LOG_LogEntry copy(source);
  EXPECT_TRUE(is_cached(source, false, 7));
  EXPECT_FALSE(is_cached(copy, false, 7));
  EXPECT_TRUE(is_cached(copy, false, 0));
}

}  // namespace
