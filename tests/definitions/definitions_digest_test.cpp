#include "definitions/definitions_digest.h"

#include <gtest/gtest.h>

#include <string>

#include "definitions/ldf_load.h"
#include "foundation/sha256.h"
#include "qzlog/logentry.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qzlog {
namespace {

using namespace qz_test;

std::string short_digest(const std::string& bytes) {
  Sha256 hash;
  hash.add(bytes.data(), bytes.size());
  char text[kShortDigestDigits];
  write_short_digest(hash.digest(), text);
  return std::string(text, kShortDigestDigits);
}

class DefinitionsDigestTest : public SettingsTest {
 protected:
  void load(const std::string& bytes) { qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", bytes).c_str()); }
  void load_auxiliary(const std::string& bytes) {
    qz_LOG_LogConfig::SetAuxDefinitionPath(folder_.write("aux.ldf", bytes).c_str());
  }
  static const _qz_LOG_log_definition_tbl& table() { return *qz_LOG_LogConfig::GetDefinitionTable(); }

  const std::string small_ = LdfFile{.entries = numbered_entries(1, 3)}.bytes();
  const std::string large_ = LdfFile{.entries = numbered_entries(1, 3000)}.bytes();
  const std::string auxiliary_ = LdfFile{.entries = numbered_entries(5000, 5009)}.bytes();
};

TEST_F(DefinitionsDigestTest, NothingLoaded_Empty) { EXPECT_STREQ(table().definitions_digest(), ""); }

TEST_F(DefinitionsDigestTest, OneFile_ItsDigits) {
  load(small_);
  EXPECT_EQ(table().find_definitions_digest(), nullptr);
  EXPECT_EQ(table().definitions_digest(), short_digest(small_));
  EXPECT_EQ(table().find_definitions_digest(), table().definitions_digest());
  load(large_);
  EXPECT_EQ(table().definitions_digest(), short_digest(large_));
}

TEST_F(DefinitionsDigestTest, TwoFiles_BothJoinedByAPlus) {
  load(small_);
  EXPECT_EQ(table().definitions_digest(), short_digest(small_));
  load_auxiliary(auxiliary_);
  EXPECT_EQ(table().definitions_digest(), short_digest(small_) + '+' + short_digest(auxiliary_));
  load(small_);
  EXPECT_EQ(table().definitions_digest(), short_digest(small_));
}

TEST_F(DefinitionsDigestTest, DefinitionsCleared_EmptyAndTheFormerTextStays) {
  load(small_);
  const char* const text = table().definitions_digest();
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_STREQ(table().definitions_digest(), "");
  EXPECT_EQ(text, short_digest(small_));
  load(small_);
  EXPECT_EQ(static_cast<const void*>(table().definitions_digest()), static_cast<const void*>(text));
}

TEST_F(DefinitionsDigestTest, RecordsBeforeAndAfter_AreReadAsBefore) {
  load(large_);
  EXPECT_NE(table().find_entry(7), nullptr);
  EXPECT_EQ(table().definitions_digest(), short_digest(large_));
  for (const unsigned id : {8U, 2999U, 1500U}) EXPECT_NE(table().find_entry(id), nullptr);
}

TEST_F(DefinitionsDigestTest, EachAllocationFails_TheNextCallMakesIt) {
  load(LdfFile{.tag = "9.1", .entries = numbered_entries(1, 4)}.bytes());
  FailEveryAllocation([] { table().definitions_digest(); });
  EXPECT_EQ(std::string(table().definitions_digest()).size(), kShortDigestDigits);
}

}  // namespace
}  // namespace qzlog
