#include "foundation/line_breaks.h"

namespace qzlog {
namespace {

/// The line break that a letter behind a backslash stands for, '\0' for any other letter.
char unescaped(char letter) { return letter == 'n' ? '\n' : letter == 'r' ? '\r' : '\0'; }

/// The letter that stands for a line break, '\0' for any other character.
char escape_letter(char character) { return character == '\n' ? 'n' : character == '\r' ? 'r' : '\0'; }

}  // namespace

void escape_line_breaks(const char* source, char* target, int size) {
  int written = 0;
  for (int read = 0; read < size - 1 && written < size - 1 && source[read] != '\0'; ++read) {
    const char letter = escape_letter(source[read]);
    target[written++] = letter != '\0' ? '\\' : source[read];
    if (letter != '\0' && written < size - 1) target[written++] = letter;
  }
  target[written] = '\0';
}

void unescape_line_breaks(const char* source, char* target, int size) {
  int written = 0;
  while (*source != '\0' && written < size - 1) {
    const char line_break = source[0] == '\\' ? unescaped(source[1]) : '\0';
    target[written++] = line_break != '\0' ? line_break : source[0];
    source += line_break != '\0' ? 2 : 1;
  }
  target[written] = '\0';
}

}  // namespace qzlog
