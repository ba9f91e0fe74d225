#include "message/template_pieces.h"

#include "entry/logattrib.h"
#include "foundation/qz_libc.h"

/// Calls visit(step, token) for every text token, every reference (with its argument token) and every format token
/// without an argument.
template <typename Visit>
void TemplatePieces::for_each_step(const _qz_LOG_msg_token_list& tokens, Texts texts, Visit visit) {
  using Step = TemplatePiece::Step;
  for (const _qz_LOG_msg_token* token = tokens.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_STRING_TOKEN && texts == Texts::kNarrow) {
      visit(Step::kText, MessageFormatKind::kUnknown, static_cast<const _qz_LOG_qzString_token*>(token)->get_text());
    }
    if (token->get_type() != _QZ_FMT_SPECIFIER_TOKEN) continue;
    const MessageFormatKind kind = message_format_kind(static_cast<const _qz_LOG_fmt_spec_token*>(token)->get_format());
    const _qz_LOG_arg_spec_token* const argument = argument_of(*token);
    if (argument == nullptr) {
      visit(Step::kMissingArgument, kind, qz_String());
    } else {
      visit(Step::kReference, kind, argument->get_name());
      token = argument;
    }
  }
}

TemplatePieces::TemplatePieces(const _qz_LOG_msg_token_list& tokens, Texts texts) {
  Counts counts;
  for_each_step(tokens, texts, [&counts](TemplatePiece::Step, MessageFormatKind, const qz_String& text) {
    ++counts.pieces;
    counts.bytes += QZ_strlen(text.c_str()) + 1;
  });
  pieces_.reserve(counts.pieces);
  texts_ = std::make_unique<char[]>(counts.bytes);
  free_text_ = texts_.get();
  for_each_step(tokens, texts, [this](TemplatePiece::Step step, MessageFormatKind kind, const qz_String& text) {
    // Up to a zero byte, so the zero bytes that stand for an escape show nothing.
    const auto length = static_cast<unsigned>(QZ_strlen(text.c_str()));
    const char* const stored = store(text, length);
    qz_AttributeType standard_type = TypeUnknown;
    is_default_info_fields(stored, standard_type);
    pieces_.push_back(
        {step, kind, static_cast<unsigned char>(standard_type), my_hashcode(stored, length), stored, length});
  });
}

const char* TemplatePieces::store(const qz_String& text, unsigned length) {
  char* const stored = free_text_;
  QZ_memcpy(stored, text.c_str(), length + 1U);
  free_text_ += length + 1U;
  return stored;
}
