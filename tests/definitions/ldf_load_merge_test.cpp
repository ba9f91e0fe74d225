#include "tests/definitions/table_test.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

/// An auxiliary file over a standard one, both with the entry ID 1.
class LdfMerge : public TableTest {
 protected:
  void merge(LdfEntry std_entry, LdfEntry aux_entry) {
    std_entry.id = aux_entry.id = 1;
    set_std({.tag = "std", .entries = {std_entry}});
    set_aux({.tag = "aux", .entries = {aux_entry}});
  }
};

TEST_F(LdfMerge, AuxEntryOfItsOwn_Found) {
  set_std({.tag = "std", .entries = {{.id = 1}}});
  set_aux({.tag = "aux",
           .entries = {{.id = 2,
                        .word = 5,
                        .mask = 6,
                        .message_id = "ID",
                        .message_text = "text",
                        .selector = "s",
                        .attributes = {{"s", 2, "away"}},
                        .selector_messages = {{1, 2, "A", "a"}}}}});
  EXPECT_EQ(at(2).get_entry_word(), 5U);
  EXPECT_EQ(at(2).get_property_mask(), 6U);
  EXPECT_EQ(default_message(at(2)), "ID|text");
  EXPECT_EQ(selector_of(at(2)), "s");
  EXPECT_EQ(own_attributes(at(2)), Texts({"s:2>away"}));
  EXPECT_EQ(selector_messages(at(2)), Texts({"1=2 A|a"}));
  EXPECT_STREQ(at(2).get_version_tag(), "aux");
  EXPECT_STREQ(at(1).get_version_tag(), "std");
}

TEST_F(LdfMerge, AttributesAndSelectorMessages_AddedBehindTheStdOnes) {
  merge({.attributes = {{"a", 1, "r"}}, .selector_messages = {{1, 10, "A", "a"}, {2, 20, "B", "b"}}},
        {.attributes = {{"b", 2}, {"c", 3, "q"}}, .selector_messages = {{3, 30, "C", "c"}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>r", "b:2>", "c:3>q"}));
  EXPECT_EQ(selector_messages(at(1)), Texts({"1=10 A|a", "2=20 B|b", "3=30 C|c"}));
}

TEST_F(LdfMerge, PropertyMask_StdOneKeptUnlessZero) {
  merge({.mask = 5}, {.mask = 9});
  EXPECT_EQ(at(1).get_property_mask(), 5U);
  merge({.mask = 0}, {.mask = 9});
  EXPECT_EQ(at(1).get_property_mask(), 9U);
  merge({.mask = 5}, {.mask = 0});
  EXPECT_EQ(at(1).get_property_mask(), 5U);
}

TEST_F(LdfMerge, EntryWordAndVersionTag_ThoseOfTheAuxFile) {
  merge({.word = 5}, {.word = 0});
  EXPECT_EQ(at(1).get_entry_id(), 1U);
  EXPECT_EQ(at(1).get_entry_word(), 0U);
  EXPECT_STREQ(at(1).get_version_tag(), "aux");
}

TEST_F(LdfMerge, DefaultMessage_ReplacedOnlyByBothTexts) {
  const struct {
    const char* id;
    const char* text;
    const char* expected;
  } cases[] = {
      {"", "", "SID|stext"}, {"AID", "", "SID|stext"}, {"", "atext", "SID|stext"}, {"AID", "atext", "AID|atext"}};
  for (const auto& each : cases) {
    merge({.message_id = "SID", .message_text = "stext"}, {.message_id = each.id, .message_text = each.text});
    EXPECT_EQ(default_message(at(1)), each.expected) << each.id << "|" << each.text;
  }
}

TEST_F(LdfMerge, DefaultMessageOfAuxEntryOfItsOwn_UnsetUnlessBothTexts) {
  set_std({});
  set_aux({.entries = {{.id = 1, .message_id = "ID"},
                       {.id = 2, .message_text = "text"},
                       {.id = 3},
                       {.id = 4, .message_id = "ID", .message_text = "text"}}});
  EXPECT_EQ(default_message(at(1)), "(null)|(null)");
  EXPECT_EQ(default_message(at(2)), "(null)|(null)");
  EXPECT_EQ(default_message(at(3)), "(null)|(null)");
  EXPECT_EQ(default_message(at(4)), "ID|text");
}

TEST_F(LdfMerge, DefaultMessageOfStdEntry_SetEvenWhenEmpty) {
  set_std({.entries = {{.id = 1}, {.id = 2, .message_id = "ID"}}});
  EXPECT_EQ(default_message(at(1)), "|");
  EXPECT_EQ(default_message(at(2)), "ID|");
}

TEST_F(LdfMerge, RepeatedAttribute_Refused) {
  EXPECT_EQ(thrown_by([&] {
              merge({.attributes = {{"a", 1}}}, {.attributes = {{"b", 1}, {"a", 1}}});
            }),
            invalid_definition(already_exists("a")));
  EXPECT_EQ(thrown_by([&] {
              merge({}, {.attributes = {{"b", 1}, {"b", 1}}});
            }),
            invalid_definition(already_exists("b")));
  EXPECT_EQ(thrown_by([&] {
              merge({.attributes = {{"", 1}}}, {.attributes = {{"", 1}}});
            }),
            invalid_definition(already_exists("")));
}

TEST_F(LdfMerge, RepeatedStdSelectorThatTheAuxRecordDoesNotName_Refused) {
  EXPECT_EQ(thrown_by([&] {
              merge({.selector = "s", .attributes = {{"s", 1}}}, {.attributes = {{"s", 1}}});
            }),
            invalid_definition(already_exists("s")));
}

TEST_F(LdfMerge, AttributeNamedLikeAGlobalOne_Accepted) {
  set_std({.globals = {{"g", 1}}, .entries = {{.id = 1}}});
  set_aux({.entries = {{.id = 1, .attributes = {{"g", 2}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"g:2>"}));
}

// ---- the selector attribute ----

TEST_F(LdfMerge, SelectorOnlyInStd_Stays) {
  merge({.selector = "s", .attributes = {{"s", 1}}}, {.attributes = {{"a", 1}}});
  EXPECT_EQ(selector_of(at(1)), "s");
}

TEST_F(LdfMerge, SelectorOnlyInAux_Taken) {
  merge({.attributes = {{"a", 1}}}, {.selector = "s", .attributes = {{"s", 1}}});
  EXPECT_EQ(selector_of(at(1)), "s");
}

TEST_F(LdfMerge, SameSelectorNotRepeated_Stays) {
  merge({.selector = "s", .attributes = {{"s", 1}}}, {.selector = "s", .attributes = {{"a", 1}}});
  EXPECT_EQ(selector_of(at(1)), "s");
  EXPECT_EQ(own_attributes(at(1)), Texts({"s:1>", "a:1>"}));
}

TEST_F(LdfMerge, SameSelectorRepeated_AuxAttributeReplacesIt) {
  merge({.selector = "s", .attributes = {{"s", 1, "r"}, {"a", 1}}}, {.selector = "s", .attributes = {{"s", 2, "q"}}});
  EXPECT_EQ(selector_of(at(1)), "s");
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "s:2>q"}));
}

TEST_F(LdfMerge, OtherSelector_Conflict) {
  EXPECT_EQ(thrown_by([&] {
              merge({.selector = "s", .attributes = {{"s", 1}}}, {.selector = "t", .attributes = {{"t", 1}}});
            }),
            invalid_definition(kSelectorNameConflict));
  EXPECT_EQ(thrown_by([&] {
              merge({.selector = "s", .attributes = {{"s", 1}}}, {.selector = "t"});
            }),
            invalid_definition(kSelectorNameConflict));
}

TEST_F(LdfMerge, StdSelectorNameWithoutItsAttribute_NoConflict) {
  merge({.selector = "s"}, {.selector = "t", .attributes = {{"t", 1}}});
  EXPECT_EQ(selector_of(at(1)), "t");
}

TEST_F(LdfMerge, PlainStdAttributeRepeatedAsSelector_ReplacedAndSelector) {
  merge({.attributes = {{"s", 1}, {"a", 1}}}, {.selector = "s", .attributes = {{"s", 2}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "s:2>"}));
  EXPECT_EQ(selector_of(at(1)), "s");
}

TEST_F(LdfMerge, PlainStdAttributeNamedButNotRepeated_NoSelector) {
  merge({.attributes = {{"s", 1}}}, {.selector = "s", .attributes = {{"a", 1}}});
  EXPECT_EQ(selector_of(at(1)), "(none)");
}

// ---- selector messages ----

TEST_F(LdfMerge, SelectorMessageWithStdIndexOrValue_Conflict) {
  for (const LdfSelectorMessage& message :
       {LdfSelectorMessage{2, 90}, LdfSelectorMessage{9, 20}, LdfSelectorMessage{2, 20}, LdfSelectorMessage{1, 20}}) {
    EXPECT_EQ(thrown_by([&] {
                merge({.selector_messages = {{1, 10}, {2, 20}}}, {.selector_messages = {{8, 80}, message}});
              }),
              invalid_definition(kSelectorMessageConflict))
        << message.index << "=" << message.value;
  }
}

TEST_F(LdfMerge, SelectorMessageWhoseIndexIsAStdValue_NoConflict) {
  merge({.selector_messages = {{1, 10}}}, {.selector_messages = {{10, 1}}});
  EXPECT_EQ(selector_messages(at(1)), Texts({"1=10 |", "10=1 |"}));
}

TEST_F(LdfMerge, SelectorMessagesAlikeInTheAuxRecord_BothKept) {
  merge({.selector_messages = {{1, 10}}}, {.selector_messages = {{2, 20}, {2, 20}}});
  EXPECT_EQ(selector_messages(at(1)), Texts({"1=10 |", "2=20 |", "2=20 |"}));
}

TEST_F(LdfMerge, SelectorMessagesTogether256_ListEmpty) {
  LdfEntry std_entry;
  LdfEntry aux_entry;
  for (unsigned i = 0; i < 200; ++i) std_entry.selector_messages.push_back({i, i, "ID", "text"});
  for (unsigned i = 200; i < 256; ++i) aux_entry.selector_messages.push_back({i, i, "ID", "text"});
  merge(std_entry, aux_entry);
  EXPECT_EQ(at(1).get_selector_msg_count(), 0);
}

TEST_F(LdfMerge, AttributesTogether257_LastOneLeft) {
  LdfEntry std_entry{.selector = "a0"};
  LdfEntry aux_entry;
  for (unsigned i = 0; i < 200; ++i) std_entry.attributes.push_back({"a" + std::to_string(i), 1});
  for (unsigned i = 200; i < 257; ++i) aux_entry.attributes.push_back({"a" + std::to_string(i), 1});
  merge(std_entry, aux_entry);
  EXPECT_EQ(own_attributes(at(1)), Texts({"a256:1>"}));
  EXPECT_EQ(selector_of(at(1)), "(none)");
}

// ---- the entry map of an auxiliary file ----

TEST_F(LdfMerge, OwnIdTwice_SecondRecordMergedIntoTheFirst) {
  set_std({});
  set_aux({.entries = {{.id = 1,
                        .word = 1,
                        .mask = 2,
                        .message_id = "A",
                        .message_text = "a",
                        .attributes = {{"a", 1}},
                        .selector_messages = {{1, 10}}},
                       {.id = 1,
                        .word = 3,
                        .mask = 4,
                        .message_id = "B",
                        .message_text = "b",
                        .attributes = {{"b", 2}},
                        .selector_messages = {{2, 20}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "b:2>"}));
  EXPECT_EQ(selector_messages(at(1)), Texts({"1=10 |", "2=20 |"}));
  EXPECT_EQ(at(1).get_entry_word(), 3U);
  EXPECT_EQ(at(1).get_property_mask(), 2U);
  EXPECT_EQ(default_message(at(1)), "B|b");
}

TEST_F(LdfMerge, OwnIdTwiceInConflict_Refused) {
  set_std({});
  EXPECT_EQ(thrown_by([&] {
              set_aux({.entries = {{.id = 1, .attributes = {{"a", 1}}}, {.id = 1, .attributes = {{"a", 1}}}}});
            }),
            invalid_definition(already_exists("a")));
  set_std({});
  EXPECT_EQ(
      thrown_by([&] {
        set_aux({.entries = {{.id = 1, .selector_messages = {{1, 10}}}, {.id = 1, .selector_messages = {{1, 11}}}}});
      }),
      invalid_definition(kSelectorMessageConflict));
}

TEST_F(LdfMerge, OwnIdTwiceAtOneRecord_MergedIntoItself) {
  set_std({});
  set_aux({.entries = {{.id = 1, .word = 5, .selector = "s", .attributes = {{"s", 1}}}}, .map = {{{1, 0}, {1, 0}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"s:1>"}));
  EXPECT_EQ(selector_of(at(1)), "s");
}

TEST_F(LdfMerge, StdIdTwiceInTheAuxMap_BothMerged) {
  set_std({.entries = {{.id = 1, .attributes = {{"a", 1}}}}});
  set_aux({.entries = {{.id = 1, .attributes = {{"b", 2}}}, {.id = 1, .attributes = {{"c", 3}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "b:2>", "c:3>"}));
}

TEST_F(LdfMerge, StoredIdDiffers_KnownIdFailsTheLoadAnotherItsLookup) {
  set_std({.entries = {{.id = 1}}});
  set_aux({.entries = {{.id = 5}}, .map = {{{2, 0}}}});
  EXPECT_EQ(thrown_by([&] { table_.find_entry(2); }), invalid_definition(kCorrupted));
  EXPECT_EQ(thrown_by([&] { set_aux({.entries = {{.id = 5}}, .map = {{{1, 0}}}}); }), invalid_definition(kCorrupted));
}

TEST_F(LdfMerge, GlobalAttributesOfTheAuxFile_JoinAndReplace) {
  set_std({.globals = {{"a", 1}, {"b", 2}}});
  set_aux({.globals = {{"c", 3}, {"a", 4}}});
  EXPECT_EQ(global_attributes(), Texts({"b:2", "c:3", "a:4"}));
}

TEST_F(LdfMerge, DefinitionLookedUpBefore_ExtendedInPlace) {
  set_std({.entries = {{.id = 1, .attributes = {{"a", 1}}}}});
  const auto held = table_.acquire_entry(1);
  set_aux({.tag = "aux", .entries = {{.id = 1, .attributes = {{"b", 2}}}}});
  EXPECT_EQ(held.get(), table_.find_entry(1));
  EXPECT_EQ(own_attributes(*held.get()), Texts({"a:1>", "b:2>"}));
}

TEST_F(LdfMerge, StdFileGivenAsItsOwnAuxFile_RepeatsItsAttributes) {
  const LdfFile file{.entries = {{.id = 1, .attributes = {{"a", 1}}}}};
  set_std(file);
  EXPECT_EQ(thrown_by([&] { set_aux(file); }), invalid_definition(already_exists("a")));
}

// ---- a second auxiliary file ----

TEST_F(LdfMerge, SecondAuxFile_ItsRecordsMergedOnTop) {
  set_std({.entries = {{.id = 1, .attributes = {{"a", 1}}}}});
  set_aux({.tag = "aux1", .entries = {{.id = 1, .attributes = {{"b", 2}}}, {.id = 2, .attributes = {{"x", 1}}}}});
  set_aux({.tag = "aux2", .entries = {{.id = 1, .attributes = {{"c", 3}}}, {.id = 3, .attributes = {{"y", 1}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "b:2>", "c:3>"}));
  EXPECT_STREQ(at(1).get_version_tag(), "aux2");
  EXPECT_EQ(own_attributes(at(3)), Texts({"y:1>"}));
}

TEST_F(LdfMerge, SecondAuxFile_DefinitionsOfTheFirstReadBeforeStay) {
  set_std({});
  set_aux({.tag = "aux1", .entries = {{.id = 2, .attributes = {{"x", 1}}}}});
  at(2);
  set_aux({.tag = "aux2"});
  EXPECT_EQ(own_attributes(at(2)), Texts({"x:1>"}));
  EXPECT_STREQ(at(2).get_version_tag(), "aux1");
}

TEST_F(LdfMerge, SecondAuxFile_IdsOfTheFirstLookedForInTheSecond) {
  set_std({});
  set_aux({.entries = {{.id = 2, .word = 20}, {.id = 3, .word = 30}}});
  // Records of the same sizes at the same places: 2 where the first file has it, 4 where it has 3.
  set_aux({.entries = {{.id = 2, .word = 21}, {.id = 4, .word = 41}}, .map = {{{5, 0}, {4, 1}}}});
  EXPECT_EQ(at(2).get_entry_word(), 21U);
  EXPECT_EQ(thrown_by([&] { table_.find_entry(3); }), invalid_definition(kCorrupted));
  EXPECT_EQ(at(4).get_entry_word(), 41U);
}

TEST_F(LdfMerge, SecondAuxFileForAnUnreadIdOfTheFirst_LookedForInTheSecondWhileLoading) {
  set_std({});
  set_aux({.entries = {{.id = 2, .selector = "s", .attributes = {{"s", 1}}}}});
  // The first file's place holds the second file's record too, so that record is read, then merged into itself.
  set_aux({.entries = {{.id = 2, .selector = "s", .attributes = {{"s", 2}}}}});
  EXPECT_EQ(own_attributes(at(2)), Texts({"s:2>"}));
}

// ---- failing auxiliary loads ----

TEST_F(LdfMerge, AuxFileMissingOrWithoutHeader_EverythingStays) {
  set_std({.tag = "std", .entries = {{.id = 1, .word = 10}}});
  set_aux({.tag = "aux", .entries = {{.id = 2, .word = 20}}});
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_aux_definition_file_path("/no/such/file"); }),
            invalid_definition("<QZX_logging_invalid_definition> Unable to access definition file \"/no/such/file\"."));
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_aux_definition_file_path("/dev/null"); }),
            invalid_definition(kUnreadable));
  EXPECT_EQ(at(1).get_entry_word(), 10U);
  EXPECT_EQ(at(2).get_entry_word(), 20U);
  EXPECT_STREQ(at(2).get_version_tag(), "aux");
}

TEST_F(LdfMerge, AuxMapCutShort_NoAuxFileLeftButMergedRecordsStay) {
  set_std({.entries = {{.id = 1, .attributes = {{"a", 1}}}}});
  const LdfImage aux =
      LdfFile{.entries = {{.id = 1, .attributes = {{"b", 2}}}, {.id = 2}, {.id = 3}}, .region_order = "rgm"}.image();
  EXPECT_EQ(thrown_by([&] { set_aux_bytes(truncated(aux.bytes, aux.bytes.size() - 1)); }),
            invalid_definition(kUnreadable));
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "b:2>"}));
  EXPECT_EQ(table_.find_entry(2), nullptr);
  EXPECT_EQ(table_.find_entry(3), nullptr);
}

TEST_F(LdfMerge, AuxMapCutShort_FirstAuxFileIsLostToo) {
  set_std({});
  set_aux({.entries = {{.id = 2}, {.id = 3}}});
  at(2);
  const LdfImage aux = LdfFile{.entries = {{.id = 4}}, .region_order = "rgm"}.image();
  EXPECT_EQ(thrown_by([&] { set_aux_bytes(truncated(aux.bytes, aux.bytes.size() - 1)); }),
            invalid_definition(kUnreadable));
  at(2);
  EXPECT_EQ(table_.find_entry(3), nullptr);
}

TEST_F(LdfMerge, MergeFailing_AuxFileAndWhatWasReadStay) {
  set_std({.entries = {{.id = 1, .word = 10, .attributes = {{"a", 1}}}, {.id = 2, .word = 20}}});
  EXPECT_EQ(
      thrown_by([&] {
        set_aux(
            {.entries = {{.id = 5, .word = 50}, {.id = 1, .word = 11, .attributes = {{"b", 2}, {"a", 1}}}, {.id = 6}}});
      }),
      invalid_definition(already_exists("a")));
  EXPECT_EQ(at(5).get_entry_word(), 50U);
  EXPECT_EQ(table_.find_entry(6), nullptr);
  // Merged up to the failure.
  EXPECT_EQ(own_attributes(at(1)), Texts({"a:1>", "b:2>"}));
  EXPECT_EQ(at(1).get_entry_word(), 10U);
  EXPECT_EQ(at(2).get_entry_word(), 20U);
}

TEST_F(LdfMerge, GlobalAttributesCutShort_ReadOnesAndTagOfTheFailedFileStay) {
  set_std({});
  set_aux({.tag = "aux1", .entries = {{.id = 2}}});
  const LdfImage broken = LdfFile{.tag = "aux2", .globals = {{"a", 1}, {"b", 1}}}.image();
  EXPECT_EQ(thrown_by([&] { set_aux_bytes(truncated(broken.bytes, broken.bytes.size() - 1)); }),
            invalid_definition(kUnreadable));
  EXPECT_EQ(global_attributes(), Texts({"a:1"}));
  EXPECT_STREQ(at(2).get_version_tag(), "aux2");
}

}  // namespace
