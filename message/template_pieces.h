#ifndef QZLOG_MESSAGE_TEMPLATE_PIECES_H
#define QZLOG_MESSAGE_TEMPLATE_PIECES_H

#include <memory>
#include <vector>

#include "definitions/attribute_name.h"
#include "message/logmsg_render.h"
#include "message/logmsg_tokens.h"

/// One step of rendering a template.
struct TemplatePiece {
  enum class Step : unsigned char { kText, kReference, kMissingArgument };

  Step step;
  MessageFormatKind kind;       // of a reference
  unsigned char standard_type;  // of a reference to a standard name, else TypeUnknown
  unsigned name_hash;           // of a reference
  const char* text;             // the text itself, or the attribute's name; terminated
  unsigned length;

  _qz_LOG_attribute_name name() const { return {text, length, name_hash}; }
};

/// What rendering needs of a token list, laid out for reading: everything that the template alone determines.
class TemplatePieces {
 public:
  /// Whose text tokens to keep: the ICU path has its texts in the pattern.
  enum class Texts { kNarrow, kNone };
  TemplatePieces(const _qz_LOG_msg_token_list& tokens, Texts texts);

  std::vector<TemplatePiece>::const_iterator begin() const { return pieces_.begin(); }
  std::vector<TemplatePiece>::const_iterator end() const { return pieces_.end(); }

 private:
  struct Counts {
    std::size_t pieces = 0;
    std::size_t bytes = 0;
  };
  template <typename Visit>
  static void for_each_step(const _qz_LOG_msg_token_list& tokens, Texts texts, Visit visit);
  const char* store(const qz_String& text, unsigned length);

  std::vector<TemplatePiece> pieces_;
  std::unique_ptr<char[]> texts_;
  char* free_text_ = nullptr;
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

#endif  // QZLOG_MESSAGE_TEMPLATE_PIECES_H
