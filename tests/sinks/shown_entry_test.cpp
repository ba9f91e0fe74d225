#include "sinks/shown_entry.h"

#include <string_view>

#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;
using qzlog::EntryMarks;
using qzlog::KnownName;
using qzlog::Sensitivity;
using qzlog::shown_copy;

Sensitivity marks_of_test(const _qz_LOG_log_definition&, const KnownName* name) {
  const std::string_view text = name->text();
  if (text == "Hashed" || text == "HashedMb" || text == "HashedNumber") return Sensitivity::kHash;
  return text == "Dropped" || text == "DroppedNumber" ? Sensitivity::kDrop : Sensitivity::kKeep;
}

class ShownEntry : public SettingsTest {
 protected:
  ShownEntry() {
    const LdfFile file{.entries = {{.id = 1,
                                    .mask = 1,
                                    .message_text = "%s%Kept% %s%Hashed%",
                                    .attributes = {{"Kept", TypeMBChar32},
                                                   {"Hashed", TypeChar32},
                                                   {"HashedMb", TypeMBChar32},
                                                   {"HashedNumber", TypeUInt4},
                                                   {"Dropped", TypeMBChar32},
                                                   {"DroppedNumber", TypeFloat}}}}};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  }

  static qz_LOG_LogEntry full_entry() {
    qz_LOG_LogEntry entry(1, 5);
    entry.AddAttribMBStr("Kept", "abc");
    entry.AddAttribStr("Hashed", "abc");
    entry.AddAttribMBStr("HashedMb", "abc");
    entry.AddAttrib4u("HashedNumber", 7);
    entry.AddAttribMBStr("Dropped", "abc");
    entry.AddAttribFloat8("DroppedNumber", 7);
    return entry;
  }
};

TEST_F(ShownEntry, SensitiveAttributes_AreHashedOrDropped) {
  const qz_LOG_LogEntry entry = full_entry();
  const qz_LOG_LogEntry shown = shown_copy(entry, {nullptr, &marks_of_test});
  EXPECT_STREQ(shown.GetAttribMBStr("Kept"), "abc");
  EXPECT_STREQ(shown.GetAttribStr("Hashed"), "sha256:ba7816bf8f01cfea");
  EXPECT_STREQ(shown.GetAttribMBStr("HashedMb"), "sha256:ba7816bf8f01cfea");
  EXPECT_EQ(shown.FormatMessage(), "abc sha256:ba7816bf8f01cfea");
  EXPECT_EQ(shown.GetLogLevel(), 5U);
  for (const char* const name : {"HashedNumber", "Dropped", "DroppedNumber"}) {
    qz_AttributeType type = TypeUnknown;
    EXPECT_EQ(shown.CheckAttribute(name, type), 1) << name;
  }
  EXPECT_EQ(entry.ToJson(), full_entry().ToJson());
}

TEST_F(ShownEntry, NothingSensitive_IsTheSame) {
  EXPECT_EQ(shown_copy(full_entry(), EntryMarks()).ToJson(), full_entry().ToJson());
}

}  // namespace
