#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "qzlog/log_util.h"
#include "tests/support/support.h"
#include "tests/util/log_util_guarded_memory.h"

namespace {

using namespace qz_test;

using Number = unsigned short;

std::string made(const char* prefix, Number year, Number month, Number day, Number sequence, const char* directory) {
  const std::unique_ptr<char[]> name(make_text_log_filename(prefix, year, month, day, sequence, directory));
  return name.get();
}

TEST(MakeTextLogFilename, FieldsInRange_PaddedWithZeros) {
  EXPECT_EQ(made("app", 2003, 7, 4, 12, nullptr), "app.20030704.0012");
  EXPECT_EQ(made("app", 2003, 7, 4, 12, "/var/log"), "/var/log/app.20030704.0012");
  EXPECT_EQ(made("app", 0, 0, 0, 0, nullptr), "app.00000000.0000");
  EXPECT_EQ(made("app", 9999, 99, 99, 9999, "d"), "d/app.99999999.9999");
}

TEST(MakeTextLogFilename, EmptyOrOddTexts_TakenAsTheyAre) {
  EXPECT_EQ(made("", 2003, 7, 4, 12, nullptr), ".20030704.0012");
  EXPECT_EQ(made("app", 2003, 7, 4, 12, ""), "/app.20030704.0012");
  EXPECT_EQ(made("app", 2003, 7, 4, 12, "/"), "//app.20030704.0012");
  EXPECT_EQ(made("%s%n/..\xC3\xA9 ", 2003, 7, 4, 12, "%d"), "%d/%s%n/..\xC3\xA9 .20030704.0012");
}

TEST(MakeTextLogFilename, FieldsWithMoreDigits_AllWritten) {
  EXPECT_EQ(made("app", 10000, 7, 4, 12, nullptr), "app.100000704.0012");
  EXPECT_EQ(made("app", 2003, 100, 4, 12, nullptr), "app.200310004.0012");
  EXPECT_EQ(made("app", 2003, 7, 100, 12, nullptr), "app.200307100.0012");
  EXPECT_EQ(made("app", 2003, 7, 4, 10000, nullptr), "app.20030704.10000");
  EXPECT_EQ(made("app", 65535, 65535, 65535, 65535, "/d"), "/d/app.655356553565535.65535");
}

TEST(MakeTextLogFilename, LongTexts_NotCut) {
  const std::string prefix(5000, 'p');
  const std::string directory(7000, 'd');
  EXPECT_EQ(made(prefix.c_str(), 2003, 7, 4, 12, directory.c_str()), directory + "/" + prefix + ".20030704.0012");
}

TEST(MakeTextLogFilename, NullPrefix_ReportedAndTakenAsEmpty) {
  std::string name;
  const auto report = written_to_stderr([&] { name = made(nullptr, 2003, 7, 4, 12, "d"); });
  EXPECT_TRUE(is_report_of(report, "log_prefix"));
  EXPECT_EQ(name, "d/.20030704.0012");
}

TEST(MakeTextLogFilename, OutOfMemory_Throws) {
  EXPECT_GT(FailEveryAllocation([] { delete[] make_text_log_filename("app", 2003, 7, 4, 12, "/var/log"); }), 0U);
}

/// The texts stand right at the end of what can be read.
int is_valid(const std::string& name, const std::string& prefix) {
  const GuardedMemory guarded_name(name);
  const GuardedMemory guarded_prefix(prefix);
  return is_a_valid_text_log(guarded_name.data(), guarded_prefix.data(), nullptr, nullptr, nullptr, nullptr);
}

struct ValidName {
  const char* name;
  const char* prefix;
  Number year;
  Number month;
  Number day;
  Number sequence;
};

TEST(IsAValidTextLog, ValidNames_GiveTheirFields) {
  const ValidName cases[] = {
      {"app.20030704.0012", "app", 2003, 7, 4, 12},
      {"app.20031399.0001", "app", 2003, 13, 99, 1},
      {"app.00000000.0000", "app", 0, 0, 0, 0},
      {"app.99999999.9999", "app", 9999, 99, 99, 9999},
      {".20030704.0012", "", 2003, 7, 4, 12},
      {"app.20030704.0012.20040805.0013", "app.20030704.0012", 2004, 8, 5, 13},
      {"a b\xFF/.20030704.0012", "a b\xFF/", 2003, 7, 4, 12},
  };
  for (const ValidName& valid : cases) {
    Number fields[4] = {1111, 1111, 1111, 1111};
    EXPECT_EQ(is_a_valid_text_log(valid.name, valid.prefix, &fields[0], &fields[1], &fields[2], &fields[3]), 1)
        << valid.name;
    EXPECT_EQ(fields[0], valid.year) << valid.name;
    EXPECT_EQ(fields[1], valid.month) << valid.name;
    EXPECT_EQ(fields[2], valid.day) << valid.name;
    EXPECT_EQ(fields[3], valid.sequence) << valid.name;
    EXPECT_EQ(is_valid(valid.name, valid.prefix), 1) << valid.name;
  }
}

TEST(IsAValidTextLog, OtherNames_RefusedAndNothingStored) {
  const char* const names[] = {"app.2003070.0012",    "app.20030704.012",    "app.20030704.00123", "app-20030704.0012",
                               "app.20030704-0012",   "app.200307040.012",   "app.2003070.00012",  "app.20030704.0012 ",
                               " app.20030704.0012",  "App.20030704.0012",   "app.+0030704.0012",  "app.-0030704.0012",
                               "app. 0030704.0012",   "app.2003 704.0012",   "app.2003070x.0012",  "app.20030704. 012",
                               "app.20030704.+012",   "app.20030704.-012",   "app.20030704.001a",  "app.0x030704.0012",
                               "app.20030704.0x12",   "app20030704.0012",    "app..20030704.0012", "app.20030704..0012",
                               "app.20030704.0012\n", "app.2003070\xB2.0012"};
  for (const char* name : names) {
    Number fields[4] = {1111, 2222, 3333, 4444};
    EXPECT_EQ(is_a_valid_text_log(name, "app", &fields[0], &fields[1], &fields[2], &fields[3]), 0) << name;
    EXPECT_EQ(fields[0], 1111) << name;
    EXPECT_EQ(fields[1], 2222) << name;
    EXPECT_EQ(fields[2], 3333) << name;
    EXPECT_EQ(fields[3], 4444) << name;
    EXPECT_EQ(is_valid(name, "app"), 0) << name;
  }
}

TEST(IsAValidTextLog, EveryPrefixOfANameAtAPageEnd_RefusedWithoutReadingOn) {
  const std::string name = "app.20030704.0012";
  for (std::size_t length = 0; length < name.size(); ++length) {
    for (const char* prefix : {"", "a", "app", "app.", "application", "app.20030704.0012"}) {
      EXPECT_EQ(is_valid(name.substr(0, length), prefix), 0) << length << " " << prefix;
    }
  }
  EXPECT_EQ(is_valid(name, "app"), 1);
}

TEST(IsAValidTextLog, EveryByteAtEveryPlace_OnlyDigitsAndPointsStand) {
  for (std::size_t place = 0; place < 14; ++place) {
    for (int byte = 1; byte < 256; ++byte) {
      std::string name = "app.20030704.0012";
      name[3 + place] = static_cast<char>(byte);
      const bool is_point = place == 0 || place == 9;
      const bool fits = is_point ? byte == '.' : byte >= '0' && byte <= '9';
      EXPECT_EQ(is_a_valid_text_log(name.c_str(), "app", nullptr, nullptr, nullptr, nullptr), fits ? 1 : 0)
          << place << " " << byte;
    }
  }
}

TEST(IsAValidTextLog, SomeOutputsNull_TheOthersAreStored) {
  for (unsigned wanted = 0; wanted < 16; ++wanted) {
    Number fields[4] = {1, 1, 1, 1};
    Number* targets[4];
    for (unsigned i = 0; i < 4; ++i) targets[i] = (wanted >> i & 1) != 0 ? &fields[i] : nullptr;
    EXPECT_EQ(is_a_valid_text_log("app.20030704.0012", "app", targets[0], targets[1], targets[2], targets[3]), 1);
    const Number expected[4] = {2003, 7, 4, 12};
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(fields[i], targets[i] != nullptr ? expected[i] : 1) << wanted;
  }
}

TEST(IsAValidTextLog, MadeNames_Accepted) {
  SeededRandom random;
  for (int i = 0; i < 2000; ++i) {
    const auto number = [&](int highest) { return static_cast<Number>(random.between(0, highest)); };
    const Number year = number(9999);
    const Number month = number(99);
    const Number day = number(99);
    const Number sequence = number(9999);
    const std::string prefix = random.text(static_cast<std::size_t>(random.between(0, 20)));
    const std::string name = made(prefix.c_str(), year, month, day, sequence, nullptr);
    Number fields[4];
    ASSERT_EQ(is_a_valid_text_log(name.c_str(), prefix.c_str(), &fields[0], &fields[1], &fields[2], &fields[3]), 1);
    ASSERT_TRUE(fields[0] == year && fields[1] == month && fields[2] == day && fields[3] == sequence) << name;
  }
}

TEST(IsAValidTextLog, NullTexts_ReportedAndRefused) {
  struct Texts {
    const char* name;
    const char* prefix;
  };
  for (const Texts& texts : {Texts{nullptr, "app"}, {"app.20030704.0012", nullptr}, {nullptr, nullptr}}) {
    Number year = 1111;
    int result = 1;
    const auto report = written_to_stderr(
        [&] { result = is_a_valid_text_log(texts.name, texts.prefix, &year, nullptr, nullptr, nullptr); });
    EXPECT_TRUE(is_report_of(report, "filename && log_prefix"));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(year, 1111);
  }
}

TEST(RemovePathnameDirSeparators, EveryByte_KeptOrReplaced) {
  const std::string allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890_-";
  std::string text;
  std::string expected;
  for (int byte = 1; byte < 256; ++byte) {
    text += static_cast<char>(byte);
    expected += allowed.find(static_cast<char>(byte)) == std::string::npos ? '_' : static_cast<char>(byte);
  }
  const GuardedMemory memory(text);
  remove_pathname_dir_separators(memory.data());
  EXPECT_EQ(memory.text(), expected);
}

TEST(RemovePathnameDirSeparators, Texts_ChangedInPlace) {
  struct Case {
    const char* text;
    const char* expected;
  };
  for (const Case& test_case : {Case{"a/b.c d", "a_b_c_d"},
                                {"", ""},
                                {"../..", "_____"},
                                {"A-z_09", "A-z_09"},
                                {"/", "_"},
                                {"\xC3\xA9", "__"}}) {
    const GuardedMemory memory{std::string(test_case.text)};
    remove_pathname_dir_separators(memory.data());
    EXPECT_EQ(memory.text(), test_case.expected);
  }
}

TEST(RemovePathnameDirSeparators, Null_Reported) {
  EXPECT_TRUE(is_report_of(written_to_stderr([] { remove_pathname_dir_separators(nullptr); }), "pathname"));
}

std::string lock_name(const std::string& first, const std::string& second) {
  const GuardedMemory room(256);
  EXPECT_EQ(get_plockname(first.c_str(), second.c_str(), room.data()), 1);
  EXPECT_EQ(room.data()[255], '\0');
  return room.text();
}

TEST(GetPlockname, Texts_JoinedByAnUnderscore) {
  EXPECT_EQ(lock_name("first", "second"), "first_second");
  EXPECT_EQ(lock_name("", ""), "_");
  EXPECT_EQ(lock_name("", "b"), "_b");
  EXPECT_EQ(lock_name("a", ""), "a_");
  EXPECT_EQ(lock_name("a/%s\xFF", "."), "a/%s\xFF_.");
}

TEST(GetPlockname, EveryLength_CutTo255) {
  for (std::size_t length = 0; length <= 600; ++length) {
    const std::string text(length, 'x');
    const std::string other(600 - length, 'y');
    EXPECT_EQ(lock_name(text, "yz"), (text + "_yz").substr(0, 255));
    EXPECT_EQ(lock_name("yz", text), ("yz_" + text).substr(0, 255));
    EXPECT_EQ(lock_name(text, other), (text + "_" + other).substr(0, 255));
  }
}

TEST(GetPlockname, Null_ReportedAndTakenAsEmpty) {
  char room[256];
  EXPECT_TRUE(is_report_of(written_to_stderr([&] { get_plockname(nullptr, "b", room); }), "first"));
  EXPECT_STREQ(room, "_b");
  EXPECT_TRUE(is_report_of(written_to_stderr([&] { get_plockname("a", nullptr, room); }), "second"));
  EXPECT_STREQ(room, "a_");
}

TEST(GetPlockname, OutOfMemory_Throws) {
  const std::string text(300, 'x');
  char room[256];
  EXPECT_GT(FailEveryAllocation([&] { get_plockname(text.c_str(), text.c_str(), room); }), 0U);
}

}  // namespace
