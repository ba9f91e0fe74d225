#ifndef QZLOG_TOOLS_RENDER_LIBRARY_CALL_H
#define QZLOG_TOOLS_RENDER_LIBRARY_CALL_H

#include "qzlog/qz_exception.h"
#include "tools/logs/entry_error.h"
#include "tools/report/library_text.h"

namespace qzlog_tool {

/// Calls `function`; a failure of the library becomes an error of the entry at hand, in the library's own words.
template <class Function>
void call_for_entry(EntryRule rule, Function&& function) {
  try {
    function();
  } catch (const QZX_memory_alloc& failure) {
    throw EntryError{entry_rule(qzlog::LineRule::kOutOfMemory), library_text(failure)};
  } catch (const qz_EXCEPTION_base& failure) {
    throw EntryError{rule, library_text(failure)};
  }
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LIBRARY_CALL_H
