#include "tools/system/terminal_text.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "tests/support/seeded_random.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_tool::append_terminal_text;
using qzlog_tool::FileDescriptor;
using qzlog_tool::TextBytes;

std::string escaped(std::string_view text, TextBytes bytes = TextBytes::kUtf8) {
  std::string out;
  append_terminal_text(text, out, bytes);
  return out;
}

struct EscapeCase {
  std::string_view text;
  std::string_view escaped;
};

TEST(TerminalText, WhatATerminalWouldObey_IsEscaped) {
  const EscapeCase cases[] = {
      {"", ""},
      {"plain ~", "plain ~"},
      {"a\tb\nc\r\n", "a\tb\nc\r\n"},
      {"a\rb\r", "a\\u000Db\\u000D"},
      {"\033]0;x\a", "\\u001B]0;x\\u0007"},
      {std::string_view("\0\b\x7F", 3), "\\u0000\\u0008\\u007F"},
      {"\u0080\u009B\u009F\u00A0", "\\u0080\\u009B\\u009F\u00A0"},
      {"\u2028\u2029", "\\u2028\\u2029"},
      {"\u202A\u202E\u2066\u2069", "\\u202A\\u202E\\u2066\\u2069"},
      {"\u061C\u200E\u200F", "\u061C\u200E\u200F"},
      {"\u05D0\u00E4\u4E2D\U0001F600", "\u05D0\u00E4\u4E2D\U0001F600"},
      {"\x9B\xFF\xC2", "\uFFFD\uFFFD\uFFFD"},
  };
  for (const EscapeCase& each : cases) EXPECT_EQ(escaped(each.text), each.escaped);
}

TEST(TerminalText, OfAnotherCodePage_BytesOfC1AreEscaped) {
  EXPECT_EQ(escaped("\xE4\xA0\x9B\x80\033\n", TextBytes::kOther), "\xE4\xA0\\x9B\\x80\\x1B\n");
}

bool is_control(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte < 0x20 && byte != '\n' && byte != '\t' && byte != '\r') || byte == 0x7F;
}

TEST(TerminalText, RandomBytes_HaveNothingLeftToEscape) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const std::size_t length = random.below(40);
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(random.below(256));
    for (const TextBytes bytes : {TextBytes::kUtf8, TextBytes::kOther}) {
      const std::string once = escaped(text, bytes);
      EXPECT_EQ(escaped(once, bytes), once);
      EXPECT_EQ(std::count_if(once.begin(), once.end(), is_control), 0) << once;
      EXPECT_TRUE(bytes == TextBytes::kOther || qzlog_compiler::is_utf8(once));
    }
  }
}

/// Puts a new terminal in the place of standard output.
class TerminalGuardTest : public ::testing::Test {
 protected:
  TerminalGuardTest() : stdout_(::dup(STDOUT_FILENO)) {
    std::cout.flush();
    int controller = -1;
    int terminal = -1;
    if (::openpty(&controller, &terminal, nullptr, nullptr, nullptr) != 0) std::abort();
    controller_ = FileDescriptor(controller);
    const FileDescriptor closed_after(terminal);
    ::dup2(terminal, STDOUT_FILENO);
  }
  ~TerminalGuardTest() override { ::dup2(stdout_.get(), STDOUT_FILENO); }

  std::string shown() const {
    char buffer[4096];
    return {buffer, qzlog_tool::read_some(controller_.get(), buffer, sizeof buffer, "the terminal")};
  }

  FileDescriptor stdout_;
  FileDescriptor controller_{-1};
};

TEST_F(TerminalGuardTest, CharactersInPieces_ArriveWhole) {
  {
    const qzlog_tool::TerminalGuard guard;
    for (const char byte : std::string_view("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xC2\x9B|")) std::cout << byte;
    std::cout << std::flush;
  }
  EXPECT_EQ(shown(), "\u00E4\u20AC\U0001F600\\u009B|");
}

TEST_F(TerminalGuardTest, OurOwnSequences_StandAmongWhatIsEscaped) {
  {
    const qzlog_tool::TerminalGuard guard;
    std::cout << "a\033";
    qzlog_tool::write_as_it_is(std::cout, "\033[1m");
    std::cout << "b\033" << std::flush;
  }
  EXPECT_EQ(shown(), "a\\u001B\033[1mb\\u001B");
}

TEST_F(TerminalGuardTest, UnfinishedCharacterAtTheEnd_IsReplaced) {
  {
    const qzlog_tool::TerminalGuard guard;
    std::cout << "a\xE2\x82" << std::flush;
  }
  EXPECT_EQ(shown(), "a\uFFFD\uFFFD");
}

}  // namespace
