#include <gtest/gtest.h>

#include <string>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kIndexText = "<QZX_logging_invalid_message_string> Invalid selector message index specified.";
constexpr unsigned kId = 20;

/// An entry whose template the selector attribute "Reason", of the type given, may pick.
LdfEntry entry_with_selector(unsigned type, unsigned id = kId) {
  return {.id = id,
          .message_id = "default.id",
          .message_text = "default",
          .selector = "Reason",
          .attributes = {{"Name", TypeChar32}, {"Reason", type}},
          .selector_messages = {{1, 10, "ten.id", "ten"},
                                {2, 255, "byte.id", "byte"},
                                {3, 65535, "word.id", "word"},
                                {4, 4294967295U, "max.id", "max"},
                                {5, 0, "zero.id", "zero"},
                                {1, 11, "second.id", "second with index 1"},
                                {6, 10, "again.id", "second with value 10"}}};
}

class MessageTemplate : public testing::Test {
 protected:
  /// The template on both paths, which must agree.
  static std::string chosen(const _qz_LOG_log_entry_imp& entry, bool use_default, unsigned selector_index) {
    const auto* const definition = entry.get_definition();
    const qz_String narrow = _qz_LOG_log_message::_get_message_qzString(entry, definition, use_default, selector_index);
    const icu::UnicodeString wide =
        _qz_LOG_log_message::_get_message_string(entry, definition, use_default, selector_index);
    EXPECT_EQ(to_utf8(wide), narrow.c_str());
    return narrow.c_str();
  }

  template <typename Exception>
  static void expect_throws(const _qz_LOG_log_entry_imp& entry, bool use_default, unsigned selector_index,
                            const char* text) {
    const auto* const definition = entry.get_definition();
    EXPECT_EQ(
        thrown_by([&] { _qz_LOG_log_message::get_qzString_message(entry, definition, use_default, selector_index); }),
        thrown<Exception>(text));
    EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::get_message(entry, definition, use_default, selector_index); }),
              thrown<Exception>(text));
  }

  RenderingSettings settings_;
};

TEST_F(MessageTemplate, IndexGiven_FirstMessageWithThatIndex) {
  settings_.load({entry_with_selector(TypeUInt4)});
  const _qz_LOG_log_entry_imp entry(kId, 0);
  EXPECT_EQ(chosen(entry, false, 1), "ten");
  EXPECT_EQ(chosen(entry, false, 5), "zero");
  EXPECT_EQ(chosen(entry, false, 6), "second with value 10");
}

TEST_F(MessageTemplate, IndexGivenAndValueSet_IndexWins) {
  settings_.load({entry_with_selector(TypeUInt4)});
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_4u("Reason", 255);
  EXPECT_EQ(chosen(entry, false, 1), "ten");
}

TEST_F(MessageTemplate, IndexWithoutMessage_ThrowsOnBothPaths) {
  settings_.load({entry_with_selector(TypeUInt4)});
  const _qz_LOG_log_entry_imp entry(kId, 0);
  expect_throws<QZX_logging_invalid_message_string>(entry, false, 7, kIndexText);
  expect_throws<QZX_logging_invalid_message_string>(entry, false, 4294967295U, kIndexText);
}

TEST_F(MessageTemplate, IndexWithoutMessage_ThrowsBeforeTheTemplateIsRead) {
  LdfEntry entry = entry_with_selector(TypeUInt4);
  entry.message_text = "%d%Missing% %";  // neither path can cut or render this
  settings_.load({entry});
  expect_throws<QZX_logging_invalid_message_string>(_qz_LOG_log_entry_imp(kId, 0), false, 7, kIndexText);
}

TEST_F(MessageTemplate, IndexWithoutAnySelectorMessage_Throws) {
  settings_.load({{.id = kId, .message_text = "default"}});
  expect_throws<QZX_logging_invalid_message_string>(_qz_LOG_log_entry_imp(kId, 0), false, 1, kIndexText);
}

TEST_F(MessageTemplate, UseDefault_IgnoresIndexAndValue) {
  settings_.load({entry_with_selector(TypeUInt4)});
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_4u("Reason", 10);
  for (const unsigned index : {0U, 1U, 7U}) EXPECT_EQ(chosen(entry, true, index), "default");
}

TEST_F(MessageTemplate, UseDefault_DoesNotReadTheSelectorAttribute) {
  settings_.load({entry_with_selector(TypeSInt4)});
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_4("Reason", 10);
  EXPECT_EQ(chosen(entry, true, 0), "default");
}

TEST_F(MessageTemplate, ValuesOfOneTwoAndFourBytes_TheirMessages) {
  const struct {
    unsigned type;
    unsigned value;
    const char* text;
  } cases[] = {{TypeUInt1, 10, "ten"},          {TypeUInt1, 255, "byte"},    {TypeUInt1, 0, "zero"},
               {TypeUInt1, 12, "default"},      {TypeUInt2, 10, "ten"},      {TypeUInt2, 255, "byte"},
               {TypeUInt2, 65535, "word"},      {TypeUInt2, 500, "default"}, {TypeUInt4, 65535, "word"},
               {TypeUInt4, 4294967295U, "max"}, {TypeUInt4, 0, "zero"},      {TypeUInt4, 65536 + 10, "default"}};
  for (const auto& c : cases) {
    settings_.load({entry_with_selector(c.type)});
    _qz_LOG_log_entry_imp entry(kId, 0);
    if (c.type == TypeUInt1) entry.add_attrib_1u("Reason", static_cast<unsigned char>(c.value));
    if (c.type == TypeUInt2) entry.add_attrib_2u("Reason", static_cast<unsigned short>(c.value));
    if (c.type == TypeUInt4) entry.add_attrib_4u("Reason", c.value);
    EXPECT_EQ(chosen(entry, false, 0), c.text) << c.type << " " << c.value;
  }
}

TEST_F(MessageTemplate, ValueNotSet_DefaultMessageInEveryMode) {
  for (const unsigned mode : {1U, 2U}) {
    _qz_LOG_log_entry_imp::global_operation_mode = mode;
    settings_.load({entry_with_selector(TypeUInt4), entry_with_selector(TypeFloat, kId + 1)});
    EXPECT_EQ(chosen(_qz_LOG_log_entry_imp(kId, 0), false, 0), "default");
    EXPECT_EQ(chosen(_qz_LOG_log_entry_imp(kId + 1, 0), false, 0), "default");
  }
}

TEST_F(MessageTemplate, ValueRemovedAgain_DefaultMessage) {
  settings_.load({entry_with_selector(TypeUInt4)});
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_4u("Reason", 10);
  EXPECT_EQ(chosen(entry, false, 0), "ten");
  entry.remove_attrib("Reason");
  EXPECT_EQ(chosen(entry, false, 0), "default");
}

TEST_F(MessageTemplate, SelectorOfAnotherType_ReadWithTheFourByteGetterThrows) {
  const char* const text = "Use the wrong get method under Entry ID 20 !";
  settings_.load({entry_with_selector(TypeSInt4)});
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_4("Reason", 10);
  expect_throws<QZX_logging_attribute_type_mismatch>(entry, false, 0, text);

  settings_.load({entry_with_selector(TypeBool)});
  _qz_LOG_log_entry_imp boolean(kId, 0);
  boolean.add_attrib_bool("Reason", true);
  expect_throws<QZX_logging_attribute_type_mismatch>(boolean, false, 0, text);

  settings_.load({entry_with_selector(TypeChar32)});
  _qz_LOG_log_entry_imp text_entry(kId, 0);
  text_entry.add_attrib_str("Reason", "10", true);
  expect_throws<QZX_logging_attribute_type_mismatch>(text_entry, false, 0, text);
}

TEST_F(MessageTemplate, NoSelectorAttribute_DefaultMessage) {
  LdfEntry entry = entry_with_selector(TypeUInt4);
  entry.selector = "";
  settings_.load({entry});
  _qz_LOG_log_entry_imp imp(kId, 0);
  imp.add_attrib_4u("Reason", 10);
  EXPECT_EQ(chosen(imp, false, 0), "default");
  EXPECT_EQ(chosen(imp, false, 2), "byte");
}

TEST_F(MessageTemplate, EmptySelectorText_IsTaken) {
  settings_.load({{.id = kId,
                   .message_text = "default",
                   .selector = "Reason",
                   .attributes = {{"Reason", TypeUInt4}},
                   .selector_messages = {{1, 10, "id", ""}}}});
  EXPECT_EQ(chosen(_qz_LOG_log_entry_imp(kId, 0), false, 1), "");
}

/// A definition made by hand, for what a file cannot hold.
class TemplateOfDefinition : public MessageTemplate {
 protected:
  TemplateOfDefinition() {
    settings_.load({{.id = kId, .attributes = {{"Reason", TypeUInt4}}}});
    entry_ = std::make_unique<_qz_LOG_log_entry_imp>(kId, 0);
    entry_->add_attrib_4u("Reason", 10);
    definition_.add_attr_info("Reason", TypeUInt4, true, nullptr);
  }

  _qz_LOG_log_definition definition_;
  std::unique_ptr<_qz_LOG_log_entry_imp> entry_;
};

TEST_F(TemplateOfDefinition, SelectorMessageWithoutText_DefaultMessage) {
  definition_.add_selector_message(1, 10, nullptr, nullptr);
  definition_.set_default_msg_text("default");
  for (const unsigned index : {0U, 1U}) {
    EXPECT_STREQ(_qz_LOG_log_message::_get_message_qzString(*entry_, &definition_, false, index).c_str(), "default");
    EXPECT_EQ(_qz_LOG_log_message::_get_message_string(*entry_, &definition_, false, index), u"default");
  }
}

TEST_F(TemplateOfDefinition, NoDefaultMessageAtAll_EmptyText) {
  EXPECT_STREQ(_qz_LOG_log_message::_get_message_qzString(*entry_, &definition_, false, 0).c_str(), "");
  EXPECT_EQ(_qz_LOG_log_message::_get_message_string(*entry_, &definition_, false, 0), u"");
  EXPECT_STREQ(_qz_LOG_log_message::get_qzString_message(*entry_, &definition_, true, 0).c_str(), "");
  EXPECT_EQ(_qz_LOG_log_message::get_message(*entry_, &definition_, true, 0), u"");
}

TEST_F(TemplateOfDefinition, NoMessageIdAndACatalog_NoDefaultMessageText) {
  definition_.set_default_msg_text("default");
  definition_.add_selector_message(1, 11, nullptr, "text");
  qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
  for (const unsigned index : {0U, 1U}) {
    EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::_get_message_string(*entry_, &definition_, false, index); }),
              thrown<QZX_logging_invalid_definition>("<QZX_logging_invalid_definition>  no default message"));
  }
  EXPECT_STREQ(_qz_LOG_log_message::_get_message_qzString(*entry_, &definition_, true, 0).c_str(), "default");
}

TEST_F(MessageTemplate, EntryWithoutDefinition_NotInitializedText) {
  const _qz_LOG_log_entry_imp entry;
  for (const bool use_default : {false, true}) {
    expect_throws<QZX_logging_misc>(entry, use_default, 0,
                                    "_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized");
  }
}

// ---- With a catalog: IDs choose, on the ICU path only ----

class TemplateOfCatalog : public MessageTemplate {
 protected:
  TemplateOfCatalog() {
    settings_.load({{.id = kId,
                     .message_id = "greeting",
                     .message_text = "text of the definition",
                     .selector = "Reason",
                     .attributes = {{"Name", TypeChar32}, {"Count", TypeUInt4}, {"Reason", TypeUInt1}},
                     .selector_messages = {{1, 10, "disk.full", "full"}, {2, 11, "missing.id", "missing"}}}});
    entry_ = std::make_unique<_qz_LOG_log_entry_imp>(kId, 0);
    entry_->add_attrib_str("Name", "Ann", true);
    entry_->add_attrib_4u("Count", 3);
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
  }

  std::string icu(bool use_default, unsigned index) {
    return to_utf8(_qz_LOG_log_message::get_message(*entry_, entry_->get_definition(), use_default, index));
  }
  std::string narrow(bool use_default, unsigned index) {
    return _qz_LOG_log_message::get_qzString_message(*entry_, entry_->get_definition(), use_default, index).c_str();
  }

  std::unique_ptr<_qz_LOG_log_entry_imp> entry_;
};

TEST_F(TemplateOfCatalog, IdsChooseTheTemplate) {
  EXPECT_EQ(icu(false, 0), "Hello Ann");
  EXPECT_EQ(icu(false, 1), "Disk full: 3");
  entry_->add_attrib_1u("Reason", 10);
  EXPECT_EQ(icu(false, 0), "Disk full: 3");
  EXPECT_EQ(icu(true, 0), "Hello Ann");
}

TEST_F(TemplateOfCatalog, NarrowPath_TextsOfTheDefinition) {
  EXPECT_EQ(narrow(false, 0), "text of the definition");
  EXPECT_EQ(narrow(false, 1), "full");
  EXPECT_EQ(narrow(false, 2), "missing");
}

TEST_F(TemplateOfCatalog, IdMissingFromTheCatalog_RetrieveText) {
  EXPECT_EQ(thrown_by([&] { icu(false, 2); }),
            thrown<QZX_logging_missing_resource>(
                "<QZX_logging_missing_resource> Unable to retrieve the string from the string table."));
}

TEST_F(TemplateOfCatalog, CatalogClosed_TextsOfTheDefinitionAgain) {
  EXPECT_EQ(icu(false, 0), "Hello Ann");
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  EXPECT_EQ(icu(false, 0), "");  // text without a reference shows nothing on this path
  EXPECT_EQ(_qz_LOG_log_message::_get_message_string(*entry_, entry_->get_definition(), false, 0),
            u"text of the definition");
}

TEST_F(TemplateOfCatalog, BadIndex_ThrowsTheIndexText) {
  EXPECT_EQ(thrown_by([&] { icu(false, 9); }), thrown<QZX_logging_invalid_message_string>(kIndexText));
}

TEST_F(TemplateOfCatalog, SetLocale_MessagesOfThatLanguage) {
  const std::string root = icu(false, 0);
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_EQ(icu(false, 0), "Grüß Gott Ann");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_JA_JP);
  EXPECT_EQ(icu(false, 0), "Annさん、こんにちは");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  EXPECT_EQ(icu(false, 0), root);
}

}  // namespace
}  // namespace qz_test
