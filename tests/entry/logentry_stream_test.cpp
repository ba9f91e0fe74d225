#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "tests/entry/entry_fixture.h"

// Entries on streams as programs have them, each in a namespace of its own: all of these compiled before entries had an
// operator of their own.

namespace with_an_operator_of_its_own {

std::ostream& operator<<(std::ostream& stream, const qz_LOG_LogEntry& entry) {
  return stream << "entry " << entry.GetEntryID();
}

std::string written(const qz_LOG_LogEntry& entry) {
  std::ostringstream derived;
  std::ostream& stream = derived;
  stream << entry;
  derived << ", " << entry;
  return derived.str();
}

}  // namespace with_an_operator_of_its_own

namespace with_an_operator_for_all_types {

template <class Value>
std::ostream& operator<<(std::ostream& stream, const Value& value) {
  return std::operator<<(stream, sizeof value > 1 ? "a value" : "a byte");
}

std::string written(const qz_LOG_LogEntry& entry) {
  std::ostringstream derived;
  std::ostream& stream = derived;
  stream << entry;
  derived << entry;
  return derived.str();
}

}  // namespace with_an_operator_for_all_types

namespace with_a_stream_that_is_none_of_the_library {

struct Trace {
  std::string text;
  Trace& operator<<(const char* more) {
    text += '[' + std::string(more) + ']';
    return *this;
  }
};

std::string written(const qz_LOG_LogEntry& entry) {
  Trace trace;
  trace << entry;
  return trace.text;
}

}  // namespace with_a_stream_that_is_none_of_the_library

namespace {

using namespace qz_test;

class EntryOnAStream : public EntryTest {
 protected:
  EntryOnAStream() : entry_(kId, 0) { qz_LOG_LogConfig::SetICUEnabled(false); }

  qz_LOG_LogEntry entry_;
};

TEST_F(EntryOnAStream, Message_AsFormatMessageGivesIt) {
  std::ostringstream stream;
  stream << entry_ << '|' << std::setw(6) << entry_ << '|';
  EXPECT_EQ(stream.str(), "text|  text|");
  EXPECT_EQ((std::ostringstream() << const_cast<const qz_LOG_LogEntry&>(entry_)).str(), "text");
}

TEST_F(EntryOnAStream, MessageThatCannotBeRendered_ThrowsAsFormatMessage) {
  std::ostringstream stream;
  EXPECT_THROW(stream << qz_LOG_LogEntry(), QZX_logging_misc);
}

TEST_F(EntryOnAStream, AsText_StaysTheEmptyOne) {
  const char* const text = entry_;
  EXPECT_STREQ(text, "");
  EXPECT_EQ(with_a_stream_that_is_none_of_the_library::written(entry_), "[]");
}

TEST_F(EntryOnAStream, OperatorsOfTheProgram_ArePreferred) {
  EXPECT_EQ(with_an_operator_of_its_own::written(entry_), "entry 1001, entry 1001");
  EXPECT_EQ(with_an_operator_for_all_types::written(entry_), "a valuea value");
}

}  // namespace
