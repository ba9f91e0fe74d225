#ifndef QZLOG_MESSAGE_LOGMSG_TOKENS_H
#define QZLOG_MESSAGE_LOGMSG_TOKENS_H

#include <unicode/unistr.h>

#include "foundation/no_copies.h"
#include "qzlog/qz_string.h"

enum : int { _QZ_STRING_TOKEN = 0, _QZ_FMT_SPECIFIER_TOKEN = 1, _QZ_ARG_SPECIFIER_TOKEN = 2 };

/// One token of a message template, linked to the one behind it.
class _qz_LOG_msg_token : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Destroys the tokens behind this one too.
  virtual ~_qz_LOG_msg_token();

  int get_type() const { return type_; }
  const _qz_LOG_msg_token* get_next() const { return next_; }

 protected:
  explicit _qz_LOG_msg_token(int type) : type_(type) {}

 private:
  friend class _qz_LOG_msg_token_list;
  int type_;
  _qz_LOG_msg_token* next_ = nullptr;
};

/// Literal text of the ICU path.
class _qz_LOG_string_token : public _qz_LOG_msg_token {
 public:
  explicit _qz_LOG_string_token(const icu::UnicodeString& text) : _qz_LOG_msg_token(_QZ_STRING_TOKEN), text_(text) {}
  const icu::UnicodeString& get_text() const { return text_; }

 private:
  icu::UnicodeString text_;
};

/// Literal text of the narrow path.
class _qz_LOG_qzString_token : public _qz_LOG_msg_token {
 public:
  explicit _qz_LOG_qzString_token(const qz_String& text) : _qz_LOG_msg_token(_QZ_STRING_TOKEN), text_(text) {}
  const qz_String& get_text() const { return text_; }

 private:
  qz_String text_;
};

/// The format character that opens a reference.
class _qz_LOG_fmt_spec_token : public _qz_LOG_msg_token {
 public:
  explicit _qz_LOG_fmt_spec_token(char format) : _qz_LOG_msg_token(_QZ_FMT_SPECIFIER_TOKEN), format_(format) {}
  char get_format() const { return format_; }

 private:
  char format_;
};

/// The attribute name of a reference, in UTF-8 on the ICU path.
class _qz_LOG_arg_spec_token : public _qz_LOG_msg_token {
 public:
  explicit _qz_LOG_arg_spec_token(const qz_String& name) : _qz_LOG_msg_token(_QZ_ARG_SPECIFIER_TOKEN), name_(name) {}
  const qz_String& get_name() const { return name_; }

 private:
  qz_String name_;
};

/// The tokens of one template, owned.
class _qz_LOG_msg_token_list : public qz_UTIL_no_inadvertant_copies {
 public:
  ~_qz_LOG_msg_token_list() { delete head_; }

  /// Takes ownership.
  void add_to_tail(_qz_LOG_msg_token* token);
  const _qz_LOG_msg_token* get_head() const { return head_; }
  /// Destroys every token.
  void clear();

 private:
  _qz_LOG_msg_token* head_ = nullptr;
  _qz_LOG_msg_token* tail_ = nullptr;
};

#endif  // QZLOG_MESSAGE_LOGMSG_TOKENS_H
