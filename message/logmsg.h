#ifndef QZLOG_MESSAGE_LOGMSG_H
#define QZLOG_MESSAGE_LOGMSG_H

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "definitions/prepared_message.h"
#include "qzlog/qz_string.h"

class _qz_LOG_log_definition;
class _qz_LOG_log_entry_imp;
class _qz_LOG_msg_token_list;

namespace qzlog {
class IcuMessage;
class TextBuffer;
}  // namespace qzlog

/// Readable messages: templates, their tokens and rendering, and the message catalog. Static functions only.
///
/// The catalog and the locale are set under the process-wide lock and read without one: changing them while messages
/// are rendered is not supported. Rendering itself may run in many threads at once. Running out of memory throws
/// QZX_memory_alloc.
class _qz_LOG_log_message {
 public:
  _qz_LOG_log_message() = delete;

  /// The message of an entry through ICU. Throws QZX_logging_invalid_message_string (template, selector index),
  /// QZX_logging_invalid_definition (no message ID for the catalog), QZX_logging_missing_resource (catalog),
  /// QZX_logging_internal_error (ICU) and what the entry's getters throw.
  static icu::UnicodeString get_message(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                        bool use_default, unsigned int selector_index);
  /// The same, without the detour over Unicode where there is none to make.
  static void format_message(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                             bool use_default, unsigned int selector_index, qzlog::IcuMessage& message);
  /// The message of an entry byte by byte, without ICU and without the catalog.
  static qz_String get_qzString_message(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                        bool use_default, unsigned int selector_index);

  /// The same, appended to a buffer.
  static void append_narrow_message(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                    bool use_default, unsigned int selector_index, qzlog::TextBuffer& message);

  /// The template of each path.
  static icu::UnicodeString _get_message_string(const _qz_LOG_log_entry_imp& entry,
                                                const _qz_LOG_log_definition* definition, bool use_default,
                                                unsigned int selector_index);
  static qz_String _get_message_qzString(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                         bool use_default, unsigned int selector_index);

  /// Where the two come from: the text that a definition has for an entry, or the ID that the catalog is asked for.
  static const qzlog::DefinitionMessage& choose_message_text(const _qz_LOG_log_entry_imp& entry,
                                                             const _qz_LOG_log_definition* definition, bool use_default,
                                                             unsigned int selector_index);
  static const char* choose_message_id(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition,
                                       bool use_default, unsigned int selector_index);

  /// Cut a template into tokens, appended to `list`, which must be empty: one that is not is destroyed and must not be
  /// used any more. The two differ in what they do with "%%", with text behind the last reference and with references
  /// left open; messages in the field rely on each.
  static void _tokenize_string(const icu::UnicodeString& text, _qz_LOG_msg_token_list& list);
  static void _tokenize_qzString(const qz_String& text, _qz_LOG_msg_token_list& list);
  /// The number of format tokens.
  static unsigned int _get_number_of_attributes(const _qz_LOG_msg_token_list& list);

  /// Opens the catalog at `path` for the current locale, or closes it with null. When it cannot be opened,
  /// QZX_logging_missing_resource is thrown and the catalog counts as open: every later lookup fails. The files are
  /// read into memory and checked here; what happens to them later changes nothing.
  static void set_resource_path(const char* path);
  /// "" while no catalog is open. Valid until the next set_resource_path.
  static const char* get_resource_path();
  static bool is_catalog_open();
  /// Opens an open catalog again, for a locale that has changed. One that cannot be opened for it, or not without more
  /// memory, fails at every later lookup.
  static void reopen_catalog() noexcept;
  /// The catalog's template for a message ID; only called while the catalog is open. QZX_logging_missing_resource when
  /// it, or its table of strings, is missing.
  static icu::UnicodeString _get_string(const char* message_id);

  /// What `prepare` made of the catalog's template for a message ID; made once while the catalog stays open.
  using PrepareMessage = qzlog::PreparedMessageRef (*)(const icu::UnicodeString& text,
                                                       const _qz_LOG_log_definition& definition);
  static const qzlog::PreparedMessage& prepare_catalog_message(const char* message_id,
                                                               const _qz_LOG_log_definition& definition,
                                                               PrepareMessage prepare);

  /// The name of the locale below. Valid as long as the locale is in force. Both throw QZX_memory_alloc.
  static const char* get_locale_name();
  /// The locale of messages, numbers and dates: the one that was set, else ICU's default of the process.
  static icu::Locale get_locale();
};

#endif  // QZLOG_MESSAGE_LOGMSG_H
