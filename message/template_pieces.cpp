#include "message/template_pieces.h"

#include <algorithm>

#include "entry/logattrib.h"
#include "foundation/allocate.h"
#include "foundation/qz_libc.h"
#include "foundation/text_buffer.h"
#include "qzlog/qz_exception.h"
#include "util/assertion.h"

namespace qzlog {

namespace {

[[noreturn]] void throw_bad_reference(const char* text_before_name, const char* name) {
  qz_String text(text_before_name);
  text += name;
  text += "\"!";
  throw QZX_logging_invalid_message_string(text.c_str(), 0);
}

const qz_String& text_of(const _qz_LOG_msg_token& token) {
  return static_cast<const _qz_LOG_qzString_token&>(token).get_text();
}

/// No position is 255, which stands for none.
unsigned char own_position_of(const char* name, const _qz_LOG_log_definition& definition) {
  return static_cast<unsigned char>(definition.find_own_position(AttributeName(name)));
}

struct Sizes {
  std::size_t pieces = 0;
  std::size_t text_bytes = 0;
};

Sizes sizes_of(const _qz_LOG_msg_token_list& tokens, TemplatePieces::Texts texts) {
  Sizes sizes;
  for (const _qz_LOG_msg_token* token = tokens.get_head(); token != nullptr; token = token->get_next()) {
    const bool is_kept_text = token->get_type() == _QZ_STRING_TOKEN && texts == TemplatePieces::Texts::kNarrow;
    if (is_kept_text) sizes.text_bytes += text_of(*token).length() + 1U;
    if (is_kept_text || token->get_type() == _QZ_FMT_SPECIFIER_TOKEN) ++sizes.pieces;
  }
  return sizes;
}

}  // namespace

const _qz_LOG_arg_spec_token* argument_of(const _qz_LOG_msg_token& format_token) {
  const _qz_LOG_msg_token* const next = format_token.get_next();
  if (next == nullptr || next->get_type() != _QZ_ARG_SPECIFIER_TOKEN) return nullptr;
  return static_cast<const _qz_LOG_arg_spec_token*>(next);
}

void report_missing_argument() {
  constexpr int kReportedLine = 541;
  QZ_assertion_violation("p_token->get_type() == _QZ_ARG_SPECIFIER_TOKEN", "logmsg", kReportedLine);
}

const _qz_LOG_attribute_entry& find_referenced(const char* name, const _qz_LOG_log_definition& definition) {
  const _qz_LOG_attribute_entry* const attribute = definition.find_attribute(AttributeName(name));
  if (attribute != nullptr) return *attribute;
  throw_bad_reference(
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
      "unable to find attribute value for \"",
      name);
}

void throw_invalid_format(const char* name) {
  throw_bad_reference(
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
      "invalid format specifier for attribute \"",
      name);
}

TemplatePieces::TemplatePieces(const _qz_LOG_msg_token_list& tokens, Texts texts,
                               const _qz_LOG_log_definition& definition) {
  const Sizes sizes = sizes_of(tokens, texts);
  pieces_.reserve(sizes.pieces);
  if (texts == Texts::kNarrow) texts_ = std::make_unique<char[]>(sizes.text_bytes + TextCursor::kPadding);
  for (const _qz_LOG_msg_token* token = tokens.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_STRING_TOKEN && texts == Texts::kNarrow) add_text(text_of(*token));
    if (token->get_type() != _QZ_FMT_SPECIFIER_TOKEN) continue;
    const MessageFormatKind kind = message_format_kind(static_cast<const _qz_LOG_fmt_spec_token*>(token)->get_format());
    const _qz_LOG_arg_spec_token* const argument = argument_of(*token);
    if (argument == nullptr) {
      pieces_.push_back({TemplatePiece::Step::kMissingArgument, kind, TypeUnknown, 0, 0, {nullptr}});
    } else {
      add_reference(kind, argument->get_name().c_str(), definition);
      token = argument;
    }
  }
}

bool TemplatePieces::fits(const _qz_LOG_log_definition& definition) const {
  return std::all_of(pieces_.begin(), pieces_.end(), [&](const TemplatePiece& piece) {
    return piece.step != TemplatePiece::Step::kReference || piece.standard_type != TypeUnknown ||
           piece.own_position == own_position_of(piece.name->text(), definition);
  });
}

std::size_t TemplatePieces::memory_bytes() const {
  const std::size_t of_texts = texts_ != nullptr ? block_bytes(text_bytes_ + TextCursor::kPadding) : 0;
  return block_bytes(pieces_.capacity() * sizeof(TemplatePiece)) + of_texts;
}

/// Up to a zero byte, so the zero bytes that stand for an escape show nothing.
void TemplatePieces::add_text(const qz_String& text) {
  char* const stored = texts_.get() + text_bytes_;
  const auto length = static_cast<unsigned>(QZ_strlen(text.c_str()));
  QZ_memcpy(stored, text.c_str(), length + 1U);
  text_bytes_ += length + 1U;
  pieces_.push_back({TemplatePiece::Step::kText, MessageFormatKind::kUnknown, TypeUnknown, 0, length, {stored}});
}

void TemplatePieces::add_reference(MessageFormatKind kind, const char* name, const _qz_LOG_log_definition& definition) {
  qz_AttributeType standard_type = TypeUnknown;
  is_default_info_fields(name, standard_type);
  TemplatePiece piece{TemplatePiece::Step::kReference,
                      kind,
                      static_cast<unsigned char>(standard_type),
                      own_position_of(name, definition),
                      reference_count_++,
                      {nullptr}};
  piece.name = KnownName::of(name);
  pieces_.push_back(piece);
}

}  // namespace qzlog
