#include "message/logmsg_render.h"

#include "entry/logentry_i.h"
#include "message/template_pieces.h"
#include "util/assertion.h"

namespace {

bool accepts(MessageFormatKind kind, qz_AttributeType type) {
  switch (kind) {
    case MessageFormatKind::kText:
      return is_unicode_string_attribute(type) || is_string_attribute(type);
    case MessageFormatKind::kCurrency:
    case MessageFormatKind::kPercent:
      return is_integer_attribute(type) || is_float_attribute(type);
    case MessageFormatKind::kDate:
    case MessageFormatKind::kTime:
      return is_time_attribute(type);
    case MessageFormatKind::kFloat:
      return is_float_attribute(type);
    case MessageFormatKind::kInteger:
      return is_integer_attribute(type);
    case MessageFormatKind::kUnknown:
      break;
  }
  return true;
}

[[noreturn]] void throw_bad_reference(const char* text_before_name, const char* name) {
  qz_String text(text_before_name);
  text += name;
  text += "\"!";
  throw QZX_logging_invalid_message_string(text.c_str(), 0);
}

qz_AttributeType type_of(const TemplatePiece& piece, const _qz_LOG_log_definition& definition) {
  if (piece.standard_type != TypeUnknown) return static_cast<qz_AttributeType>(piece.standard_type);
  const _qz_LOG_attribute_entry* const attribute = definition.find_attribute(piece.name());
  if (attribute == nullptr) {
    throw_bad_reference(
        "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
        "unable to find attribute value for \"",
        piece.text);
  }
  return static_cast<qz_AttributeType>(attribute->get_type());
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

MessageReference resolve_reference(const TemplatePiece& piece, const _qz_LOG_log_definition& definition) {
  const MessageReference reference{piece.name(), type_of(piece, definition), piece.kind};
  if (!accepts(reference.kind, reference.type)) {
    throw_bad_reference(
        "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  "
        "invalid format specifier for attribute \"",
        piece.text);
  }
  return reference;
}

qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name) {
  return QZ_strcmp(name, "TIMESTAMP") == 0 ? entry.get_timestamp(false) : entry.get_attrib_time(name);
}
