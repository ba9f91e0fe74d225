#ifndef QZLOG_TOOLS_CATALOG_PO_LINES_H
#define QZLOG_TOOLS_CATALOG_PO_LINES_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace qzlog_catalog {

/// The line, counted from 1, on which each message of a well-formed PO file begins (its msgctxt, or its msgid where it
/// has no context), obsolete messages included, in the order of the file. libgettextpo keeps these to itself.
std::vector<std::size_t> find_message_lines(std::string_view po);

/// The first line of a message's text with an escape that stands for NUL ("\0", "\x00"), 0 when there is none.
/// libgettextpo gives texts up to there.
std::size_t find_nul_escape(std::string_view po);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_PO_LINES_H
