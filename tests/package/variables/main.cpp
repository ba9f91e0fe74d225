#include <cstdio>

#include "parts.h"
#include "qzlog/debug_log.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"

namespace {

int failures = 0;

void expect(bool condition, const char* what) {
  if (condition) return;
  std::printf("  wrong: %s\n", what);
  ++failures;
}

Values library_read() {
  return {GetDebugLogLevel(), qz_LOG_LogConfig::IsICUEnabled(), qz_LOG_LogConfig::GetActionAttrLenExceed()};
}

void library_write(const Values& values) {
  EnableDebugLog(static_cast<int>(values.level));
  qz_LOG_LogConfig::SetICUEnabled(values.icu);
  qz_LOG_LogConfig::SetActionAttrLenExceed(values.action);
}

const Values kInitially = {0, true, 0};
const Values kOther = {1, false, 1};  // level 1: the settings' own records are of level 2

/// The name's place in memory.
const char* last_type(const void* list) { return static_cast<const qz_AttributeTypeName*>(list)[TypeGUID - 1].name; }

void check_type_list() {
  expect(_qz_LOG_get_attribute_type_code("TypeGUID") == TypeGUID, "the library's list of types");
  expect(last_type(header_type_list()) == _qz_LOG_get_attribute_type_string(TypeGUID), "the header's list of types");
}

void check_shared(void (*write)(const Values&), Values (*read)()) {
  library_write(kOther);
  expect(read() == kOther, "what the library wrote");
  write(kInitially);
  expect(library_read() == kInitially, "what the library reads");
}

}  // namespace

int main() {
  expect(library_read() == kInitially, "what the library starts with");
  expect(header_read() == kInitially, "what the header shows at the start");
  check_type_list();
  check_shared(header_write, header_read);
#ifdef OWN
  library_write(kOther);
  expect(own_variables_are_untouched(), "the program's own variables");
#else
  expect(declared_read() == kInitially, "what the declarations show at the start");
  check_shared(declared_write, declared_read);
  expect(last_type(declared_type_list()) == last_type(header_type_list()), "one list of types");
#endif
  return failures == 0 ? 0 : 1;
}
