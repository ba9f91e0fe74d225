#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

#include "entry/logentry_i.h"
#include "foundation/append_number.h"
#include "foundation/text_buffer.h"
#include "message/logmsg.h"
#include "message/logmsg_render.h"
#include "message/shared_template.h"
#include "message/template_pieces.h"

using namespace qzlog;

namespace {

// Holds the longest text of a double with sign, percent sign or dollar sign: more than 300 digits.
constexpr unsigned kNumberTextSize = 384;
constexpr unsigned kTimeTextSize = 32;

/// Appends the parts of a message to a text.
class NarrowMessage {
 public:
  NarrowMessage(const _qz_LOG_log_entry_imp& entry, TextBuffer& message) : entry_(entry), message_(message) {}

  void text(const TemplatePiece& piece) { message_.append_padded(piece.text, piece.length); }

  void reference(const MessageReference& reference) {
    switch (reference.kind) {
      case MessageFormatKind::kText:
        return append_text(reference);
      case MessageFormatKind::kCurrency:
        return append_currency(reference);
      case MessageFormatKind::kPercent:
        return append_percent(reference);
      case MessageFormatKind::kDate:
        return append_time(reference, &qz_Time::print_date_out);
      case MessageFormatKind::kTime:
        return append_time(reference, &qz_Time::print_time_out);
      case MessageFormatKind::kFloat:
        return append_float(reference);
      case MessageFormatKind::kInteger:
        return append_integer(reference);
      case MessageFormatKind::kUnknown:
        return;
    }
  }

 private:
  /// The value when it is set and still of the type that the definition gives it; null for what the getters decide.
  template <typename T>
  const T* find_value(const MessageReference& reference) const {
    const _qz_LOG_type_base* const stored = entry_.find_value(reference.name, reference.order);
    const bool fits = stored != nullptr && stored->get_type() == reference.type;
    return fits ? &value_as<T>(*stored) : nullptr;
  }

  void append_text(const MessageReference& reference) {
    if (is_unicode_string_attribute(reference.type)) {
      const auto* const text = find_value<_qz_LOG_ustring>(reference);
      if (text != nullptr) return message_.append(text->text(), text->length);
      return message_.append(entry_.get_attrib_mbstr(reference.name->text()));
    }
    const auto* const text = reference.type != TypeGUID ? find_value<qz_String>(reference) : nullptr;
    if (text != nullptr) return message_.append(text->c_str(), text->length());
    message_.append(entry_.get_attrib_str(reference.name->text()));
  }

  /// A dollar sign and the magnitude: the sign is not shown.
  void append_currency(const MessageReference& reference) {
    if (is_integer_attribute(reference.type)) {
      const long long amount = entry_.get_attrib_as_4(reference.name->text());
      append_formatted("$%lld", std::llabs(amount));
    } else {
      const double amount = entry_.get_attrib_float8(reference.name->text());
      message_.append('$');
      append_number(amount < 0.0 ? -amount : amount);
    }
  }

  void append_percent(const MessageReference& reference) {
    if (is_integer_attribute(reference.type)) {
      append_formatted("%lld%%", 100LL * entry_.get_attrib_as_4(reference.name->text()));
    } else {
      append_number(100.0 * entry_.get_attrib_float8(reference.name->text()));
      message_.append('%');
    }
  }

  void append_time(const MessageReference& reference, void (qz_Time::*print)(char*, unsigned) const) {
    char text[kTimeTextSize];
    (referenced_time(entry_, reference.name->text()).*print)(text, sizeof(text));
    message_.append(text);
  }

  void append_float(const MessageReference& reference) {
    const double* const value = find_value<double>(reference);
    append_number(value != nullptr ? *value : entry_.get_attrib_float8(reference.name->text()));
  }

  /// A Boolean shows nothing.
  void append_integer(const MessageReference& reference) {
    switch (reference.type) {
      case TypeUInt1:
        return append_integer_of<unsigned char, unsigned>(reference, &_qz_LOG_log_entry_imp::get_attrib_1u);
      case TypeSInt1:
        return append_integer_of<char, int>(reference, &_qz_LOG_log_entry_imp::get_attrib_1);
      case TypeUInt2:
        return append_integer_of<unsigned short, unsigned>(reference, &_qz_LOG_log_entry_imp::get_attrib_2u);
      case TypeSInt2:
        return append_integer_of<short, int>(reference, &_qz_LOG_log_entry_imp::get_attrib_2);
      case TypeUInt4:
        return append_integer_of<unsigned int, unsigned>(reference, &_qz_LOG_log_entry_imp::get_attrib_4u);
      case TypeSInt4:
        return append_integer_of<int, int>(reference, &_qz_LOG_log_entry_imp::get_attrib_4);
      default:
        return;
    }
  }

  template <typename T, typename Shown>
  void append_integer_of(const MessageReference& reference, T (_qz_LOG_log_entry_imp::*get)(const char*) const) {
    const T* const stored = find_value<T>(reference);
    const T value = stored != nullptr ? *stored : (entry_.*get)(reference.name->text());
    // A plain char may be unsigned; the attribute's is not.
    using Signed = std::conditional_t<std::is_same_v<T, char>, signed char, T>;
    qzlog::append_integer(message_, Shown{static_cast<Signed>(value)});
  }

  void append_number(double number) {
    message_.with_buffer([number](TextBuffer& buffer) { append_fixed(buffer, number); });
  }

  void append_formatted(const char* format, long long number) {
    char text[kNumberTextSize];
    QZ_sprintf(text, format, number);
    message_.append(text);
  }

  const _qz_LOG_log_entry_imp& entry_;
  TextCursor message_;
};

class NarrowTemplate : public PreparedMessage {
 public:
  NarrowTemplate(const _qz_LOG_msg_token_list& tokens, const _qz_LOG_log_definition& definition)
      : pieces_(tokens, TemplatePieces::Texts::kNarrow, definition) {
    set_memory_bytes(block_bytes(sizeof *this) + pieces_.memory_bytes());
  }
  void prefetch_parts() const override { pieces_.prefetch_parts(); }
  const TemplatePieces& pieces() const { return pieces_; }

 private:
  TemplatePieces pieces_;
};

/// As choose_message_text, which most entries need not ask.
const DefinitionMessage& choose_text(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                     bool use_default, unsigned int selector_index) {
  const bool has_one_message =
      definition != nullptr && selector_index == 0 && definition->get_selector_attribute() == nullptr;
  return has_one_message ? definition->get_default_message()
                         : _qz_LOG_log_message::choose_message_text(entry, definition, use_default, selector_index);
}

std::unique_ptr<const NarrowTemplate> make_template(const char* text, const _qz_LOG_log_definition& definition) {
  _qz_LOG_msg_token_list tokens;
  _qz_LOG_log_message::_tokenize_qzString(qz_String(text), tokens);
  return std::make_unique<NarrowTemplate>(tokens, definition);
}

const NarrowTemplate& prepare(const DefinitionMessage& text, const _qz_LOG_log_definition& definition) try {
  const PreparedMessage* prepared = text.find_prepared(MessagePath::kNarrow);
  if (prepared == nullptr) {
    const std::string_view content = text.get() != nullptr ? text.get() : "";
    prepared = &text.keep_prepared(
        MessagePath::kNarrow, share_template<NarrowTemplate>(MessagePath::kNarrow, content, definition,
                                                             [&] { return make_template(text.get(), definition); }));
  }
  return static_cast<const NarrowTemplate&>(*prepared);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

}  // namespace

void _qz_LOG_log_message::append_narrow_message(const _qz_LOG_log_entry_imp& entry,
                                                const _qz_LOG_log_definition* definition, bool use_default,
                                                unsigned int selector_index, TextBuffer& message) {
  const DefinitionMessage& text = choose_text(entry, definition, use_default, selector_index);
  NarrowMessage sink(entry, message);
  render_pieces(prepare(text, *definition).pieces(), *definition, sink);
}

qz_String _qz_LOG_log_message::get_qzString_message(const _qz_LOG_log_entry_imp& entry,
                                                    const _qz_LOG_log_definition* definition, bool use_default,
                                                    unsigned int selector_index) {
  TextBuffer message;
  append_narrow_message(entry, definition, use_default, selector_index, message);
  qz_String copy;
  copy._assign(message.data(), static_cast<unsigned>(message.size()));
  return copy;
}
