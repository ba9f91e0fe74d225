#include "message/logmsg_render.h"

#include "entry/logentry_i.h"
#include "message/template_pieces.h"
#include "util/assertion.h"

namespace {

[[noreturn]] void throw_bad_reference(const char* text_before_name, const char* name) {
  qz_String text(text_before_name);
  text += name;
  text += "\"!";
  throw QZX_logging_invalid_message_string(text.c_str(), 0);
}

}  // namespace

MessageFormatKind message_format_kind(char format) {
  switch (format) {
    case 's':
      return MessageFormatKind::kText;
    case 'C':
      return MessageFormatKind::kCurrency;
    case 'P':
      return MessageFormatKind::kPercent;
    case 'D':
      return MessageFormatKind::kDate;
    case 'T':
      return MessageFormatKind::kTime;
    case 'f':
      return MessageFormatKind::kFloat;
    case 'd':
    case 'u':
      return MessageFormatKind::kInteger;
    default:
      return MessageFormatKind::kUnknown;
  }
}

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
  const _qz_LOG_attribute_entry* const attribute = definition.find_attribute(_qz_LOG_attribute_name(name));
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

qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name) {
  return QZ_strcmp(name, "TIMESTAMP") == 0 ? entry.get_timestamp(false) : entry.get_attrib_time(name);
}
