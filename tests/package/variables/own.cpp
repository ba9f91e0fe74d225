// Of a program that never heard of the library's variables.
#include "parts.h"

VISIBLE int debug_log_level = 9;
VISIBLE const char* b_is_icu_enabled = nullptr;
VISIBLE int action_on_exceed = 1;
VISIBLE extern const double AttributeTypeList;
const double AttributeTypeList = 0.5;

bool own_variables_are_untouched() {
  return debug_log_level == 9 && b_is_icu_enabled == nullptr && action_on_exceed == 1 && AttributeTypeList == 0.5;
}
