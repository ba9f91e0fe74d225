#include "tools/options/output_code_page.h"

#include <cstddef>
#include <limits>
#include <utility>

#include "qzlog/logentry.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kCommonCharacters = "\n\r 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
// Two to four bytes, and the last plane but one: only UTF-8 itself leaves these as they are.
constexpr std::string_view kUtf8Sample = "\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBD\xF0\x9F\x98\x80\xF3\xB0\x80\x80";
// Characters whose UTF-16 bytes are line feed, carriage return and zero: U+4E0A U+4E0D U+4E00.
constexpr std::string_view kCjkSample = "\xE4\xB8\x8A\xE4\xB8\x8D\xE4\xB8\x80";
// What one byte of UTF-8 can become: an escape sequence, two bytes, and the sequence back.
constexpr std::size_t kMaximumGrowth = 8;
constexpr std::size_t kMaximumAround = 64;

}  // namespace

CodePage::CodePage(std::string name) : name_(std::move(name)) {
  std::string converted;
  if (name_.empty() || !from_utf8(kCommonCharacters.data(), kCommonCharacters.size(), converted)) {
    throw CommandError(kExitCannotRun, "no converter for the code page '" + name_ + "'");
  }
  if (converted != kCommonCharacters) {
    throw CommandError(kExitCannotRun, "the code page '" + name_ +
                                           "' cannot be used for lines of text: its line ends, letters and digits are "
                                           "not those of ASCII");
  }
  // Nor can one in which the bytes of other characters look like line ends, as in compressed text.
  if (!from_utf8(kCjkSample.data(), kCjkSample.size(), converted) ||
      converted.find_first_of(std::string_view("\n\r\0", 3)) != std::string::npos) {
    throw CommandError(kExitCannotRun, "the code page '" + name_ +
                                           "' cannot be used for lines of text: other characters hold the bytes of its "
                                           "line ends");
  }
  is_utf8_ = from_utf8(kUtf8Sample.data(), kUtf8Sample.size(), converted) && converted == kUtf8Sample;
}

bool CodePage::from_utf8(const char* text, std::size_t length, std::string& target) const {
  const std::size_t room = length * kMaximumGrowth + kMaximumAround;
  if (room >= std::numeric_limits<int>::max()) return false;
  target.resize(room + 1);
  unsigned size = static_cast<unsigned>(room);
  if (qz_LOG_LogEntry::ConvertFromUTF8(text, target.data(), size, name_.c_str()) == 0) return false;
  target.resize(size);
  return true;
}

}  // namespace qzlog_tool
