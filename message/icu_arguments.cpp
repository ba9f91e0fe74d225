#include "message/icu_arguments.h"

#include "message/code_page.h"
#include "message/logmsg_render.h"
#include "qzlog/logcfg.h"

namespace qzlog {

namespace {

IcuArgument text_argument(const char* text, std::size_t length) {
  return {IcuArgument::Type::kText, text, length, 0, 0.0};
}

IcuArgument integer_argument(int value) { return {IcuArgument::Type::kInteger, nullptr, 0, value, 0.0}; }

/// A moment for ICU: the calendar fields are read as local time whatever the value's mode.
IcuArgument time_argument(qz_Time time) {
  constexpr double kMillisecondsPerSecond = 1000.0;
  time.set_GMT_time_mode(false);
  return {IcuArgument::Type::kTime, nullptr, 0, 0, static_cast<double>(time.unix_seconds()) * kMillisecondsPerSecond};
}

/// What cannot be decoded for want of the code page is empty.
void fill_text(const IcuArgument& argument, icu::Formattable& target) {
  target.setString(decode_text(argument.text, qz_LOG_LogConfig::GetCodePage()));
  UErrorCode status = U_ZERO_ERROR;
  target.getString(status);
  if (U_FAILURE(status)) throw QZX_memory_alloc();
}

}  // namespace

IcuArgument IcuArguments::read(const MessageReference& reference) const {
  if (reference.kind == MessageFormatKind::kText) return read_text(reference);
  if (reference.kind == MessageFormatKind::kDate || reference.kind == MessageFormatKind::kTime) {
    return time_argument(referenced_time(entry_, reference.name->text()));
  }
  if (is_integer_attribute(reference.type)) return read_integer(reference);
  return {IcuArgument::Type::kFloat, nullptr, 0, 0, entry_.get_attrib_float8(reference.name->text())};
}

IcuArgument IcuArguments::read_text(const MessageReference& reference) const {
  const _qz_LOG_type_base* const stored = entry_.find_value(reference.name, reference.order);
  const bool fits = stored != nullptr && stored->get_type() == reference.type;
  if (is_unicode_string_attribute(reference.type)) {
    if (fits) {
      const auto& text = value_as<_qz_LOG_ustring>(*stored);
      return text_argument(text.text(), text.length);
    }
    const char* const text = entry_.get_attrib_mbstr(reference.name->text());
    return text_argument(text, QZ_strlen(text));
  }
  if (fits && reference.type != TypeGUID) {
    const auto& text = value_as<qz_String>(*stored);
    return text_argument(text.c_str(), text.length());
  }
  const char* const text = entry_.get_attrib_str(reference.name->text());
  return text_argument(text, QZ_strlen(text));
}

IcuArgument IcuArguments::read_integer(const MessageReference& reference) const {
  const _qz_LOG_type_base* const stored = entry_.find_value(reference.name, reference.order);
  if (stored != nullptr && stored->get_type() == reference.type) {
    if (reference.type == TypeUInt4) return integer_argument(static_cast<int>(value_as<unsigned>(*stored)));
    if (reference.type == TypeSInt4) return integer_argument(value_as<int>(*stored));
  }
  return integer_argument(entry_.get_attrib_as_4(reference.name->text()));
}

void fill_argument(const IcuArgument& argument, icu::Formattable& target) {
  switch (argument.type) {
    case IcuArgument::Type::kText:
      return fill_text(argument, target);
    case IcuArgument::Type::kInteger:
      return target.setLong(argument.integer);
    case IcuArgument::Type::kFloat:
      return target.setDouble(argument.number);
    case IcuArgument::Type::kTime:
      return target.setDate(argument.number);
  }
}

}  // namespace qzlog
