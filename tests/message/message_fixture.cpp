#include "tests/message/message_fixture.h"

#include <unicode/ucnv.h>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"

namespace qz_test {

std::vector<LdfAttribute> attributes_of_every_type() {
  std::vector<LdfAttribute> attributes;
  for (const qz_AttributeTypeName* row = AttributeTypeList; row->name != nullptr; ++row) {
    attributes.push_back({row->name, static_cast<unsigned>(row->code)});
  }
  attributes.push_back({"Größe", TypeUInt4});
  attributes.push_back({"名前", TypeMBChar64});
  return attributes;
}

icu::UnicodeString from_utf8(const std::string& text) { return icu::UnicodeString::fromUTF8(text); }

std::string to_utf8(const icu::UnicodeString& text) {
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

RenderingSettings::RenderingSettings() : zone_("Asia/Kathmandu"), previous_zone_(icu::TimeZone::createDefault()) {
  ucnv_setDefaultName("UTF-8");
  set_icu_locale("en_US");
  set_icu_zone("Asia/Kathmandu");
}

RenderingSettings::~RenderingSettings() {
  reset_settings();
  qz_LOG_LogEntry::SetOperationMode(2);
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(previous_locale_, status);
  icu::TimeZone::setDefault(*previous_zone_);
}

void RenderingSettings::load(const std::vector<LdfEntry>& entries, const std::vector<LdfAttribute>& globals) const {
  const LdfFile file{.tag = "1.0", .globals = globals, .entries = entries};
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
}

void RenderingSettings::set_icu_locale(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(icu::Locale(name), status);
  EXPECT_TRUE(U_SUCCESS(status)) << name;
}

void RenderingSettings::set_icu_zone(const char* id) { icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(id)); }

MessageRendering::MessageRendering() {
  const std::vector<LdfAttribute> attributes = attributes_of_every_type();
  settings_.load({{.id = kEntryId, .attributes = attributes}}, {{"Global", TypeSInt4}});
  for (const LdfAttribute& attribute : attributes) {
    definition_.add_attr_info(attribute.name.c_str(), static_cast<unsigned char>(attribute.type), false, nullptr);
  }
  entry_ = std::make_unique<_qz_LOG_log_entry_imp>(kEntryId, 0);
}

std::string MessageRendering::narrow(const std::string& message_template) {
  definition_.set_default_msg_text(message_template.c_str());
  const qz_String message = _qz_LOG_log_message::get_qzString_message(*entry_, &definition_, false, 0);
  return std::string(message.c_str(), message.length());
}

std::string MessageRendering::icu(const std::string& message_template) {
  definition_.set_default_msg_text(message_template.c_str());
  return to_utf8(_qz_LOG_log_message::get_message(*entry_, &definition_, false, 0));
}

}  // namespace qz_test
