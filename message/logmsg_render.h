#ifndef QZLOG_MESSAGE_LOGMSG_RENDER_H
#define QZLOG_MESSAGE_LOGMSG_RENDER_H

#include "message/logmsg_tokens.h"
#include "qzlog/logattrib.h"
#include "qzlog/qz_time.h"

class _qz_LOG_log_definition;
class _qz_LOG_log_entry_imp;

/// What both paths of rendering share: the grammar of references and what their formats accept.

/// How a reference is rendered, by its format character.
enum class MessageFormatKind {
  kUnknown,   // not an error: the reference is left out
  kText,      // s
  kCurrency,  // C
  kPercent,   // P
  kDate,      // D
  kTime,      // T
  kFloat,     // f
  kInteger    // d, u
};
MessageFormatKind message_format_kind(char format);

/// One attribute reference of a template.
struct MessageReference {
  const char* name;
  qz_AttributeType type;
  MessageFormatKind kind;
};

/// The argument token of a format token, or null when another token, or none, follows.
const _qz_LOG_arg_spec_token* argument_of(const _qz_LOG_msg_token& format_token);

/// Reports a format token without an argument, which is left out.
void report_missing_argument();

/// The reference made by a format and its argument. QZX_logging_invalid_message_string when the definition does not
/// know the attribute, or when its type does not go with the format.
MessageReference resolve_reference(const _qz_LOG_msg_token& format_token, const _qz_LOG_arg_spec_token& argument,
                                   const _qz_LOG_log_definition& definition);

/// The time of a reference: the entry's own, on the local clock, for "TIMESTAMP".
qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name);

/// Hands every text token and every reference that is rendered to `sink`, in the order of the template:
/// sink.text(const _qz_LOG_msg_token&) and sink.reference(const MessageReference&).
template <typename Sink>
void render_tokens(const _qz_LOG_msg_token_list& tokens, const _qz_LOG_log_definition& definition, Sink& sink) {
  for (const _qz_LOG_msg_token* token = tokens.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_STRING_TOKEN) sink.text(*token);
    if (token->get_type() != _QZ_FMT_SPECIFIER_TOKEN) continue;
    const _qz_LOG_arg_spec_token* const argument = argument_of(*token);
    if (argument == nullptr) {
      report_missing_argument();
      continue;
    }
    const MessageReference reference = resolve_reference(*token, *argument, definition);
    if (reference.kind != MessageFormatKind::kUnknown) sink.reference(reference);
    token = argument;
  }
}

#endif  // QZLOG_MESSAGE_LOGMSG_RENDER_H
