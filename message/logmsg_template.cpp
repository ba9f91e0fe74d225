#include "entry/logentry_i.h"
#include "message/code_page.h"
#include "message/logmsg.h"

namespace {

/// What of a message is collected: its ID for the catalog, or its own text.
enum class Field { kId, kText };

const char* field_of(const _qz_LOG_selector_message& message, Field field) {
  return field == Field::kId ? message.get_message_id() : message.get_message_text();
}

const char* default_field(const _qz_LOG_log_definition& definition, Field field) {
  return field == Field::kId ? definition.get_default_msg_id() : definition.get_default_msg_text();
}

unsigned int selector_value(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_attribute_entry& selector) {
  switch (selector.get_type()) {
    case TypeUInt1:
      return entry.get_attrib_1u(selector.get_name());
    case TypeUInt2:
      return entry.get_attrib_2u(selector.get_name());
    default:
      return entry.get_attrib_4u(selector.get_name());
  }
}

/// The selector message that the index or the entry's value picks, or null for the default message.
const _qz_LOG_selector_message* pick_selector_message(const _qz_LOG_log_entry_imp& entry,
                                                      const _qz_LOG_log_definition& definition,
                                                      unsigned int selector_index) {
  if (selector_index != 0) {
    const _qz_LOG_selector_message* const message = definition.get_selector_msg_by_index(selector_index);
    if (message != nullptr) return message;
    throw QZX_logging_invalid_message_string(
        "<QZX_logging_invalid_message_string> Invalid selector message index specified.", 0);
  }
  const _qz_LOG_attribute_entry* const selector = definition.get_selector_attribute();
  if (selector == nullptr || !entry.has_value(selector->get_name())) return nullptr;
  return definition.get_selector_msg_by_value(selector_value(entry, *selector));
}

/// Null when the definition has no default message either.
const char* choose_field(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition* definition, bool use_default,
                         unsigned int selector_index, Field field) {
  if (definition == nullptr) {
    throw QZX_logging_misc("_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized", 0);
  }
  const char* chosen = nullptr;
  if (!use_default) {
    const _qz_LOG_selector_message* const message = pick_selector_message(entry, *definition, selector_index);
    if (message != nullptr) chosen = field_of(*message, field);
  }
  return chosen != nullptr ? chosen : default_field(*definition, field);
}

}  // namespace

icu::UnicodeString _qz_LOG_log_message::_get_message_string(const _qz_LOG_log_entry_imp& entry,
                                                            const _qz_LOG_log_definition* definition, bool use_default,
                                                            unsigned int selector_index) {
  if (is_catalog_open()) {
    const char* const id = choose_field(entry, definition, use_default, selector_index, Field::kId);
    if (id == nullptr) {
      throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition>  no default message", 0);
    }
    return _get_string(id);
  }
  const char* const text = choose_field(entry, definition, use_default, selector_index, Field::kText);
  return text != nullptr ? decode_text(text, "") : icu::UnicodeString();
}

qz_String _qz_LOG_log_message::_get_message_qzString(const _qz_LOG_log_entry_imp& entry,
                                                     const _qz_LOG_log_definition* definition, bool use_default,
                                                     unsigned int selector_index) {
  return qz_String(choose_field(entry, definition, use_default, selector_index, Field::kText));
}
