#include "tools/inspect/entry_names.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

DefinitionModel model_of(const std::vector<std::pair<std::uint32_t, std::string>>& entries) {
  DefinitionModel model;
  for (const auto& [id, message_id] : entries) {
    model.entries.emplace_back();
    model.entries.back().id = id;
    model.entries.back().message_id = message_id;
  }
  return model;
}

using Names = std::vector<std::string>;

TEST(MakeEntryNames, MessageIdThatIsAName_IsTheName) {
  EXPECT_EQ(make_entry_names(model_of({{1, "DISK_FULL"}})), Names{"DISK_FULL"});
}

TEST(MakeEntryNames, OtherMessageId_BecomesCapitalsAndUnderscores) {
  EXPECT_EQ(make_entry_names(model_of({{1, "disk.full-2"}})), Names{"DISK_FULL_2"});
}

TEST(MakeEntryNames, MessageIdThatSuggestsNone_GivesTheId) {
  EXPECT_EQ(make_entry_names(model_of({{1, ""}, {2, "2fast"}, {3, "\xFF"}, {4, std::string(65, 'a')}})),
            (Names{"ENTRY_1", "ENTRY_2", "ENTRY_3", "ENTRY_4"}));
}

TEST(MakeEntryNames, SameName_GetsTheIdBehindIt) {
  EXPECT_EQ(make_entry_names(model_of({{1, "a.b"}, {2, "a-b"}, {3, "A_B"}, {4, "A_B"}})),
            (Names{"A_B_1", "A_B_2", "A_B", "A_B_4"}));
  EXPECT_EQ(make_entry_names(model_of({{5, ""}, {6, "ENTRY_5"}, {7, "ENTRY_5_5"}})),
            (Names{"ENTRY_5_5_5", "ENTRY_5", "ENTRY_5_5"}));
}

TEST(MakeEntryNames, EntryWithAName_KeepsIt) {
  DefinitionModel model = model_of({{1, "disk.full"}});
  model.entries[0].name = "OWN";
  EXPECT_EQ(make_entry_names(model), Names{"OWN"});
}

}  // namespace
}  // namespace qzlog_compiler
