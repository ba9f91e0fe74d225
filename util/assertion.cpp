#include "util/assertion.h"

#include <cstdio>

#include "util/debug_record.h"

void QZ_assertion_violation(const char* expression, const char* file, int line) {
  std::fprintf(stderr, "%s:%d assertion violated: %s\n", file, line, expression);
  QZ_DEBUG_RECORD_AT(1, file, line, "%s:%d QZ_assertion_violation, %s\n", expression);
}
