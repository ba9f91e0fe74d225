#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/lines/lines_fixture.h"
#include "tests/support/call_failure.h"

namespace {

using namespace std::string_literals;

using qz_test::described;
using qz_test::ErrorNotes;
using qz_test::Texts;
using qz_test::thrown;
using qz_test::thrown_by;

class EntryReaderTest : public qz_test::LinesTest {
 protected:
  qz_LOG_EntryReader reader_of(const std::string& text) {
    const std::string& kept = texts_.emplace_back(text);
    return qz_LOG_EntryReader::FromMemory(kept.data(), kept.size(), &errors_);
  }
  /// The IDs of all entries, and -1 for losses.
  std::vector<long> ids(qz_LOG_EntryReader& reader) {
    std::vector<long> result;
    while (reader.Next(line_))
      result.push_back(line_.IsLoss() || line_.IsHeld() ? -1 : static_cast<long>(line_.GetEntry().GetEntryID()));
    return result;
  }
  std::vector<long> ids(const std::string& text) {
    qz_LOG_EntryReader reader = reader_of(text);
    return ids(reader);
  }

  ErrorNotes errors_;
  std::deque<std::string> texts_;  // which readers go on reading
};

using Ids = std::vector<long>;

TEST_F(EntryReaderTest, Line_HoldsWhatItSays) {
  const std::string text =
      "\n"
      R"({"writer":"host/12/34","seq":5,"written":"2026-11-21T08:15:30.000000001Z","definitions":"0123456789abcdef",)"
      R"("id":8,"level":3,"time":"2026-11-21T08:15:30Z","default":true,"selector":4,"name":"EIGHT","attributes":{"B":5}})";
  qz_LOG_EntryReader reader = reader_of(text);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(described(line_.GetEntry()),
            "8 level 3 mask 4 time 1795248930: B/5=5 TIMEZONE_DIFFERENCE/5=345 DAYLIGHT_SAVING_ACTIVE/1=false");
  EXPECT_TRUE(line_.HasTime());
  EXPECT_TRUE(line_.GetUseDefault());
  EXPECT_EQ(line_.GetSelectorIndex(), 4U);
  EXPECT_TRUE(line_.HasSeq());
  EXPECT_EQ(line_.GetSeq(), 5U);
  EXPECT_STREQ(line_.GetWriter(), "host/12/34");
  EXPECT_STREQ(line_.GetWritten(), "2026-11-21T08:15:30.000000001Z");
  EXPECT_STREQ(line_.GetDefinitions(), "0123456789abcdef");
  EXPECT_STREQ(line_.GetName(), "EIGHT");
  EXPECT_FALSE(line_.IsLoss());
  EXPECT_STREQ(line_.GetFile(), "");
  EXPECT_EQ(line_.GetLine(), 2U);
  EXPECT_EQ(line_.GetOffset(), 1U);
  EXPECT_EQ(std::string(line_.GetSource(), line_.GetSourceLength()), text.substr(1));
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(line_.GetLine(), 0U);
  EXPECT_STREQ(line_.GetWriter(), "");
  EXPECT_EQ(reader.GetErrorCount(), 0U);
}

TEST_F(EntryReaderTest, LineOfTheGeneralParser_HoldsTheSame) {
  const std::string text =
      R"({"writer":"h\u006fst/12/34","seq":18446744073709551615,"written":"2026-11-21T08:15:30Z","id":8,"attributes":{},"name":"E"})";
  qz_LOG_EntryReader reader = reader_of(text);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_STREQ(line_.GetWriter(), "host/12/34");
  EXPECT_EQ(line_.GetSeq(), 18446744073709551615U);
  EXPECT_STREQ(line_.GetName(), "E");
  EXPECT_FALSE(line_.HasTime());
}

TEST_F(EntryReaderTest, Loss_HoldsItsRows) {
  const std::string text =
      R"({"lost":[{"id":1001,"level":3,"count":12,"since":"2026-11-21T08:15:30Z"},{"count":18446744073709551615,"level":9,"id":4294967295}],"writer":"h/1/2","seq":7,"written":"2026-11-21T08:15:31Z"})"
      "\n"
      R"({"lost":[]})";
  qz_LOG_EntryReader reader = reader_of(text);
  ASSERT_TRUE(reader.Next(line_)) << errors_.notes.at(0);
  ASSERT_TRUE(line_.IsLoss());
  ASSERT_EQ(line_.GetLostCount(), 2U);
  const qz_LOG_LostEntries first = line_.GetLost(0);
  EXPECT_EQ(first.id, 1001U);
  EXPECT_EQ(first.level, 3U);
  EXPECT_EQ(first.count, 12U);
  EXPECT_STREQ(first.since, "2026-11-21T08:15:30Z");
  EXPECT_EQ(line_.GetLost(1).count, 18446744073709551615U);
  EXPECT_STREQ(line_.GetLost(1).since, "");
  EXPECT_STREQ(line_.GetWriter(), "h/1/2");
  EXPECT_EQ(line_.GetSeq(), 7U);
  EXPECT_EQ(thrown_by([&] { line_.GetLost(2); }),
            thrown<QZX_logging_illegal_argument>("invalid argument: no such lost entries"));
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_TRUE(line_.IsLoss());
  EXPECT_EQ(line_.GetLostCount(), 0U);
}

TEST_F(EntryReaderTest, HeldEntries_HaveRowsLikeLostOnes) {
  const std::string text =
      R"({"writer":"h/1/2","seq":7,"held":[{"id":1001,"level":3,"count":990,"since":"2026-11-21T08:15:30.250000000Z"}]})"
      "\n"
      R"({"lost":[]})"
      "\n"
      R"({"id":8})";
  qz_LOG_EntryReader reader = reader_of(text);
  ASSERT_TRUE(reader.Next(line_)) << errors_.notes.at(0);
  EXPECT_TRUE(line_.IsHeld());
  EXPECT_FALSE(line_.IsLoss());
  ASSERT_EQ(line_.GetLostCount(), 1U);
  EXPECT_EQ(line_.GetLost(0).id, 1001U);
  EXPECT_EQ(line_.GetLost(0).level, 3U);
  EXPECT_EQ(line_.GetLost(0).count, 990U);
  EXPECT_STREQ(line_.GetLost(0).since, "2026-11-21T08:15:30.250000000Z");
  EXPECT_STREQ(line_.GetWriter(), "h/1/2");
  EXPECT_EQ(line_.GetSeq(), 7U);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_TRUE(line_.IsLoss());
  EXPECT_FALSE(line_.IsHeld());
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_FALSE(line_.IsLoss() || line_.IsHeld());
  EXPECT_EQ(line_.GetLostCount(), 0U);
}

TEST_F(EntryReaderTest, WrongLines_AreToldWithTheirPlacesAndReadingGoesOn) {
  const std::string good = R"({"id":8})";
  constexpr const char* kRow =
      "bad-lost: an element of 'lost' has to be an object with 'id', 'level' and 'count', which are integers, and "
      "maybe "
      "'since', which is a date and time with its zone";
  constexpr const char* kHeldRow =
      "bad-lost: an element of 'held' has to be an object with 'id', 'level' and 'count', which are integers, and "
      "maybe 'since', which is a date and time with its zone";
  const struct {
    std::string line;
    std::string note;
  } cases[] = {
      {R"({"id":8,"level":10})", "17: bad-level: 'level' has to be an integer from 0 to 9"},
      {R"({"id":9})", "7: unknown-id: entry ID 9: Entry id argument is invalid"},
      {R"({"level":1,"id":"NINE"})", "17: unknown-name: the definitions have no entry 'NINE'"},
      {R"({"id":"NI\u0000"})", "7: unknown-name: the definitions have no entry 'NI\\u0000'"},
      {R"({"id":8,"attributes":{"B":5,"X":1}})", "29: unknown-attribute: attribute 'X' is not defined for entry ID 8"},
      {R"({"id":8,"attributes":{"B":5,"\u0058":1}})",
       "29: unknown-attribute: attribute 'X' is not defined for entry ID 8"},
      {R"({"id":8,"attributes":{"B":"x"}})", "27: wrong-kind: attribute 'B': SInt2 takes an integer, not a text"},
      {R"({"id":8,"attributes":{"\"X\\" : 1}})",
       "23: unknown-attribute: attribute '\"X\\' is not defined for entry ID 8"},
      {R"({"id":8,"time":"now"})",
       "16: bad-time: 'time': 'now' is not a date and time with its zone, such as 2026-11-21T08:15:30Z or "
       "2026-11-21T09:15:30.5+01:00"},
      {"{\"id\":8,,}", "9: bad-json: not valid JSON: a key in double quotes has to stand here"},
      {R"({"level":1})", "0: missing-id: the entry has no 'id'"},
      {R"({"id":8,"seq":-1})", "15: bad-envelope: 'seq' has to be an integer from 0 to 18446744073709551615"},
      {R"({"id":8,"writer":"host"})", "18: bad-envelope: 'writer' has to be a text of the form HOST/PID/START"},
      {R"({"id":8,"written":"now"})",
       "19: bad-envelope: 'written' has to be a text such as \"2026-11-21T08:15:30.123456789Z\""},
      {R"({"id":8,"definitions":7})",
       "23: bad-envelope: 'definitions' has to be a text of 16 hexadecimal digits, or of two such with a plus sign "
       "between them"},
      {R"({"id":8,"name":""})", "16: bad-envelope: 'name' has to be a text: the event's name"},
      {R"({"id":8,"lost":[]})", "0: bad-lost: a line with 'lost' is no entry, and has no 'id'"},
      {R"({"lost":{}})", "9: bad-lost: 'lost' has to be an array, not an object"},
      {R"({"lost":[1]})", "10: "s + kRow},
      {R"({"lost":[{"id":1,"level":2}]})", "10: "s + kRow},
      {R"({"lost":[{"id":1,"level":12,"count":1}]})", "26: "s + kRow},
      {R"({"lost":[{"id":1,"level":2,"count":1,"since":"x"}]})", "46: "s + kRow},
      {R"({"lost":[{"id":1,"id":2}]})", "18: bad-lost: a key of an element of 'lost' is given twice"},
      {R"({"lost":[{"x":1}]})",
       "11: bad-lost: unknown key 'x' in 'lost'; an element has 'id', 'level', 'count' and 'since'"},
      {R"({"id":8,"held":[]})", "0: bad-lost: a line with 'held' is no entry, and has no 'id'"},
      {R"({"held":[],"level":1})", "0: bad-lost: a line with 'held' is no entry, and has no 'level'"},
      {R"({"held":[],"lost":[]})", "0: bad-lost: a line with 'lost' is no entry, and has no 'held'"},
      {R"({"held":5})", "9: bad-lost: 'held' has to be an array, not an integer"},
      {R"({"held":[{"id":1,"level":2}]})", "10: "s + kHeldRow},
      {R"({"held":[{"id":1,"id":2}]})", "18: bad-lost: a key of an element of 'held' is given twice"},
      {R"({"held":[{"x":1}]})",
       "11: bad-lost: unknown key 'x' in 'held'; an element has 'id', 'level', 'count' and 'since'"},
      {R"({"id":7,"bytes":[]})", "17: bad-bytes: 'bytes' has to be an object, not an array"},
      {R"({"id":7,"bytes":{"C":5}})", "22: bad-bytes: attribute 'C': 'bytes' takes a text, not an integer"},
      {R"({"id":7,"bytes":{"C":"x"}})", "22: bad-bytes: attribute 'C': the text in 'bytes' is not base64"},
      {R"({"id":7,"bytes":{"C":"AA=="}})",
       "22: bad-bytes: attribute 'C': the bytes hold a zero byte, which no text can"},
      {R"({"id":7,"bytes":{"U4":"Zg=="}})",
       "23: bad-bytes: attribute 'U4': 'bytes' holds texts, not values of type UInt4"},
      {R"({"id":7,"bytes":{"X":"Zg=="}})", "18: unknown-attribute: attribute 'X' is not defined for entry ID 7"},
      {R"({"id":7,"bytes":{"C":"Zg==","C":"Zg=="}})", "29: duplicate-attribute: attribute 'C' is given twice"},
      {R"({"id":7,"attributes":{"C":"f","C":"f"},"bytes":{"C":"Zg=="}})",
       "31: duplicate-attribute: attribute 'C' is given twice"},
      {R"({"id":7,"attributes":{"C":5},"bytes":{"C":"Zg=="}})",
       "27: wrong-kind: attribute 'C': Char32 takes a text, not an integer"},
      {R"({"id":7,"bytes":{"C":")" + std::string(44, 'A') + "\"}}",
       "22: bad-bytes: attribute 'C': the bytes hold a zero byte, which no text can"},
      {R"({"id":7,"bytes":{"C":")" + std::string(44, 'B') + "\"}}",
       "22: refused-value: C Attribute value is overflow under Entry ID 7 !"},
      {R"({"id":7,"attributes":{"F":"nan"}})", "27: wrong-kind: attribute 'F': Float takes a number, not a text"},
  };
  for (const auto& row : cases) {
    errors_.notes.clear();
    EXPECT_EQ(ids(good + "\n" + row.line + "\r\n" + good), (Ids{8, 8})) << row.line;
    EXPECT_EQ(errors_.notes, (Texts{"2:" + row.note})) << row.line;
  }
}

TEST_F(EntryReaderTest, TornLastLine_IsToldApartFromADamagedOne) {
  const std::string entry = R"({"id":7,"time":"2026-11-21T08:15:30Z","attributes":{"C":"K\u00e4se ä","F":-1.5e3}})";
  const std::string good = R"({"id":8})"
                           "\n";
  for (std::size_t length = 1; length < entry.size(); ++length) {
    errors_.notes.clear();
    EXPECT_EQ(ids(good + entry.substr(0, length)), Ids{8});
    ASSERT_EQ(errors_.notes.size(), 1U) << length;
    EXPECT_NE(errors_.notes[0].find(": torn-line: the last line breaks off: it is not written whole"),
              std::string::npos)
        << errors_.notes[0];
    errors_.notes.clear();
    EXPECT_EQ(ids(entry.substr(0, length) + "\n" + good), Ids{8});
    ASSERT_EQ(errors_.notes.size(), 1U) << length;
    EXPECT_NE(errors_.notes[0].find(": bad-json: not valid JSON: "), std::string::npos) << errors_.notes[0];
  }
  errors_.notes.clear();
  EXPECT_EQ(ids(good + entry), (Ids{8, 7}));
  EXPECT_EQ(ids(good + "hello"), Ids{8});
  EXPECT_EQ(errors_.notes,
            Texts{"2:1: bad-json: not valid JSON: a value has to be a text, a number, an array, an object, "
                  "true, false or null"});
}

TEST_F(EntryReaderTest, EveryByteOfALineFlipped_IsAnEntryOrAnError) {
  const std::string entry =
      R"({"writer":"h/1/2","seq":1,"id":7,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"C":"K\u00e4se ä","F":-1.5e3,"U1":7},"bytes":{"M":"Zm8="}})";
  const std::string good = R"({"id":8})";
  for (std::size_t at = 0; at < entry.size(); ++at) {
    for (const unsigned flip : {0x01U, 0x02U, 0x08U, 0x20U, 0x40U, 0x80U, 0xFFU}) {
      std::string damaged = entry;
      damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ flip);
      qz_LOG_EntryReader reader = reader_of(damaged + "\n" + good);
      unsigned long long lines = reader.GetErrorCount();
      while (reader.Next(line_)) ++lines;
      ASSERT_EQ(line_.GetLine(), 0U);
      ASSERT_GE(lines + reader.GetErrorCount(), 2U);
      ASSERT_LE(lines + reader.GetErrorCount(), 3U);  // a byte may have become a line feed
    }
  }
}

TEST_F(EntryReaderTest, BlankLinesAndEveryLineEnd_ArePassedOver) {
  EXPECT_EQ(ids("\xEF\xBB\xBF\r\n \t\r\n{\"id\":8}\r\n\n\n{\"id\":71}\n  "), (Ids{8, 71}));
  EXPECT_EQ(errors_.notes, Texts());
  EXPECT_EQ(ids(""), Ids());
  EXPECT_EQ(ids("\xEF\xBB\xBF"), Ids());
}

TEST_F(EntryReaderTest, LongLine_IsToldWithoutItsText) {
  const std::string good = "{\"id\":8}";
  const std::string longest = good + std::string((std::size_t{16} << 20) - good.size(), ' ');
  EXPECT_EQ(ids(longest + "\n" + longest + " \n" + good), (Ids{8, 8}));
  EXPECT_EQ(errors_.notes, Texts{"2:0: long-line: the line is longer than 16 MiB"});
}

TEST_F(EntryReaderTest, LargeWrongLine_IsOneError) {
  std::string many = R"({"id":7,"attributes":{"U1":1)";
  while (many.size() < (std::size_t{4} << 20)) many += R"(,"U1":1)";
  std::string deep = R"({"id":7,"attributes":{"U1":)" + std::string(1000, '[') + std::string(1000, ']');
  EXPECT_EQ(ids(many + "}}\n" + deep + "}}\n{\"id\":8}"), Ids{8});
  EXPECT_EQ(errors_.notes, (Texts{"1:30: duplicate-attribute: attribute 'U1' is given twice",
                                  "2:28: wrong-kind: attribute 'U1': UInt1 takes an integer, not an array"}));
}

TEST_F(EntryReaderTest, ErrorHolder_GetsTheLineAndMayThrow) {
  class Thrower : public qz_LOG_LineErrorHandler {
   public:
    void TakeLineError(const qz_LOG_LineError& error) override { throw std::string(error.source, error.source_length); }
  } thrower;
  const std::string text = "[1]\n{\"id\":8}";
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size(), &thrower);
  std::string caught;
  try {
    reader.Next(line_);
  } catch (const std::string& source) {
    caught = source;
  }
  EXPECT_EQ(caught, "[1]");
  EXPECT_EQ(reader.GetErrorCount(), 1U);
  EXPECT_TRUE(reader.Next(line_));
  EXPECT_EQ(line_.GetLine(), 2U);
}

TEST_F(EntryReaderTest, WithoutHandler_ErrorsAreCounted) {
  const std::string text = "[1]\n2\n{\"id\":8}\n3";
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size());
  EXPECT_EQ(ids(reader), Ids{8});
  EXPECT_EQ(reader.GetErrorCount(), 3U);
}

TEST_F(EntryReaderTest, LineOutlivesItsReader) {
  {
    qz_LOG_EntryReader reader = reader_of(R"({"id":8,"writer":"h/1/2","attributes":{"B":5}})");
    ASSERT_TRUE(reader.Next(line_));
  }
  EXPECT_STREQ(line_.GetWriter(), "h/1/2");
  EXPECT_EQ(line_.GetEntry().GetAttrib2("B"), 5);
}

TEST_F(EntryReaderTest, DefinitionsReplacedBetweenLines_TheNewOnesCount) {
  const std::string line = R"({"id":8,"attributes":{"B":5}})";
  qz_LOG_EntryReader reader = reader_of(line + "\n" + line + "\n" + line);
  ASSERT_TRUE(reader.Next(line_));
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(described(line_.GetEntry()), "8 level 0 mask 4 time 0: B/5=5");
  load({.entries = {{.id = 8, .mask = 16, .message_text = "new", .attributes = {{"A", TypeBool}, {"B", TypeUInt4}}}}});
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(described(line_.GetEntry()), "8 level 0 mask 16 time 0: B/6=5");
}

TEST_F(EntryReaderTest, Moved_GoesOnReading) {
  qz_LOG_EntryReader reader = reader_of("{\"id\":8}\n{\"id\":71}\n");
  ASSERT_TRUE(reader.Next(line_));
  qz_LOG_EntryReader other = std::move(reader);
  reader = reader_of("{\"id\":7}");
  EXPECT_EQ(ids(other), Ids{71});
  EXPECT_EQ(ids(reader), Ids{7});
  reader = std::move(other);
  EXPECT_EQ(ids(reader), Ids());
}

// ---- files ----

TEST_F(EntryReaderTest, File_NamesItselfInErrors) {
  const std::string path = folder_.write("a.jsonl", "{\"id\":8}\n[1]\n");
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(path.c_str(), &errors_);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_STREQ(line_.GetFile(), path.c_str());
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(errors_.notes, Texts{path + ":2:1: not-an-object: an entry is an object in braces, not an array"});
}

TEST_F(EntryReaderTest, FileThatCannotBeRead_IsNamedWithTheReason) {
  const std::string missing = folder_.path("none.jsonl");
  EXPECT_EQ(thrown_by([&] { qz_LOG_EntryReader::FromPath(missing.c_str()); }),
            thrown<QZX_logging_file_operation_failed>("cannot open '" + missing + "': No such file or directory"));
  EXPECT_EQ(thrown_by([] { qz_LOG_EntryReader::FromPath(nullptr); }),
            thrown<QZX_logging_illegal_argument>("invalid argument"));
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(folder_.path().c_str());
  const std::string expected =
      thrown<QZX_logging_file_operation_failed>("cannot read '" + folder_.path() + "': Is a directory");
  EXPECT_EQ(thrown_by([&] { reader.Next(line_); }), expected);
  EXPECT_EQ(thrown_by([&] { reader.Next(line_); }), expected);
  qz_LOG_EntryReader closed = qz_LOG_EntryReader::FromDescriptor(-1, "gone");
  EXPECT_EQ(thrown_by([&] { closed.Next(line_); }),
            thrown<QZX_logging_file_operation_failed>("cannot read 'gone': Bad file descriptor"));
}

TEST_F(EntryReaderTest, FailureOfTheSystem_IsTold) {
  const std::string path = folder_.write("a.jsonl", "{}");
  {
    const qz_test::CallFailure failure(qz_test::FileCall::kOpen, EMFILE);
    EXPECT_EQ(thrown_by([&] { qz_LOG_EntryReader::FromPath(path.c_str()); }),
              thrown<QZX_logging_file_operation_failed>("cannot open '" + path + "': Too many open files"));
  }
  // Nothing of a process stands at its first address.
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath("/proc/self/mem");
  EXPECT_EQ(thrown_by([&] { reader.Next(line_); }),
            thrown<QZX_logging_file_operation_failed>("cannot read '/proc/self/mem': Input/output error"));
}

TEST_F(EntryReaderTest, FileThatGrowsIsCutAndDisappears_IsReadAsFarAsItGoes) {
  std::string content;
  for (int count = 0; count < 50000; ++count) content += "{\"id\":8}\n";
  const std::string path = folder_.write("a.jsonl", content);
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(path.c_str(), &errors_);
  ASSERT_TRUE(reader.Next(line_));
  std::filesystem::resize_file(path, content.size() - 5);
  EXPECT_EQ(ids(reader).size(), 49998U);
  ASSERT_EQ(errors_.notes.size(), 1U);
  EXPECT_NE(errors_.notes[0].find("torn-line"), std::string::npos);

  qz_LOG_EntryReader growing = qz_LOG_EntryReader::FromPath(path.c_str());
  ASSERT_TRUE(growing.Next(line_));
  std::ofstream(path, std::ios::app) << "\":71}\n{\"id\":71}\n";
  std::filesystem::remove(path);
  EXPECT_EQ(ids(growing).back(), 71);

  const std::string second = folder_.write("b.jsonl", content);
  qz_LOG_EntryReader cut = qz_LOG_EntryReader::FromPath(second.c_str());
  ASSERT_TRUE(cut.Next(line_));
  std::filesystem::resize_file(second, 0);
  EXPECT_LT(ids(cut).size(), 50000U);
}

class Pipe {
 public:
  explicit Pipe(int flags = 0) {
    if (::pipe2(ends_, O_CLOEXEC | flags) != 0) ADD_FAILURE() << "no pipe";
  }
  ~Pipe() {
    ::close(ends_[0]);
    end();
  }
  int reading() const { return ends_[0]; }
  void write(std::string_view text) const {
    EXPECT_EQ(::write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void end() {
    if (ends_[1] >= 0) ::close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  int ends_[2] = {-1, -1};
};

TEST_F(EntryReaderTest, PipeByteByByte_GivesEachLineWhenItIsThere) {
  Pipe pipe;
  std::thread writer([&pipe] {
    for (const char byte : "{\"id\":8}\n{\"id\":71}\n{\"id"s) pipe.write({&byte, 1});
    pipe.end();
  });
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromDescriptor(pipe.reading(), "pipe", &errors_);
  EXPECT_EQ(ids(reader), (Ids{8, 71}));
  writer.join();
  ASSERT_EQ(errors_.notes.size(), 1U);
  EXPECT_EQ(errors_.notes[0], "pipe:3:5: torn-line: the last line breaks off: it is not written whole");
}

TEST_F(EntryReaderTest, DescriptorThatDoesNotBlock_IsWaitedFor) {
  Pipe pipe(O_NONBLOCK);
  std::thread writer([&pipe] {
    for (const char* const part : {"{\"id\":8}\n", "{\"id\"", ":71}\n"}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      pipe.write(part);
    }
    pipe.end();
  });
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromDescriptor(pipe.reading(), "pipe");
  EXPECT_EQ(ids(reader), (Ids{8, 71}));
  writer.join();
}

TEST_F(EntryReaderTest, Fifo_IsReadToTheEndOfItsWriters) {
  const std::string path = folder_.path("fifo");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&path] { std::ofstream(path) << "{\"id\":8}\n{\"id\":71}\n"; });
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(path.c_str());
  EXPECT_EQ(ids(reader), (Ids{8, 71}));
  writer.join();
}

TEST_F(EntryReaderTest, SignalsWhileWaiting_AreNoFailure) {
  struct sigaction action = {};
  struct sigaction former = {};
  action.sa_handler = [](int) {};  // without SA_RESTART
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &former), 0);
  for (const int flags : {0, O_NONBLOCK}) {
    Pipe pipe(flags);
    std::thread writer([&pipe, reader = pthread_self()] {
      for (int count = 0; count < 20; ++count) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        pthread_kill(reader, SIGUSR1);
      }
      pipe.write("{\"id\":8}\n");
      pipe.end();
    });
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromDescriptor(pipe.reading(), "pipe");
    EXPECT_EQ(ids(reader), Ids{8});
    writer.join();
  }
  ::sigaction(SIGUSR1, &former, nullptr);
}

TEST_F(EntryReaderTest, SourceThatFails_IsAskedAgain) {
  class Source : public qz_LOG_ByteSource {
   public:
    std::size_t Read(char* buffer, std::size_t) override {
      static constexpr std::string_view kText = "{\"id\":8}\n{\"id\":71}\n";
      if (++calls_ % 3 == 0) throw std::string("not now");
      return kText.substr(0, 19).copy(buffer, 1, at_ < kText.size() ? at_++ : kText.size());
    }

   private:
    int calls_ = 0;
    std::size_t at_ = 0;
  } source;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source, "source");
  Ids found;
  int failures = 0;
  for (bool more = true; more;) {
    try {
      more = reader.Next(line_);
      if (more) found.push_back(line_.GetEntry().GetEntryID());
    } catch (const std::string&) {
      ++failures;
    }
  }
  EXPECT_EQ(found, (Ids{8, 71}));
  EXPECT_GT(failures, 5);
}

}  // namespace
