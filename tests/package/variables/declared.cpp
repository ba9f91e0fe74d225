// Without the library's headers.
#include "parts.h"

enum qz_AttributeType : int;
struct qz_AttributeTypeName {
  const char* name;
  qz_AttributeType code;
};

extern unsigned debug_log_level;
extern bool b_is_icu_enabled;
extern int action_on_exceed;
extern const qz_AttributeTypeName AttributeTypeList[26];

void declared_write(const Values& values) {
  debug_log_level = values.level;
  b_is_icu_enabled = values.icu;
  action_on_exceed = values.action;
}

Values declared_read() { return {debug_log_level, b_is_icu_enabled, action_on_exceed}; }

const void* declared_type_list() { return AttributeTypeList; }
