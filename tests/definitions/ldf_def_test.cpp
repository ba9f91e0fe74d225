#include "definitions/ldf_def.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "foundation/hashing.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;
using qz_test::Texts;
using qz_test::thrown;
using qz_test::thrown_by;

using Definition = _qz_LOG_log_definition;

static_assert(!std::is_copy_constructible_v<Definition> && !std::is_copy_assignable_v<Definition>);
static_assert(!std::is_copy_constructible_v<_qz_LOG_attribute_entry>);
static_assert(!std::is_copy_constructible_v<_qz_LOG_selector_message>);
static_assert(!std::is_polymorphic_v<Definition> && !std::is_polymorphic_v<_qz_LOG_attribute_entry> &&
              !std::is_polymorphic_v<_qz_LOG_selector_message>);

class LdfDef : public testing::Test {
 protected:
  LdfDef() { Definition::clear_global_attr_info(); }
  ~LdfDef() override { Definition::clear_global_attr_info(); }

  /// "name:type" or "name:type>redirection" of the own attributes, in order.
  Texts own() const {
    Texts texts;
    for (unsigned i = 0; i < definition_.get_attr_count(); ++i) {
      const char* name = nullptr;
      const char* redirection_name = nullptr;
      unsigned char type = 0;
      definition_.get_attr_info_by_index(static_cast<unsigned char>(i), name, type, redirection_name);
      texts.push_back(std::string(name) + ":" + std::to_string(type));
      if (redirection_name != nullptr) texts.back() += ">" + std::string(redirection_name);
    }
    return texts;
  }

  static Texts global() {
    Texts texts;
    for (unsigned i = 0; i < Definition::n_global_attr_entries; ++i) {
      const char* name = nullptr;
      unsigned char type = 0;
      Definition::get_global_attr_info_by_index(static_cast<unsigned char>(i), name, type);
      texts.push_back(std::string(name) + ":" + std::to_string(type));
    }
    return texts;
  }

  std::string selector() const {
    const auto* const attribute = definition_.get_selector_attribute();
    return attribute == nullptr ? "(none)" : attribute->get_name();
  }

  void add_numbered(unsigned first, unsigned last) {
    for (unsigned i = first; i <= last; ++i)
      definition_.add_attr_info(("a" + std::to_string(i)).c_str(), 1, false, "r");
  }

  Definition definition_;
};

// ---- the attribute entry and the selector message ----

TEST_F(LdfDef, AttributeEntry_CopiesItsTexts) {
  char name[] = "user";
  char redirection_name[] = "account";
  const _qz_LOG_attribute_entry entry(name, redirection_name, 15);
  name[0] = redirection_name[0] = 'X';
  EXPECT_STREQ(entry.get_name(), "user");
  EXPECT_STREQ(entry.get_redirection_name(), "account");
  EXPECT_EQ(entry.get_type(), 15);
  EXPECT_EQ(entry.get_name_hash(), my_hashcode("user"));
}

TEST_F(LdfDef, AttributeEntryRedirectionNull_StaysNullButEmptyStaysEmpty) {
  EXPECT_EQ(_qz_LOG_attribute_entry("a", nullptr, 1).get_redirection_name(), nullptr);
  EXPECT_STREQ(_qz_LOG_attribute_entry("a", "", 1).get_redirection_name(), "");
}

TEST_F(LdfDef, AttributeEntrySetName_ReplacesNameAndHash) {
  _qz_LOG_attribute_entry entry("former", nullptr, 1);
  entry.set_name("a name of more than fifteen characters");
  EXPECT_STREQ(entry.get_name(), "a name of more than fifteen characters");
  EXPECT_EQ(entry.get_name_hash(), my_hashcode("a name of more than fifteen characters"));
  entry.set_name("");
  EXPECT_EQ(entry.get_name_hash(), 0U);
}

TEST_F(LdfDef, AttributeEntrySetRedirectionName_Replaces) {
  _qz_LOG_attribute_entry entry("a", nullptr, 1);
  entry.set_redirection_name("first");
  entry.set_redirection_name("second");
  EXPECT_STREQ(entry.get_redirection_name(), "second");
}

TEST_F(LdfDef, SelectorMessage_KeepsNumbersAndCopiesTexts) {
  char id[] = "MSG";
  char text[] = "text";
  const _qz_LOG_selector_message message(0xFFFFFFFF, 0x80000000, id, text);
  id[0] = text[0] = 'X';
  EXPECT_EQ(message.get_index(), 0xFFFFFFFFU);
  EXPECT_EQ(message.get_value(), 0x80000000U);
  EXPECT_STREQ(message.get_message_id(), "MSG");
  EXPECT_STREQ(message.get_message_text(), "text");
}

// ---- a definition ----

TEST_F(LdfDef, New_EveryNumberZeroAndEveryPointerNull) {
  EXPECT_EQ(definition_.get_entry_id(), 0U);
  EXPECT_EQ(definition_.get_entry_word(), 0U);
  EXPECT_EQ(definition_.get_property_mask(), 0U);
  EXPECT_STREQ(definition_.get_version_tag(), "");
  EXPECT_EQ(definition_.get_default_msg_id(), nullptr);
  EXPECT_EQ(definition_.get_default_msg_text(), nullptr);
  EXPECT_EQ(definition_.get_attr_count(), 0);
  EXPECT_EQ(definition_.get_selector_msg_count(), 0);
  EXPECT_EQ(definition_.get_selector_attribute(), nullptr);
}

TEST_F(LdfDef, GlobalList_StartsEmpty) {
  EXPECT_EQ(Definition::p_global_attr_entries, nullptr);
  EXPECT_EQ(Definition::n_global_attr_entries, 0);
}

TEST_F(LdfDef, SetDefaultMessage_ReplacesEachText) {
  definition_.set_default_msg_id("first");
  definition_.set_default_msg_id("second");
  definition_.set_default_msg_text("text");
  definition_.set_default_msg_text("");
  EXPECT_STREQ(definition_.get_default_msg_id(), "second");
  EXPECT_STREQ(definition_.get_default_msg_text(), "");
}

TEST_F(LdfDef, AddAttribute_AppendedInOrder) {
  definition_.add_attr_info("b", 1, false, nullptr);
  definition_.add_attr_info("a", 255, false, "other");
  definition_.add_attr_info("", 0, false, "");
  EXPECT_EQ(own(), Texts({"b:1", "a:255>other", ":0>"}));
  EXPECT_EQ(selector(), "(none)");
}

TEST_F(LdfDef, AddAttributeTwice_OneWithTheLaterTypeAtTheLastPosition) {
  definition_.add_attr_info("a", 1, false, "first");
  definition_.add_attr_info("b", 2, false, nullptr);
  definition_.add_attr_info("a", 3, false, nullptr);
  EXPECT_EQ(own(), Texts({"b:2", "a:3"}));
}

TEST_F(LdfDef, AddSelectorThenPlain_NoSelectorLeft) {
  definition_.add_attr_info("a", 1, true, nullptr);
  EXPECT_EQ(selector(), "a");
  definition_.add_attr_info("a", 1, false, nullptr);
  EXPECT_EQ(selector(), "(none)");
}

TEST_F(LdfDef, AddSecondSelector_LaterOneCounts) {
  definition_.add_attr_info("a", 1, true, nullptr);
  definition_.add_attr_info("b", 1, true, nullptr);
  EXPECT_EQ(selector(), "b");
  definition_.add_attr_info("a", 2, false, nullptr);
  EXPECT_EQ(selector(), "b");
}

TEST_F(LdfDef, AddAttributeUnderItsOwnName_NameSurvives) {
  definition_.add_attr_info("a name that is not short", 1, false, nullptr);
  definition_.add_attr_info(definition_.get_attr_info_by_name("a name that is not short")->get_name(), 2, false,
                            nullptr);
  EXPECT_EQ(own(), Texts({"a name that is not short:2"}));
}

TEST_F(LdfDef, SetSelectorAttribute_OwnAttributeOfThatNameOnly) {
  Definition::add_global_attr_info("global", 1);
  definition_.add_attr_info("a", 1, false, nullptr);
  definition_.add_attr_info("", 1, false, nullptr);
  definition_.set_selector_attribute("global");
  EXPECT_EQ(selector(), "(none)");
  definition_.set_selector_attribute("a");
  EXPECT_EQ(selector(), "a");
  definition_.set_selector_attribute("unknown");
  EXPECT_EQ(selector(), "a");
  definition_.set_selector_attribute("");
  EXPECT_EQ(selector(), "");
}

// ---- lookups ----

TEST_F(LdfDef, LookUpName_OwnAttributeBeforeGlobalOne) {
  Definition::add_global_attr_info("a", 2);
  Definition::add_global_attr_info("g", 3);
  definition_.add_attr_info("a", 1, false, "own");
  unsigned char type = 0;
  const char* redirection_name = "former";
  EXPECT_TRUE(definition_.get_attr_info_by_name("a", type, redirection_name));
  EXPECT_EQ(type, 1);
  EXPECT_STREQ(redirection_name, "own");
  EXPECT_TRUE(definition_.get_attr_info_by_name("g", type, redirection_name));
  EXPECT_EQ(type, 3);
  EXPECT_EQ(redirection_name, nullptr);
  EXPECT_EQ(definition_.get_attr_info_by_name("g"), Definition::p_global_attr_entries[1]);
}

TEST_F(LdfDef, LookUpUnknownName_FalseAndNothingChanged) {
  definition_.add_attr_info("a", 1, false, nullptr);
  unsigned char type = 77;
  const char* redirection_name = "former";
  EXPECT_FALSE(definition_.get_attr_info_by_name("A", type, redirection_name));
  EXPECT_EQ(type, 77);
  EXPECT_STREQ(redirection_name, "former");
  EXPECT_EQ(definition_.get_attr_info_by_name("A"), nullptr);
  EXPECT_FALSE(Definition::get_global_attr_info_by_name("a", type));
  EXPECT_EQ(type, 77);
}

TEST_F(LdfDef, LookUpNameWithEqualHash_NamesDecide) {
  // Of a name of 16 characters only every other one is hashed.
  ASSERT_EQ(my_hashcode("aXaXaXaXaXaXaXaX"), my_hashcode("aYaYaYaYaYaYaYaY"));
  definition_.add_attr_info("aXaXaXaXaXaXaXaX", 1, false, nullptr);
  EXPECT_EQ(definition_.get_attr_info_by_name("aYaYaYaYaYaYaYaY"), nullptr);
  definition_.add_attr_info("aYaYaYaYaYaYaYaY", 2, false, nullptr);
  EXPECT_EQ(definition_.get_attr_info_by_name("aYaYaYaYaYaYaYaY")->get_type(), 2);
  EXPECT_EQ(definition_.get_attr_info_by_name("aXaXaXaXaXaXaXaX")->get_type(), 1);
  EXPECT_EQ(definition_.get_attr_count(), 2);
}

TEST_F(LdfDef, LookUpAfterRename_NewNameOnly) {
  definition_.add_attr_info("former", 1, false, nullptr);
  definition_.get_attr_info_by_name("former")->set_name("later");
  EXPECT_EQ(definition_.get_attr_info_by_name("former"), nullptr);
  EXPECT_NE(definition_.get_attr_info_by_name("later"), nullptr);
}

TEST_F(LdfDef, OwnIndexAtCount_ThrowsInternalError) {
  definition_.add_attr_info("a", 1, false, nullptr);
  const char* name = nullptr;
  const char* redirection_name = nullptr;
  unsigned char type = 0;
  for (const unsigned char index : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{255}}) {
    EXPECT_EQ(thrown_by([&] { definition_.get_attr_info_by_index(index, name, type, redirection_name); }),
              thrown<QZX_logging_internal_error>("_qz_LOG_log_definition::get_attr_info_by_index()"));
  }
  definition_.clear_attr_info();
  EXPECT_EQ(thrown_by([&] { definition_.get_attr_info_by_index(0, name, type, redirection_name); }),
            thrown<QZX_logging_internal_error>("_qz_LOG_log_definition::get_attr_info_by_index()"));
}

TEST_F(LdfDef, GlobalIndexAtCount_ThrowsIndexOutOfBound) {
  const char* name = nullptr;
  unsigned char type = 0;
  const auto thrown_at = [&](unsigned char index) {
    return thrown_by([&] { Definition::get_global_attr_info_by_index(index, name, type); });
  };
  const std::string out_of_bound =
      thrown<QZX_logging_index_out_of_bound>("_qz_LOG_log_definition::get_global_attr_info_by_index()");
  EXPECT_EQ(thrown_at(0), out_of_bound);
  Definition::add_global_attr_info("a", 1);
  EXPECT_EQ(thrown_at(Definition::n_global_attr_entries), out_of_bound);
  EXPECT_EQ(thrown_at(255), out_of_bound);
}

TEST_F(LdfDef, SelectorMessageByIndex_StoredIndexNotPosition) {
  definition_.add_selector_message(9, 90, "ID9", "nine");
  definition_.add_selector_message(5, 50, "ID5", "five");
  definition_.add_selector_message(5, 51, "ID5b", "five again");
  EXPECT_STREQ(definition_.get_selector_msg_by_index(5)->get_message_text(), "five");
  EXPECT_STREQ(definition_.get_selector_msg_by_index(9)->get_message_text(), "nine");
  EXPECT_EQ(definition_.get_selector_msg_by_index(0), nullptr);
  EXPECT_EQ(definition_.get_selector_msg_by_index(1), nullptr);
  EXPECT_EQ(definition_.get_selector_msg_by_index(50), nullptr);
}

TEST_F(LdfDef, SelectorMessageByValue_FirstAddedWins) {
  definition_.add_selector_message(1, 50, "ID1", "one");
  definition_.add_selector_message(2, 50, "ID2", "two");
  EXPECT_STREQ(definition_.get_selector_msg_by_value(50)->get_message_text(), "one");
  EXPECT_EQ(definition_.get_selector_msg_by_value(1), nullptr);
}

// ---- removing ----

TEST_F(LdfDef, RemoveOwnAttribute_LaterOnesMoveForward) {
  for (const char* name : {"a", "b", "c", "d"}) definition_.add_attr_info(name, 1, false, nullptr);
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("b")));
  EXPECT_EQ(own(), Texts({"a:1", "c:1", "d:1"}));
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("d")));
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("a")));
  EXPECT_EQ(own(), Texts({"c:1"}));
  EXPECT_FALSE(definition_.remove_attr_by_ptr(nullptr));
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("c")));
  EXPECT_EQ(own(), Texts());
  definition_.add_attr_info("e", 5, false, nullptr);
  EXPECT_EQ(own(), Texts({"e:5"}));
}

TEST_F(LdfDef, RemoveSelectorAttribute_NoSelectorLeft) {
  definition_.add_attr_info("a", 1, true, nullptr);
  definition_.add_attr_info("b", 1, false, nullptr);
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("b")));
  EXPECT_EQ(selector(), "a");
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("a")));
  EXPECT_EQ(selector(), "(none)");
}

TEST_F(LdfDef, RemoveGlobalAttribute_ThroughAnyDefinition) {
  Definition::add_global_attr_info("g", 1);
  Definition::add_global_attr_info("h", 2);
  definition_.add_attr_info("a", 1, false, nullptr);
  EXPECT_TRUE(definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("g")));
  EXPECT_EQ(global(), Texts({"h:2"}));
  EXPECT_EQ(own(), Texts({"a:1"}));
}

TEST_F(LdfDef, RemovePointerOfNeitherList_FalseAndNothingChanged) {
  Definition::add_global_attr_info("g", 1);
  definition_.add_attr_info("a", 1, true, nullptr);
  _qz_LOG_attribute_entry foreign("a", nullptr, 1);
  EXPECT_FALSE(definition_.remove_attr_by_ptr(&foreign));
  EXPECT_FALSE(definition_.remove_attr_by_ptr(nullptr));
  Definition other;
  EXPECT_FALSE(other.remove_attr_by_ptr(definition_.get_attr_info_by_name("a")));
  EXPECT_EQ(own(), Texts({"a:1"}));
  EXPECT_EQ(global(), Texts({"g:1"}));
  EXPECT_EQ(selector(), "a");
}

TEST_F(LdfDef, RemoveFromEmptyLists_False) {
  _qz_LOG_attribute_entry foreign("a", nullptr, 1);
  EXPECT_FALSE(definition_.remove_attr_by_ptr(&foreign));
  EXPECT_FALSE(definition_.remove_attr_by_ptr(nullptr));
}

TEST_F(LdfDef, ClearAttributes_BothListsEmptyAndTheRestKept) {
  definition_.set_default_msg_id("ID");
  definition_.set_default_msg_text("text");
  definition_.add_attr_info("a", 1, false, nullptr);
  definition_.add_selector_message(1, 1, "ID", "text");
  definition_.clear_attr_info();
  EXPECT_EQ(definition_.get_attr_count(), 0);
  EXPECT_EQ(definition_.get_selector_msg_count(), 0);
  EXPECT_EQ(definition_.get_attr_info_by_name("a"), nullptr);
  EXPECT_EQ(definition_.get_selector_msg_by_index(1), nullptr);
  EXPECT_STREQ(definition_.get_default_msg_id(), "ID");
  EXPECT_STREQ(definition_.get_default_msg_text(), "text");
  definition_.clear_attr_info();
  definition_.add_attr_info("b", 2, true, nullptr);
  definition_.add_selector_message(2, 2, "ID", "text");
  EXPECT_EQ(own(), Texts({"b:2"}));
  EXPECT_EQ(selector(), "b");
  EXPECT_EQ(definition_.get_selector_msg_count(), 1);
}

TEST_F(LdfDef, ClearAttributes_LeavesTheSelectorPointerToBeSetAgain) {
  definition_.add_attr_info("a", 1, true, nullptr);
  const auto* const former = definition_.get_selector_attribute();
  definition_.clear_attr_info();
  EXPECT_EQ(definition_.get_selector_attribute(), former);
  definition_.add_attr_info("b", 1, false, nullptr);
  definition_.set_selector_attribute("b");
  EXPECT_EQ(selector(), "b");
}

// ---- global attributes ----

TEST_F(LdfDef, AddGlobalAttributeTwice_LaterTypeAtTheLastPosition) {
  Definition::add_global_attr_info("a", 1);
  Definition::add_global_attr_info("b", 2);
  Definition::add_global_attr_info("a", 3);
  EXPECT_EQ(global(), Texts({"b:2", "a:3"}));
  EXPECT_EQ(Definition::get_global_attr_count(), 2);
  unsigned char type = 0;
  EXPECT_TRUE(Definition::get_global_attr_info_by_name("a", type));
  EXPECT_EQ(type, 3);
}

TEST_F(LdfDef, ClearGlobalAttributes_NamesThatWereOnlyGlobalAreUnknown) {
  Definition::add_global_attr_info("a", 1);
  Definition::add_global_attr_info("b", 2);
  definition_.add_attr_info("a", 3, false, nullptr);
  Definition::clear_global_attr_info();
  EXPECT_EQ(Definition::n_global_attr_entries, 0);
  EXPECT_EQ(definition_.get_attr_info_by_name("b"), nullptr);
  EXPECT_EQ(definition_.get_attr_info_by_name("a")->get_type(), 3);
  Definition::clear_global_attr_info();
  Definition::add_global_attr_info("c", 4);
  EXPECT_EQ(global(), Texts({"c:4"}));
}

TEST_F(LdfDef, GlobalAttributes_SharedByAllDefinitions) {
  const Definition other;
  Definition::add_global_attr_info("a", 1);
  EXPECT_EQ(other.get_attr_info_by_name("a"), definition_.get_attr_info_by_name("a"));
  EXPECT_NE(other.get_attr_info_by_name("a"), nullptr);
}

// ---- counts of 8 bits ----

TEST_F(LdfDef, OwnAttributes_255FitAndThe256thEmptiesTheList) {
  add_numbered(1, 254);
  definition_.add_attr_info("a255", 1, true, nullptr);
  EXPECT_EQ(definition_.get_attr_count(), 255);
  EXPECT_NE(definition_.get_attr_info_by_name("a1"), nullptr);
  EXPECT_EQ(selector(), "a255");
  definition_.add_attr_info("a256", 1, true, nullptr);
  EXPECT_EQ(definition_.get_attr_count(), 0);
  EXPECT_EQ(selector(), "(none)");
  for (const char* name : {"a1", "a255", "a256"}) EXPECT_EQ(definition_.get_attr_info_by_name(name), nullptr);
  definition_.add_attr_info("a257", 7, true, nullptr);
  EXPECT_EQ(own(), Texts({"a257:7"}));
  EXPECT_EQ(selector(), "a257");
}

TEST_F(LdfDef, OwnAttributes_ReplacingOneOf255DoesNotWrap) {
  add_numbered(1, 255);
  definition_.add_attr_info("a1", 9, false, nullptr);
  EXPECT_EQ(definition_.get_attr_count(), 255);
  EXPECT_EQ(own().back(), "a1:9");
  EXPECT_EQ(own().front(), "a2:1>r");
}

TEST_F(LdfDef, OwnAttributes_WrapTwice) {
  add_numbered(1, 256);
  add_numbered(1, 256);
  EXPECT_EQ(definition_.get_attr_count(), 0);
  add_numbered(1, 255);
  EXPECT_EQ(definition_.get_attr_count(), 255);
}

TEST_F(LdfDef, GlobalAttributes_255FitAndThe256thEmptiesTheList) {
  for (int i = 1; i <= 255; ++i) Definition::add_global_attr_info(("g" + std::to_string(i)).c_str(), 1);
  EXPECT_EQ(Definition::n_global_attr_entries, 255);
  Definition::add_global_attr_info("g1", 9);
  EXPECT_EQ(Definition::n_global_attr_entries, 255);
  EXPECT_EQ(global().back(), "g1:9");
  Definition::add_global_attr_info("g256", 1);
  EXPECT_EQ(Definition::n_global_attr_entries, 0);
  EXPECT_EQ(definition_.get_attr_info_by_name("g256"), nullptr);
  Definition::add_global_attr_info("g257", 1);
  EXPECT_EQ(global(), Texts({"g257:1"}));
}

TEST_F(LdfDef, SelectorMessages_255FitAndThe256thEmptiesTheList) {
  for (unsigned i = 1; i <= 255; ++i) definition_.add_selector_message(i, i, "ID", "text");
  EXPECT_EQ(definition_.get_selector_msg_count(), 255);
  EXPECT_EQ(definition_.get_selector_msg_by_index(255)->get_value(), 255U);
  definition_.add_selector_message(256, 256, "ID", "text");
  EXPECT_EQ(definition_.get_selector_msg_count(), 0);
  EXPECT_EQ(definition_.get_selector_msg_by_index(1), nullptr);
  EXPECT_EQ(definition_.get_selector_msg_by_value(256), nullptr);
  definition_.add_selector_message(257, 300, "ID", "text");
  EXPECT_EQ(definition_.get_selector_msg_count(), 1);
  EXPECT_EQ(definition_.get_selector_msg_by_value(300)->get_index(), 257U);
}

// ---- references ----

TEST(LdfDefReference, DefinitionLivesUntilTheLastOneIsGone) {
  DefinitionRef first(new Definition);
  first->set_default_msg_text("text");
  DefinitionRef second = DefinitionRef::share(first.get());
  first = DefinitionRef();
  ASSERT_TRUE(static_cast<bool>(second));
  EXPECT_STREQ(second->get_default_msg_text(), "text");
  const DefinitionRef moved(std::move(second));
  EXPECT_STREQ(moved->get_default_msg_text(), "text");
}

// ---- memory ----

constexpr const char* kLong = "a text that is kept on the heap whatever the string class does";

TEST_F(LdfDef, AttributeEntryWithoutMemory_Throws) {
  EXPECT_GT(FailEveryAllocation([] { const _qz_LOG_attribute_entry entry("a name seen first here", kLong, 1); }), 2U);
  _qz_LOG_attribute_entry entry("a", nullptr, 1);
  EXPECT_GT(FailEveryAllocation([&] { entry.set_name("another name seen first here"); },
                                [&] { EXPECT_STREQ(entry.get_name(), "a"); }),
            1U);
  EXPECT_STREQ(entry.get_name(), "another name seen first here");
  EXPECT_EQ(FailEveryAllocation([&] { entry.set_redirection_name(kLong); }), 1U);
}

TEST_F(LdfDef, AttributeEntryWithAKnownName_TakesNoMemory) {
  const _qz_LOG_attribute_entry first("known", nullptr, 1);
  EXPECT_EQ(FailEveryAllocation([] { const _qz_LOG_attribute_entry second("known", nullptr, 2); }), 0U);
  EXPECT_EQ(FailEveryAllocation([] { const _qz_LOG_attribute_entry second("known", kLong, 2); }), 1U);
}

TEST_F(LdfDef, KnownNames_AreTheSameForTheSameTextOnly) {
  const std::string copy = std::string("kno") + "wn";
  EXPECT_EQ(KnownName::of("known"), KnownName::of(copy.c_str()));
  EXPECT_NE(KnownName::of("known"), KnownName::of("knowN"));
  EXPECT_STREQ(KnownName::of("")->text(), "");
  EXPECT_EQ(KnownName::of("known")->hash(), my_hashcode("known"));
}

TEST_F(LdfDef, RenamedAttributeOfALongList_IsFoundUnderItsNewName) {
  for (int i = 0; i < 40; ++i) definition_.add_attr_info(("name" + std::to_string(i)).c_str(), 1, false, nullptr);
  definition_.get_attr_info_by_name("name30")->set_name("renamed");
  EXPECT_EQ(definition_.get_attr_info_by_name("name30"), nullptr);
  ASSERT_NE(definition_.get_attr_info_by_name("renamed"), nullptr);
  EXPECT_STREQ(definition_.get_attr_info_by_name("renamed")->get_name(), "renamed");
}

TEST_F(LdfDef, SelectorMessageWithoutMemory_Throws) {
  EXPECT_EQ(FailEveryAllocation([] { const _qz_LOG_selector_message message(1, 1, kLong, kLong); }), 2U);
}

TEST_F(LdfDef, DefaultMessageWithoutMemory_Throws) {
  EXPECT_EQ(FailEveryAllocation([&] { definition_.set_default_msg_id(kLong); }), 1U);
  EXPECT_EQ(FailEveryAllocation([&] { definition_.set_default_msg_text(kLong); }), 1U);
  EXPECT_STREQ(definition_.get_default_msg_id(), kLong);
}

TEST_F(LdfDef, AddAttributeWithoutMemory_ThrowsAndTheOthersStay) {
  definition_.add_attr_info("a", 1, true, nullptr);
  EXPECT_GT(FailEveryAllocation([&] { definition_.add_attr_info(kLong, 2, true, kLong); },
                                [&] {
                                  EXPECT_EQ(own(), Texts({"a:1"}));
                                  EXPECT_EQ(selector(), "a");
                                }),
            3U);
  EXPECT_EQ(definition_.get_attr_count(), 2);
}

TEST_F(LdfDef, ReplaceAttributeWithoutMemory_FormerOneStaysRemoved) {
  FailEveryAllocation([&] { definition_.add_attr_info("a", 2, false, nullptr); },
                      [&] {
                        EXPECT_EQ(own(), Texts());
                        EXPECT_EQ(selector(), "(none)");
                        definition_.add_attr_info("a", 1, true, nullptr);
                      });
  EXPECT_EQ(own(), Texts({"a:2"}));
}

TEST_F(LdfDef, ReplaceGlobalAttributeWithoutMemory_FormerOneStaysRemoved) {
  EXPECT_GT(FailEveryAllocation([] { Definition::add_global_attr_info("g", 2); },
                                [] {
                                  EXPECT_EQ(global(), Texts());
                                  Definition::add_global_attr_info("g", 1);
                                }),
            1U);
  EXPECT_EQ(global(), Texts({"g:2"}));
}

TEST_F(LdfDef, AddSelectorMessageWithoutMemory_ThrowsAndTheOthersStay) {
  definition_.add_selector_message(1, 1, "ID", "text");
  EXPECT_GT(FailEveryAllocation([&] { definition_.add_selector_message(2, 2, kLong, kLong); },
                                [&] { EXPECT_EQ(definition_.get_selector_msg_count(), 1); }),
            3U);
  EXPECT_EQ(definition_.get_selector_msg_count(), 2);
}

}  // namespace
