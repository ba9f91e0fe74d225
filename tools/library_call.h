#ifndef QZLOG_TOOLS_LIBRARY_CALL_H
#define QZLOG_TOOLS_LIBRARY_CALL_H

#include <string>
#include <string_view>

#include "qzlog/qz_exception.h"
#include "tools/compiler/utf8_text.h"
#include "tools/entry_error.h"

namespace qzlog_tool {

/// The library's own text for a failure, in one line. It can hold names from a file that nobody has looked at.
inline std::string library_text(const qz_EXCEPTION_base& failure) {
  if (failure.get_message() == nullptr) return "out of memory";  // which alone has no text
  std::string_view text = failure.get_message();
  while (text.ends_with('\n')) text.remove_suffix(1);
  return qzlog_compiler::printable(text);
}

/// Calls `function`; a failure of the library becomes an error of the entry at hand, in the library's own words.
template <class Function>
void call_for_entry(EntryRule rule, Function&& function) {
  try {
    function();
  } catch (const QZX_memory_alloc& failure) {
    throw EntryError{EntryRule::kOutOfMemory, library_text(failure)};
  } catch (const qz_EXCEPTION_base& failure) {
    throw EntryError{rule, library_text(failure)};
  }
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LIBRARY_CALL_H
