#ifndef QZLOG_SINKS_JOURNAL_NAMES_H
#define QZLOG_SINKS_JOURNAL_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>

/// What events and attributes are called in the journal: by the sink that writes there, and by the catalog files that
/// explain it.
namespace qzlog {

/// The field that holds an entry's line.
inline constexpr std::string_view kJournalEntryField = "QZLOG_ENTRY";

/// Whether journald can have a namespace of this name: up to 64 letters, digits and ":", "-", "_", ".", "@".
bool is_journal_namespace(std::string_view name);

/// The digits of an event's MESSAGE_ID.
inline constexpr std::size_t kJournalMessageIdDigits = 32;

/// Writes an event's MESSAGE_ID, without a terminator: the first 128 bits of the SHA-256 of "PRODUCT/ID", with the ID
/// in decimal, as hexadecimal digits in small letters.
void write_journal_message_id(std::string_view product, unsigned id, char* target) noexcept;

/// Appends the name of an attribute's field: QZ_ and the name in capital letters, with "_" in the place of what is
/// neither letter nor digit of ASCII, cut to the 64 characters that a field's name may have.
void append_journal_field_name(std::string_view attribute, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_SINKS_JOURNAL_NAMES_H
