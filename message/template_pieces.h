#ifndef QZLOG_MESSAGE_TEMPLATE_PIECES_H
#define QZLOG_MESSAGE_TEMPLATE_PIECES_H

#include <memory>
#include <vector>

#include "definitions/attribute_name.h"
#include "definitions/ldf_def.h"
#include "foundation/prefetch.h"
#include "message/format_types.h"
#include "message/logmsg_tokens.h"

namespace qzlog {

/// One attribute reference of a template, with the type that it has for a definition.
struct MessageReference {
  const KnownName* name;
  qz_AttributeType type;
  MessageFormatKind kind;
  unsigned order;  // among the references of the template, from 0
};

/// The argument token of a format token, or null when another token, or none, follows.
const _qz_LOG_arg_spec_token* argument_of(const _qz_LOG_msg_token& format_token);

/// Reports a format token without an argument, which is left out.
void report_missing_argument();

/// One step of rendering a template.
struct TemplatePiece {
  enum class Step : unsigned char { kText, kReference, kMissingArgument };

  Step step;
  MessageFormatKind kind;       // of a reference
  unsigned char standard_type;  // of a reference to a standard name, else TypeUnknown
  unsigned char own_position;   // where the definition had the attribute when the template was made ready
  unsigned length;              // of a text; of a reference its order among the references
  union {
    const char* text;       // terminated, and padded for TextCursor
    const KnownName* name;  // of a reference
  };
};

/// The slow ways of the function below: an attribute that is not where it was, or unknown, and a type that does not
/// fit.
const _qz_LOG_attribute_entry& find_referenced(const char* name, const _qz_LOG_log_definition& definition);
[[noreturn]] void throw_invalid_format(const char* name);

/// The reference of a piece. QZX_logging_invalid_message_string when the definition does not know the attribute, or
/// when its type does not go with the format.
inline MessageReference resolve_reference(const TemplatePiece& piece, const _qz_LOG_log_definition& definition) {
  unsigned char type = piece.standard_type;
  if (type == TypeUnknown) {
    const _qz_LOG_attribute_entry* const expected = definition.get_own_attribute(piece.own_position);
    const bool is_there = expected != nullptr && expected->get_known_name() == piece.name;
    type = is_there ? expected->get_type() : find_referenced(piece.name->text(), definition).get_type();
  }
  const MessageReference reference{piece.name, static_cast<qz_AttributeType>(type), piece.kind, piece.length};
  if (!accepts_type(reference.kind, reference.type)) throw_invalid_format(piece.name->text());
  return reference;
}

/// What rendering needs of a token list, laid out for reading: everything that the template alone determines.
class TemplatePieces {
 public:
  /// Whose text tokens to keep: the ICU path has its texts in the pattern.
  enum class Texts { kNarrow, kNone };
  TemplatePieces(const _qz_LOG_msg_token_list& tokens, Texts texts, const _qz_LOG_log_definition& definition);

  std::vector<TemplatePiece>::const_iterator begin() const { return pieces_.begin(); }
  std::vector<TemplatePiece>::const_iterator end() const { return pieces_.end(); }
  /// Whether the pieces look for attributes where this definition has them.
  bool fits(const _qz_LOG_log_definition& definition) const;
  /// Asks for what rendering reads, see PreparedMessage.
  void prefetch_parts() const {
    prefetch(pieces_.data(), pieces_.size() * sizeof(TemplatePiece));
    prefetch(texts_.get(), text_bytes_);
  }
  /// What they take of the heap.
  std::size_t memory_bytes() const;

 private:
  void add_text(const qz_String& text);
  void add_reference(MessageFormatKind kind, const char* name, const _qz_LOG_log_definition& definition);

  std::vector<TemplatePiece> pieces_;
  std::unique_ptr<char[]> texts_;  // of all text pieces
  std::size_t text_bytes_ = 0;
  unsigned reference_count_ = 0;
};

/// Hands every text and every reference that is rendered to `sink`, in the order of the template: sink.text(const
/// TemplatePiece&) and sink.reference(const MessageReference&).
template <typename Sink>
void render_pieces(const TemplatePieces& pieces, const _qz_LOG_log_definition& definition, Sink& sink) {
  for (const TemplatePiece& piece : pieces) {
    if (piece.step == TemplatePiece::Step::kText) {
      sink.text(piece);
    } else if (piece.step == TemplatePiece::Step::kMissingArgument) {
      report_missing_argument();
    } else {
      const MessageReference reference = resolve_reference(piece, definition);
      if (reference.kind != MessageFormatKind::kUnknown) sink.reference(reference);
    }
  }
}

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_TEMPLATE_PIECES_H
