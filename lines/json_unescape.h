#ifndef QZLOG_LINES_JSON_UNESCAPE_H
#define QZLOG_LINES_JSON_UNESCAPE_H

namespace qzlog {

/// The value of a hexadecimal digit, -1 of another character.
int hexadecimal_value(char digit);

/// Puts what the escapes between `begin` and `end` stand for in their place, in UTF-8, and returns where the text ends
/// then: never behind `end`. Null when there is no such escape, or half of a surrogate pair.
char* decode_json_escapes(char* begin, char* end);

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_UNESCAPE_H
