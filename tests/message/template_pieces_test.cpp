#include "message/template_pieces.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "message/logmsg.h"
#include "qzlog/qz_exception.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

/// Pieces and what they leave behind as one text: "abc" for a text, "<name:type:order>" for a reference, "?" for a
/// reference without an argument.
class ShownPieces {
 public:
  explicit ShownPieces(const _qz_LOG_log_definition& definition) : definition_(definition) {}

  void text(const TemplatePiece& piece) { shown_ += std::string(piece.text, piece.length); }
  void reference(const MessageReference& reference) {
    shown_ += std::string("<") + reference.name->text() + ":" + std::to_string(reference.type) + ":" +
              std::to_string(reference.order) + ">";
  }
  std::string of(const TemplatePieces& pieces) {
    render_pieces(pieces, definition_, *this);
    return shown_;
  }

 private:
  const _qz_LOG_log_definition& definition_;
  std::string shown_;
};

class TemplatePiecesTest : public testing::Test {
 protected:
  TemplatePiecesTest() {
    definition_.add_attr_info("NUMBER", TypeUInt4, false, nullptr);
    definition_.add_attr_info("TEXT", TypeChar32, false, nullptr);
  }
  TemplatePieces pieces_of(const char* text, TemplatePieces::Texts texts = TemplatePieces::Texts::kNarrow) {
    _qz_LOG_msg_token_list tokens;
    _qz_LOG_log_message::_tokenize_qzString(qz_String(text), tokens);
    return TemplatePieces(tokens, texts, definition_);
  }
  std::string shown(const TemplatePieces& pieces) const { return ShownPieces(definition_).of(pieces); }

  _qz_LOG_log_definition definition_;
};

TEST_F(TemplatePiecesTest, TextsAndReferences_InTheOrderOfTheTemplate) {
  EXPECT_EQ(shown(pieces_of("a %d%NUMBER% b %s%TEXT% c")), "a <NUMBER:6:0> b <TEXT:9:1> c");
}

TEST_F(TemplatePiecesTest, TextsNotWanted_ReferencesAlone) {
  EXPECT_EQ(shown(pieces_of("a %d%NUMBER% b %s%TEXT%", TemplatePieces::Texts::kNone)), "<NUMBER:6:0><TEXT:9:1>");
}

TEST_F(TemplatePiecesTest, UnknownFormat_LeftOutButCountedInTheOrder) {
  EXPECT_EQ(shown(pieces_of("%x%NUMBER% %s%TEXT%")), " <TEXT:9:1>");
}

TEST_F(TemplatePiecesTest, StandardName_ItsTypeWithoutADefinition) {
  EXPECT_EQ(shown(pieces_of("%T%TIMESTAMP%")), "<TIMESTAMP:23:0>");
}

TEST_F(TemplatePiecesTest, AttributesOfTheDefinitionChanged_TheTypesOfNow) {
  const TemplatePieces pieces = pieces_of("%d%NUMBER% %s%TEXT%");
  definition_.add_attr_info("NUMBER", TypeSInt2, false, nullptr);  // now behind the other
  EXPECT_EQ(shown(pieces), "<NUMBER:5:0> <TEXT:9:1>");
}

TEST_F(TemplatePiecesTest, AttributeUnknownToTheDefinition_InvalidMessageString) {
  EXPECT_EQ(thrown_by([&] { shown(pieces_of("%d%MISSING%")); }),
            thrown<QZX_logging_invalid_message_string>(
                "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
                "unable to find attribute value for \"MISSING\"!"));
}

TEST_F(TemplatePiecesTest, TypeThatTheFormatDoesNotAccept_InvalidMessageString) {
  EXPECT_EQ(thrown_by([&] { shown(pieces_of("%D%NUMBER%")); }),
            thrown<QZX_logging_invalid_message_string>(
                "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
                "invalid format specifier for attribute \"NUMBER\"!"));
}

TEST_F(TemplatePiecesTest, ArgumentOf_TheArgumentBehindAFormatAlone) {
  _qz_LOG_msg_token_list tokens;
  _qz_LOG_log_message::_tokenize_qzString(qz_String("%d%NUMBER%"), tokens);
  const _qz_LOG_msg_token* format = tokens.get_head();
  while (format != nullptr && format->get_type() != _QZ_FMT_SPECIFIER_TOKEN) format = format->get_next();
  ASSERT_NE(format, nullptr);
  const _qz_LOG_arg_spec_token* const argument = argument_of(*format);
  ASSERT_NE(argument, nullptr);
  EXPECT_STREQ(argument->get_name().c_str(), "NUMBER");
  EXPECT_EQ(argument_of(*argument), nullptr);
}

}  // namespace
}  // namespace qz_test
