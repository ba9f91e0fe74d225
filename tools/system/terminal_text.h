#ifndef QZLOG_TOOLS_SYSTEM_TERMINAL_TEXT_H
#define QZLOG_TOOLS_SYSTEM_TERMINAL_TEXT_H

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// What bytes above those of ASCII are.
enum class TextBytes {
  kUtf8,
  kOther,  ///< of another code page, in which a byte of C1 may be a control character or a part of one
};

/// Whether what goes to the descriptor is escaped: it is a terminal, and it is not standard output of which raw texts
/// are wanted.
bool is_escaped(int descriptor);

/// Standard output gets texts as they are from now on, for the whole process.
void want_raw_texts() noexcept;

/// A value in a result for people: control characters as escapes wherever it goes (printable), so that it stays on its
/// line; as it is where raw texts are wanted.
std::string shown_value(std::string_view text);

/// Appends a text as a terminal may get it. Line ends and tabs stay; other control characters (C1 and DEL too), line
/// separators and the characters that embed, override or isolate a direction of writing become "\u001B", what is not
/// UTF-8 the replacement character. The marks of direction (U+061C, U+200E, U+200F) stay: they act on nothing but their
/// neighbours, and dates and numbers of some languages have them. Of other code pages the bytes of C1 become "\x9B".
/// An escaped text escaped again stays as it is, and JSON stays the same JSON.
void append_terminal_text(std::string_view text, std::string& out, TextBytes bytes = TextBytes::kUtf8);

/// Writes what the command itself has made safe, its colours among it.
void write_as_it_is(std::ostream& out, std::string_view text);

/// While it lives, what is written to std::cout and std::cerr goes through append_terminal_text where a terminal is at
/// the other end. There may be one, in `main`.
class TerminalGuard {
 public:
  TerminalGuard();
  ~TerminalGuard();
  TerminalGuard(const TerminalGuard&) = delete;
  TerminalGuard& operator=(const TerminalGuard&) = delete;

 private:
  class Buffer;
  class Guarded;

  friend void write_as_it_is(std::ostream& out, std::string_view text);

  std::unique_ptr<Guarded> output_;
  std::unique_ptr<Guarded> errors_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_TERMINAL_TEXT_H
