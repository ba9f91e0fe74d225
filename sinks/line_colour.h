#ifndef QZLOG_SINKS_LINE_COLOUR_H
#define QZLOG_SINKS_LINE_COLOUR_H

#include <string_view>

namespace qzlog {

/// Whether lines to the descriptor are to be coloured: it is a terminal that can, and NO_COLOR is unset or empty.
bool shows_colour(int descriptor);

/// What stands in front of a line of that level and behind it, both empty for ordinary ones.
std::string_view colour_of_level(unsigned level);
std::string_view end_of_colour(unsigned level);

}  // namespace qzlog

#endif  // QZLOG_SINKS_LINE_COLOUR_H
