#include "qzlog/logentry.h"

#include <cstdarg>

#include "entry/logentry_i.h"
#include "foundation/allocate.h"
#include "foundation/atomic_word.h"
#include "message/code_page.h"

using namespace qzlog;

namespace {

/// Converts between code pages; see ConvertToUTF8.
int convert(const char* source, const char* source_code_page, char* target, unsigned int& size,
            const char* target_code_page) try {
  constexpr unsigned kMaxCapacity = 0x7FFFFFFF;
  const icu::UnicodeString text = decode_text(source, source_code_page);
  int length = 0;
  const int capacity = static_cast<int>(size < kMaxCapacity ? size : kMaxCapacity);
  if (text.isBogus() || !encode_text(text, target_code_page, target, capacity, length)) return 0;
  // The terminator comes on top of `size`.
  target[length] = '\0';
  size = static_cast<unsigned int>(length);
  return 1;
} catch (const QZX_memory_alloc&) {
  return 0;
}

bool can_convert(const char* source, const char* target, unsigned int size, const char* codepage) {
  return source != nullptr && target != nullptr && codepage != nullptr && size != 0;
}

}  // namespace

qz_LOG_AttributeVisitor::~qz_LOG_AttributeVisitor() = default;

qz_LOG_LogEntry::qz_LOG_LogEntry(_qz_LOG_log_entry_imp* implementation)
    : implementation_(implementation), head_(&implementation->get_head()) {}

qz_LOG_LogEntry::qz_LOG_LogEntry() : qz_LOG_LogEntry(new_object<_qz_LOG_log_entry_imp>()) {}

qz_LOG_LogEntry::qz_LOG_LogEntry(unsigned int entry_id, unsigned int log_level)
    : qz_LOG_LogEntry(new_object<_qz_LOG_log_entry_imp>(entry_id, log_level)) {}

qz_LOG_LogEntry::qz_LOG_LogEntry(const qz_LOG_LogEntry& other) : qz_LOG_LogEntry() {
  *implementation_ = *other.implementation_;
}

qz_LOG_LogEntry& qz_LOG_LogEntry::operator=(const qz_LOG_LogEntry& other) {
  *implementation_ = *other.implementation_;
  return *this;
}

qz_LOG_LogEntry::~qz_LOG_LogEntry() { delete implementation_; }

unsigned int qz_LOG_LogEntry::GetEntryID() const { return implementation_->get_entry_id(); }

void qz_LOG_LogEntry::SetEntryID(unsigned int entry_id) { implementation_->set_entry_id(entry_id); }

unsigned int qz_LOG_LogEntry::GetLogLevel() const { return implementation_->get_log_level(); }

void qz_LOG_LogEntry::SetLogLevel(unsigned int log_level) { implementation_->set_log_level(log_level); }

unsigned int qz_LOG_LogEntry::GetPropertyMask() const { return implementation_->get_property_mask(); }

void qz_LOG_LogEntry::SetEntry(unsigned int entry_id, unsigned int log_level, ...) {
  implementation_->set_entry_id(entry_id);
  implementation_->set_log_level(log_level);
  std::va_list arguments;
  va_start(arguments, log_level);
  try {
    implementation_->add_attributes(arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
}

void qz_LOG_LogEntry::AddAttribBool(const char* name, bool value) { implementation_->add_attrib_bool(name, value); }

void qz_LOG_LogEntry::AddAttrib1u(const char* name, unsigned char value) {
  implementation_->add_attrib_1u(name, value);
}

void qz_LOG_LogEntry::AddAttrib1(const char* name, char value) { implementation_->add_attrib_1(name, value); }

void qz_LOG_LogEntry::AddAttrib2u(const char* name, unsigned short value) {
  implementation_->add_attrib_2u(name, value);
}

void qz_LOG_LogEntry::AddAttrib2(const char* name, short value) { implementation_->add_attrib_2(name, value); }

void qz_LOG_LogEntry::AddAttrib4u(const char* name, unsigned int value) { implementation_->add_attrib_4u(name, value); }

void qz_LOG_LogEntry::AddAttrib4(const char* name, int value) { implementation_->add_attrib_4(name, value); }

void qz_LOG_LogEntry::AddAttribFloat8(const char* name, double value) {
  implementation_->add_attrib_float8(name, value);
}

void qz_LOG_LogEntry::AddAttribTime(const char* name, const qz_Time& value) {
  implementation_->add_attrib_time(name, value);
}

void qz_LOG_LogEntry::AddAttribStr(const char* name, const char* value) {
  implementation_->add_attrib_str(name, value, true);
}

void qz_LOG_LogEntry::AddAttribMBStr(const char* name, const char* value) {
  implementation_->add_attrib_mbstr(name, value, true);
}

bool qz_LOG_LogEntry::GetAttribBool(const char* name) const { return implementation_->get_attrib_bool(name); }

unsigned char qz_LOG_LogEntry::GetAttrib1u(const char* name) const { return implementation_->get_attrib_1u(name); }

char qz_LOG_LogEntry::GetAttrib1(const char* name) const { return implementation_->get_attrib_1(name); }

unsigned short qz_LOG_LogEntry::GetAttrib2u(const char* name) const { return implementation_->get_attrib_2u(name); }

short qz_LOG_LogEntry::GetAttrib2(const char* name) const { return implementation_->get_attrib_2(name); }

unsigned int qz_LOG_LogEntry::GetAttrib4u(const char* name) const { return implementation_->get_attrib_4u(name); }

int qz_LOG_LogEntry::GetAttrib4(const char* name) const { return implementation_->get_attrib_4(name); }

double qz_LOG_LogEntry::GetAttribFloat8(const char* name) const { return implementation_->get_attrib_float8(name); }

qz_Time qz_LOG_LogEntry::GetAttribTime(const char* name) const { return implementation_->get_attrib_time(name); }

const char* qz_LOG_LogEntry::GetAttribStr(const char* name) const { return implementation_->get_attrib_str(name); }

const char* qz_LOG_LogEntry::GetAttribMBStr(const char* name) const { return implementation_->get_attrib_mbstr(name); }

bool qz_LOG_LogEntry::GetAttribBool(const char* name, bool& value) const {
  return implementation_->get_attrib_bool(name, value);
}

bool qz_LOG_LogEntry::GetAttrib1u(const char* name, unsigned char& value) const {
  return implementation_->get_attrib_1u(name, value);
}

bool qz_LOG_LogEntry::GetAttrib1(const char* name, char& value) const {
  return implementation_->get_attrib_1(name, value);
}

bool qz_LOG_LogEntry::GetAttrib2u(const char* name, unsigned short& value) const {
  return implementation_->get_attrib_2u(name, value);
}

bool qz_LOG_LogEntry::GetAttrib2(const char* name, short& value) const {
  return implementation_->get_attrib_2(name, value);
}

bool qz_LOG_LogEntry::GetAttrib4u(const char* name, unsigned int& value) const {
  return implementation_->get_attrib_4u(name, value);
}

bool qz_LOG_LogEntry::GetAttrib4(const char* name, int& value) const {
  return implementation_->get_attrib_4(name, value);
}

bool qz_LOG_LogEntry::GetAttribFloat8(const char* name, double& value) const {
  return implementation_->get_attrib_float8(name, value);
}

bool qz_LOG_LogEntry::GetAttribTime(const char* name, qz_Time& value) const {
  return implementation_->get_attrib_time(name, value);
}

bool qz_LOG_LogEntry::GetAttribStr(const char* name, const char*& value) const {
  return implementation_->get_attrib_str(name, value);
}

bool qz_LOG_LogEntry::GetAttribMBStr(const char* name, const char*& value) const {
  return implementation_->get_attrib_mbstr(name, value);
}

bool qz_LOG_LogEntry::RemoveAttrib(const char* name) { return implementation_->remove_attrib(name); }

void qz_LOG_LogEntry::ClearAttribs() { implementation_->clear_attribs(true); }

int qz_LOG_LogEntry::CheckAttribute(const char* name, qz_AttributeType& type) const {
  return implementation_->check_attribute(name, type);
}

void qz_LOG_LogEntry::VisitAttributes(qz_LOG_AttributeVisitor& visitor) const {
  implementation_->visit_attributes(visitor);
}

void qz_LOG_LogEntry::SetTimestamp(const qz_Time& time, bool gmt) { implementation_->set_timestamp(time, gmt); }

qz_Time qz_LOG_LogEntry::GetTimestamp(bool gmt) const { return implementation_->get_timestamp(gmt); }

void qz_LOG_LogEntry::GetEventLocalDate(unsigned short& year, unsigned short& month, unsigned short& day) const {
  const qz_Time time = implementation_->get_timestamp(false);
  year = static_cast<unsigned short>(time.get_year());
  month = static_cast<unsigned short>(time.get_month());
  day = static_cast<unsigned short>(time.get_day());
}

void qz_LOG_LogEntry::GetEventLocalTime(unsigned short& hour, unsigned short& minute, unsigned short& second) const {
  const qz_Time time = implementation_->get_timestamp(false);
  hour = static_cast<unsigned short>(time.get_hour());
  minute = static_cast<unsigned short>(time.get_minute());
  second = static_cast<unsigned short>(time.get_second());
}

void qz_LOG_LogEntry::SetComputerInfo(const char* name) { implementation_->set_computer_info(name); }

void qz_LOG_LogEntry::SetProductCode(unsigned int code) { implementation_->set_product_code(code); }

void qz_LOG_LogEntry::SetProductPlatformCode(unsigned int code) { implementation_->set_product_platform_code(code); }

void qz_LOG_LogEntry::SetProductLanguageCode(unsigned int code) { implementation_->set_product_language_code(code); }

void qz_LOG_LogEntry::SetProductVersion(const char* version) { implementation_->set_product_version(version); }

void qz_LOG_LogEntry::SetComponentCode(unsigned int code) { implementation_->set_component_code(code); }

void qz_LOG_LogEntry::SetSeverityCode(unsigned int code) { implementation_->set_severity_code(code); }

void qz_LOG_LogEntry::SetReasonCode(int code) { implementation_->set_reason_code(code); }

void qz_LOG_LogEntry::SetReasonCodeSource(unsigned int code) { implementation_->set_reason_code_source(code); }

const char* qz_LOG_LogEntry::GetComputerInfo() const { return implementation_->get_computer_info(); }

unsigned short qz_LOG_LogEntry::GetProductCode() const { return implementation_->get_product_code(); }

unsigned short qz_LOG_LogEntry::GetProductPlatformCode() const { return implementation_->get_product_platform_code(); }

unsigned int qz_LOG_LogEntry::GetProductLanguageCode() const { return implementation_->get_product_language_code(); }

const char* qz_LOG_LogEntry::GetProductVersion() const { return implementation_->get_product_version(); }

unsigned int qz_LOG_LogEntry::GetComponentCode() const { return implementation_->get_component_code(); }

unsigned char qz_LOG_LogEntry::GetSeverityCode() const { return implementation_->get_severity_code(); }

int qz_LOG_LogEntry::GetReasonCode() const { return implementation_->get_reason_code(); }

unsigned int qz_LOG_LogEntry::GetReasonCodeSource() const { return implementation_->get_reason_code_source(); }

std::string qz_LOG_LogEntry::FormatMessage(bool use_default, unsigned int selector_index) const {
  return implementation_->format_message(use_default, selector_index);
}

void qz_LOG_LogEntry::FormatMessage(std::string& message, bool use_default, unsigned int selector_index) const {
  implementation_->format_message(message, use_default, selector_index);
}

const char* qz_LOG_LogEntry::GetReadableMessage(char* buffer, long size, bool use_default,
                                                unsigned int selector_index) const {
  return implementation_->get_readable_message(buffer, size, use_default, selector_index);
}

const char* qz_LOG_LogEntry::GetReadableMessage(bool use_default, unsigned int selector_index) const {
  return implementation_->get_readable_message(use_default, selector_index);
}

qz_LOG_LogEntry::operator const char*() const { return implementation_->get_readable_message(false, 0); }

int qz_LOG_LogEntry::ConvertToUTF8(const char* source, char* target, unsigned int& size, const char* codepage) {
  return can_convert(source, target, size, codepage) ? convert(source, codepage, target, size, "UTF8") : 0;
}

int qz_LOG_LogEntry::ConvertFromUTF8(const char* source, char* target, unsigned int& size, const char* codepage) {
  return can_convert(source, target, size, codepage) ? convert(source, "UTF8", target, size, codepage) : 0;
}

void qz_LOG_LogEntry::SetOperationMode(unsigned int mode) {
  store_word(_qz_LOG_log_entry_imp::global_operation_mode, mode);
}

unsigned int qz_LOG_LogEntry::GetLogMajorVersion() { return _qz_LOG_log_entry_imp::get_log_major_version(); }

unsigned int qz_LOG_LogEntry::GetLogMinorVersion() { return _qz_LOG_log_entry_imp::get_log_minor_version(); }

void qz_LOG_LogEntry::GetLogVersion(unsigned int& major, unsigned int& minor) {
  _qz_LOG_log_entry_imp::get_log_version(major, minor);
}

bool qz_LOG_LogEntry::AddAttributeDefinition(unsigned int entry_id, const char* name, qz_AttributeType type) {
  return _qz_LOG_log_entry_imp::add_product_specific_attribute_definition(entry_id, name, type);
}
