#include <memory>
#include <vector>

#include <unicode/fmtable.h>

#include "entry/logentry_i.h"
#include "foundation/fork_gate.h"
#include "foundation/thread_instance.h"
#include "message/code_page.h"
#include "message/icu_arguments.h"
#include "message/icu_formats.h"
#include "message/icu_message.h"
#include "message/icu_template.h"
#include "message/logmsg.h"
#include "message/shared_template.h"
#include "qzlog/logcfg.h"

using namespace qzlog;

namespace {

/// Puts the parts of a message together in UTF-8.
class MessageAssembly {
 public:
  MessageAssembly(const IcuTemplate& message_template, const IcuArguments& arguments, IcuFormats& formats)
      : template_(message_template),
        arguments_(arguments),
        locale_(message_template.has_locale_parts() ? &formats.of_locale() : nullptr),
        kept_(message_template.has_formatted_parts() ? &formats.format_of(message_template) : nullptr) {}

  /// False when MessageFormat has to write the message after all; the text is then of no use.
  bool append_to(TextBuffer& message) const {
    for (const IcuTemplate::Part& part : template_.parts()) {
      if (!append(part, message)) return false;
    }
    return true;
  }

 private:
  bool append(const IcuTemplate::Part& part, TextBuffer& message) const {
    switch (part.kind) {
      case IcuTemplate::Part::Kind::kLiteral:
        message.append(template_.literals().data() + part.begin, part.length);
        return true;
      case IcuTemplate::Part::Kind::kText:
        return append_text(arguments_[part.argument], message);
      case IcuTemplate::Part::Kind::kInteger:
        return append_integer(arguments_[part.argument].integer, message);
      case IcuTemplate::Part::Kind::kStyled:
        return locale_->append(part.format, arguments_[part.argument], message);
      case IcuTemplate::Part::Kind::kFormatted:
        return kept_->append(part.format_index, arguments_[part.argument], message);
    }
    return false;
  }

  static bool append_text(const IcuArgument& argument, TextBuffer& message) {
    const char* const code_page = qz_LOG_LogConfig::GetCodePage();
    if (is_utf8(code_page) && is_valid_utf8(argument.text, argument.length)) {
      message.append(argument.text, argument.length);
      return true;
    }
    return append_utf8(decode_text(argument.text, code_page), message);
  }

  bool append_integer(int value, TextBuffer& message) const {
    const IntegerStyle& style = locale_->integer_style();
    if (!style.is_usable()) return false;
    style.append(message, value);
    return true;
  }

  const IcuTemplate& template_;
  const IcuArguments& arguments_;
  LocaleFormats* locale_;
  KeptFormat* kept_;
};

icu::UnicodeString format_whole(const IcuTemplate& message_template, const IcuArguments& arguments,
                                IcuFormats& formats) {
  KeptFormat& kept = formats.format_of(message_template);
  // The values of references that are left out stay unset.
  std::vector<icu::Formattable> values(message_template.formattable_count());
  for (unsigned i = 0; i < arguments.count(); ++i) fill_argument(arguments[i], values[i]);
  return kept.format(values.data(), static_cast<int>(values.size()));
}

void render(const IcuTemplate& message_template, const _qz_LOG_log_entry_imp& entry,
            const _qz_LOG_log_definition& definition, IcuMessage& message) {
  const ForkDelay fork_delay;  // ICU locks what it keeps
  IcuArguments arguments(entry);
  render_pieces(message_template.pieces(), definition, arguments);
  with_thread_instance<IcuFormats>([&](IcuFormats& formats) {
    const bool assembled = message_template.can_be_assembled() &&
                           MessageAssembly(message_template, arguments, formats).append_to(message.utf8());
    if (!assembled) message.set_formatted(format_whole(message_template, arguments, formats));
  });
}

std::unique_ptr<const IcuTemplate> make_template(const icu::UnicodeString& text,
                                                 const _qz_LOG_log_definition& definition) {
  return std::make_unique<IcuTemplate>(text, definition);
}

PreparedMessageRef share_decoded(const icu::UnicodeString& text, const _qz_LOG_log_definition& definition) {
  const std::string_view content(reinterpret_cast<const char*>(text.getBuffer()),
                                 static_cast<std::size_t>(text.length()) * sizeof(char16_t));
  return share_template<IcuTemplate>(MessagePath::kIcu, content, definition,
                                     [&] { return make_template(text, definition); });
}

/// The template is decoded with ICU's default converter, which is taken to be the same as long as the text lives.
const PreparedMessage& prepare(const DefinitionMessage& text, const _qz_LOG_log_definition& definition) {
  const PreparedMessage* const prepared = text.find_prepared(MessagePath::kIcu);
  if (prepared != nullptr) return *prepared;
  const char* const bytes = text.get();
  const icu::UnicodeString decoded = bytes != nullptr ? decode_text(bytes, "") : icu::UnicodeString();
  return text.keep_prepared(MessagePath::kIcu, share_decoded(decoded, definition));
}

}  // namespace

void _qz_LOG_log_message::format_message(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                         bool use_default, unsigned int selector_index, IcuMessage& message) try {
  with_icu_memory([&] {
    message.clear();
    const PreparedMessage* prepared = nullptr;
    // Each choice refuses an entry without a definition.
    if (is_catalog_open()) {
      const char* const id = choose_message_id(entry, definition, use_default, selector_index);
      prepared = &prepare_catalog_message(id, *definition, share_decoded);
    } else {
      const DefinitionMessage& text = choose_message_text(entry, definition, use_default, selector_index);
      prepared = &prepare(text, *definition);
    }
    render(static_cast<const IcuTemplate&>(*prepared), entry, *definition, message);
  });
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

icu::UnicodeString _qz_LOG_log_message::get_message(const _qz_LOG_log_entry_imp& entry,
                                                    const _qz_LOG_log_definition* definition, bool use_default,
                                                    unsigned int selector_index) {
  IcuMessage message;
  format_message(entry, definition, use_default, selector_index, message);
  return message.to_unicode();
}
