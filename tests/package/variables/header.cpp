#include "parts.h"
#include "qzlog/debug_log.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"

void header_write(const Values& values) {
  debug_log_level = values.level;
  b_is_icu_enabled = values.icu;
  action_on_exceed = values.action;
}

Values header_read() { return {debug_log_level, b_is_icu_enabled, action_on_exceed}; }

const void* header_type_list() { return AttributeTypeList; }
