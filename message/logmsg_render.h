#ifndef QZLOG_MESSAGE_LOGMSG_RENDER_H
#define QZLOG_MESSAGE_LOGMSG_RENDER_H

#include "definitions/attribute_name.h"
#include "message/logmsg_tokens.h"
#include "qzlog/logattrib.h"
#include "qzlog/qz_time.h"

class _qz_LOG_log_definition;
class _qz_LOG_log_entry_imp;

/// What both paths of rendering share: the grammar of references and what their formats accept.

/// How a reference is rendered, by its format character.
enum class MessageFormatKind : unsigned char {
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

/// One attribute reference of a template, with the type that it has for a definition.
struct MessageReference {
  const _qz_LOG_known_name* name;
  qz_AttributeType type;
  MessageFormatKind kind;
  unsigned order;  // among the references of the template, from 0
};

/// The argument token of a format token, or null when another token, or none, follows.
const _qz_LOG_arg_spec_token* argument_of(const _qz_LOG_msg_token& format_token);

/// Reports a format token without an argument, which is left out.
void report_missing_argument();

/// The time of a reference: the entry's own, on the local clock, for "TIMESTAMP".
qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name);

#endif  // QZLOG_MESSAGE_LOGMSG_RENDER_H
