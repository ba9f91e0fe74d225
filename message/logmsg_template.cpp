#include "entry/logentry_i.h"
#include "message/code_page.h"
#include "message/logmsg.h"

using namespace qzlog;

namespace {

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

/// The selector message to render, or null for the default message.
const _qz_LOG_selector_message* choose_selector_message(const _qz_LOG_log_entry_imp& entry,
                                                        const _qz_LOG_log_definition* definition, bool use_default,
                                                        unsigned int selector_index) {
  if (definition == nullptr) {
    throw QZX_logging_misc("_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized", 0);
  }
  return use_default ? nullptr : pick_selector_message(entry, *definition, selector_index);
}

}  // namespace

const DefinitionMessage& _qz_LOG_log_message::choose_message_text(const _qz_LOG_log_entry_imp& entry,
                                                                  const _qz_LOG_log_definition* definition,
                                                                  bool use_default, unsigned int selector_index) {
  const _qz_LOG_selector_message* const chosen =
      choose_selector_message(entry, definition, use_default, selector_index);
  return chosen != nullptr && chosen->get_message_text() != nullptr ? chosen->get_message()
                                                                    : definition->get_default_message();
}

const char* _qz_LOG_log_message::choose_message_id(const _qz_LOG_log_entry_imp& entry,
                                                   const _qz_LOG_log_definition* definition, bool use_default,
                                                   unsigned int selector_index) {
  const auto* const chosen = choose_selector_message(entry, definition, use_default, selector_index);
  const char* const id = chosen != nullptr && chosen->get_message_id() != nullptr ? chosen->get_message_id()
                                                                                  : definition->get_default_msg_id();
  if (id != nullptr) return id;
  throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition>  no default message", 0);
}

icu::UnicodeString _qz_LOG_log_message::_get_message_string(const _qz_LOG_log_entry_imp& entry,
                                                            const _qz_LOG_log_definition* definition, bool use_default,
                                                            unsigned int selector_index) {
  if (is_catalog_open()) return _get_string(choose_message_id(entry, definition, use_default, selector_index));
  const char* const text = choose_message_text(entry, definition, use_default, selector_index).get();
  return text != nullptr ? decode_text(text, "") : icu::UnicodeString();
}

qz_String _qz_LOG_log_message::_get_message_qzString(const _qz_LOG_log_entry_imp& entry,
                                                     const _qz_LOG_log_definition* definition, bool use_default,
                                                     unsigned int selector_index) {
  return qz_String(choose_message_text(entry, definition, use_default, selector_index).get());
}
