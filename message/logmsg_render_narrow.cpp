#include <cstdlib>
#include <memory>
#include <string_view>

#include "entry/logentry_i.h"
#include "foundation/itoa.h"
#include "foundation/thread_instance.h"
#include "message/logmsg.h"
#include "message/logmsg_render.h"
#include "message/template_cache.h"

namespace {

// Holds the longest text of a double with sign, percent sign or dollar sign: more than 300 digits.
constexpr unsigned kNumberTextSize = 384;
constexpr unsigned kTimeTextSize = 32;

/// Appends the parts of a message to a text.
class NarrowMessage {
 public:
  explicit NarrowMessage(const _qz_LOG_log_entry_imp& entry) : entry_(entry) {}

  qz_String&& take() { return std::move(message_); }

  /// Up to a zero byte, so the zero bytes that stand for an escape show nothing.
  void text(const _qz_LOG_msg_token& token) {
    message_ += static_cast<const _qz_LOG_qzString_token&>(token).get_text().c_str();
  }

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
        return append_formatted("%f", entry_.get_attrib_float8(reference.name));
      case MessageFormatKind::kInteger:
        return append_integer(reference);
      case MessageFormatKind::kUnknown:
        return;
    }
  }

 private:
  void append_text(const MessageReference& reference) {
    message_ += is_unicode_string_attribute(reference.type) ? entry_.get_attrib_mbstr(reference.name)
                                                            : entry_.get_attrib_str(reference.name);
  }

  /// A dollar sign and the magnitude: the sign is not shown.
  void append_currency(const MessageReference& reference) {
    if (is_integer_attribute(reference.type)) {
      const long long amount = entry_.get_attrib_as_4(reference.name);
      append_formatted("$%lld", std::llabs(amount));
    } else {
      const double amount = entry_.get_attrib_float8(reference.name);
      append_formatted("$%f", amount < 0.0 ? -amount : amount);
    }
  }

  void append_percent(const MessageReference& reference) {
    if (is_integer_attribute(reference.type)) {
      append_formatted("%lld%%", 100LL * entry_.get_attrib_as_4(reference.name));
    } else {
      append_formatted("%f%%", 100.0 * entry_.get_attrib_float8(reference.name));
    }
  }

  void append_time(const MessageReference& reference, void (qz_Time::*print)(char*, unsigned) const) {
    char text[kTimeTextSize];
    (referenced_time(entry_, reference.name).*print)(text, sizeof(text));
    message_ += text;
  }

  /// A Boolean shows nothing.
  void append_integer(const MessageReference& reference) {
    switch (reference.type) {
      case TypeUInt1:
        return append_number(unsigned{entry_.get_attrib_1u(reference.name)});
      case TypeSInt1:
        return append_number(int{static_cast<signed char>(entry_.get_attrib_1(reference.name))});
      case TypeUInt2:
        return append_number(unsigned{entry_.get_attrib_2u(reference.name)});
      case TypeSInt2:
        return append_number(int{entry_.get_attrib_2(reference.name)});
      case TypeUInt4:
        return append_number(entry_.get_attrib_4u(reference.name));
      case TypeSInt4:
        return append_number(entry_.get_attrib_4(reference.name));
      default:
        return;
    }
  }

  template <typename Number>
  void append_number(Number number) {
    char text[kNumberTextSize];
    my_itoa(text, number);
    message_ += text;
  }

  template <typename Number>
  void append_formatted(const char* format, Number number) {
    char text[kNumberTextSize];
    QZ_sprintf(text, format, number);
    message_ += text;
  }

  const _qz_LOG_log_entry_imp& entry_;
  qz_String message_;
};

using CompiledTemplates = TemplateCache<char, _qz_LOG_msg_token_list>;

std::unique_ptr<_qz_LOG_msg_token_list> compile(const qz_String& text) {
  auto tokens = std::make_unique<_qz_LOG_msg_token_list>();
  _qz_LOG_log_message::_tokenize_qzString(text, *tokens);
  return tokens;
}

}  // namespace

qz_String _qz_LOG_log_message::get_qzString_message(const _qz_LOG_log_entry_imp& entry,
                                                    const _qz_LOG_log_definition* definition, bool use_default,
                                                    unsigned int selector_index) {
  const qz_String text = _get_message_qzString(entry, definition, use_default, selector_index);
  NarrowMessage message(entry);
  with_thread_instance<CompiledTemplates>([&](CompiledTemplates& templates) {
    const std::string_view key(text.c_str(), text.length());
    render_tokens(templates.get(key, [&] { return compile(text); }), *definition, message);
  });
  return message.take();
}
