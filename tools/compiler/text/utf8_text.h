#ifndef QZLOG_TOOLS_COMPILER_TEXT_UTF8_TEXT_H
#define QZLOG_TOOLS_COMPILER_TEXT_UTF8_TEXT_H

#include "lines/utf8_text.h"

namespace qzlog_compiler {

// The library's, which says in the same words what is wrong with a line of entries.
using qzlog::append_printable;
using qzlog::decode_utf8;
using qzlog::is_line_break;
using qzlog::is_plain;
using qzlog::printable;
using qzlog::quoted;
using qzlog::utf16_length;
using qzlog::utf8_size;
using qzlog::Utf8Character;
using qzlog::without_byte_order_mark;

/// Whether all of the text is well-formed.
inline bool is_utf8(std::string_view text) { return qzlog::is_utf8_text(text); }

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_UTF8_TEXT_H
