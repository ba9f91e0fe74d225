#include "qzlog/open_sinks.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "qzlog/file_sink.h"
#include "qzlog/filtered_sink.h"
#include "qzlog/limited_sink.h"
#include "qzlog/memory_sink.h"
#include "qzlog/split_sink.h"
#include "qzlog/stream_sink.h"
#include "qzlog/text_sink.h"
#include "sinks/sink_plan.h"
#include "tests/sinks/journal_stand_in.h"
#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;

class OpenSinks : public SinksTest {
 protected:
  std::string file(const std::string& text) const { return folder_.write("sinks.conf", text); }
  std::unique_ptr<qz_LOG_Sink> open(const std::string& text, const char* section = "log") const {
    return qz_LOG_OpenSinks(file(text).c_str(), section);
  }
  std::string thrown_for(const std::string& text, const char* section = "log") const {
    return thrown_by([&] { open(text, section); });
  }
  std::string refusal(const std::string& text) const {
    return thrown<QZX_logging_illegal_argument>(folder_.path("sinks.conf") + text);
  }
};

TEST_F(OpenSinks, TreeOfSinks_IsOpenedAndWritten) {
  const std::unique_ptr<qz_LOG_Sink> sink = open(
      "# what goes where\n"
      "\n"
      "[console]\r\n"
      "  sink=text\r\n"
      "descriptor = " +
      std::to_string(STDERR_FILENO) +
      "\n"
      "format = {level} = {message}\n"
      "wanted_level = 9\n"
      "[log]\n"
      "sink = split\n"
      "to = limits , errors,console\n"
      "; the rest\n"
      "[limits]\n"
      "sink = limited\n"
      "to = memory\n"
      "entries_per_second = 1\n"
      "unlimited_level = never\n"
      "[memory]\n"
      "sink = memory\n"
      "most_entries = 0x10\n"
      "[errors]\n"
      "sink = filtered\n"
      "to = file\n"
      "section = errors\n"
      "lowest_level = 7\n"
      "[file]\n"
      "sink = file\n"
      "path = " +
      folder_.path("errors.jsonl") + "\n");
  EXPECT_TRUE(write_to(*sink));
  EXPECT_FALSE(write_to(*sink));
  EXPECT_TRUE(write_to(*sink, kDisk, 7));
  EXPECT_TRUE(sink->Flush(1000));
  auto& split = dynamic_cast<qz_LOG_SplitSink&>(*sink);
  ASSERT_EQ(split.GetSinkCount(), 3U);
  auto& limited = dynamic_cast<qz_LOG_LimitedSink&>(split.GetSink(0));
  EXPECT_GE(dynamic_cast<qz_LOG_MemorySink&>(limited.GetSink()).GetMessages().size(), 1U);
  EXPECT_EQ(counts_of(dynamic_cast<qz_LOG_FilteredSink&>(split.GetSink(1))), "1/0/2");
  EXPECT_EQ(counts_of(dynamic_cast<qz_LOG_TextSink&>(split.GetSink(2))), "0/0/3");
  EXPECT_EQ(sink->Close(1000), 0U);
  const std::string written = folder_.read("errors.jsonl");
  EXPECT_TRUE(written.ends_with(line_of(7).substr(1))) << written;
  EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1);
}

TEST_F(OpenSinks, EachSection_CanBeOpenedAlone) {
  const std::string text = "[log]\nsink = filtered\nto = memory\n[memory]\nsink = memory\nwanted_mask = 4\n";
  const std::unique_ptr<qz_LOG_Sink> sink = open(text, "memory");
  EXPECT_NE(dynamic_cast<qz_LOG_MemorySink*>(sink.get()), nullptr);
  EXPECT_FALSE(write_to(*sink));
  EXPECT_TRUE(write_to(*sink, kOther));
}

TEST_F(OpenSinks, Journal_GetsEntries) {
  const JournalStandIn journal(folder_.path("socket"));
  const std::unique_ptr<qz_LOG_Sink> sink =
      open("[log]\nsink = journal\nproduct = storage\nsocket_path = " + journal.path() + "\n");
  EXPECT_TRUE(write_to(*sink));
  EXPECT_EQ(journal.receive().field("QZ_NAME"), "vol1");
}

/// The settings of a section of the file, as they are understood.
TEST_F(OpenSinks, SettingsOfAFile_AreThoseOfTheStructure) {
  const qzlog::SinkFile file("a.conf",
                             "[log]\nsink = file\nprefix = storage\nfolder = /var/log\nway = buffered\n"
                             "largest_file_bytes = 0x100000000\nkeep_files = 1\nkeep_days = 2\nbuffer_bytes = 16384\n"
                             "longest_delay_milliseconds = 3\nlongest_wait_milliseconds = 4\nsync_level = 7\n"
                             "sync_at_rotation = yes\nfile_permissions = 0600\nlost_event_id = 5\n");
  const qz_LOG_FileSinkSettings settings = qzlog::plan_sinks(file).at(0).file;
  EXPECT_EQ(settings.path, "");
  EXPECT_EQ(settings.prefix, "storage");
  EXPECT_EQ(settings.folder, "/var/log");
  EXPECT_EQ(settings.way, qz_LOG_FileSinkSettings::kBuffered);
  EXPECT_EQ(settings.largest_file_bytes, 1ULL << 32);
  EXPECT_EQ(settings.keep_files, 1U);
  EXPECT_EQ(settings.keep_days, 2U);
  EXPECT_EQ(settings.buffer_bytes, 16384U);
  EXPECT_EQ(settings.longest_delay_milliseconds, 3U);
  EXPECT_EQ(settings.longest_wait_milliseconds, 4U);
  EXPECT_EQ(settings.sync_level, 7U);
  EXPECT_TRUE(settings.sync_at_rotation);
  EXPECT_EQ(settings.file_permissions, 0600U);
  EXPECT_EQ(settings.lost_event_id, 5U);
}

TEST_F(OpenSinks, SettingsOfOthers_AreThoseOfTheStructures) {
  const qzlog::SinkFile file(
      "a.conf",
      "[a]\nsink = stream\ndescriptor = stdout\nform = text\nformat = {id}\ncolour = no\nlongest_wait_milliseconds = "
      "7\n"
      "[b]\nsink = memory\nmost_entries = 5\nmost_bytes = 1099511627776\n"
      "[c]\nsink = filtered\nto = b\nsection = x y\nlowest_level = 1\nhighest_level = 2\nproperty_mask = 0XfF\n"
      "[d]\nsink = limited\nto = a\nentries_per_second = 9\nunlimited_level = 8\nheld_event_id = 6\n"
      "[e]\nsink = text\npath = /x\nway = write\nsync_level = never\n"
      "[f]\nsink = journal\nproduct = storage\njournal_namespace = a.b\nsocket_path = /y\nlongest_wait_milliseconds = "
      "8\n");
  const std::vector<qzlog::SinkPlan> plans = qzlog::plan_sinks(file);
  ASSERT_EQ(plans.size(), 6U);
  EXPECT_EQ(plans[0].descriptor, STDOUT_FILENO);
  EXPECT_EQ(plans[0].stream.form, qz_LOG_StreamSinkSettings::kText);
  EXPECT_EQ(plans[0].stream.format, "{id}");
  EXPECT_FALSE(plans[0].stream.colour);
  EXPECT_EQ(plans[0].stream.longest_wait_milliseconds, 7U);
  EXPECT_EQ(plans[1].memory.most_entries, 5U);
  EXPECT_EQ(plans[1].memory.most_bytes, 1ULL << 40);
  EXPECT_EQ(plans[2].filter_section, "x y");
  EXPECT_EQ(plans[2].lowest_level, 1U);
  EXPECT_EQ(plans[2].highest_level, 2U);
  EXPECT_EQ(plans[2].property_mask, 255U);
  EXPECT_EQ(plans[2].to, std::vector<std::size_t>({1}));
  EXPECT_EQ(plans[3].limited.entries_per_second, 9U);
  EXPECT_EQ(plans[3].limited.unlimited_level, 8U);
  EXPECT_EQ(plans[3].limited.held_event_id, 6U);
  EXPECT_EQ(plans[4].file.path, "/x");
  EXPECT_EQ(plans[4].file.way, qz_LOG_FileSinkSettings::kWrite);
  EXPECT_EQ(plans[4].file.sync_level, qz_LOG_FileSinkSettings::kNever);
  EXPECT_EQ(plans[5].journal.product, "storage");
  EXPECT_EQ(plans[5].journal.journal_namespace, "a.b");
  EXPECT_EQ(plans[5].journal.socket_path, "/y");
  EXPECT_EQ(plans[5].journal.longest_wait_milliseconds, 8U);
}

struct Refusal {
  std::string text;
  std::string message;
};

TEST_F(OpenSinks, BadFiles_AreRefusedWithLineAndSetting) {
  const std::string memory = "[log]\nsink = memory\n";
  for (const Refusal& each : std::vector<Refusal>{
           {"", ": there is no section [log]"},
           {"[other]\nsink = memory\n", ": there is no section [log]"},
           {"sink = memory\n", ":1: sink: it stands before the first [section]"},
           {"[log\nsink = memory\n", ":1: the line is no [section]"},
           {"[", ":1: the line is no [section]"},
           {"[]", ":1: the line is no [section]"},
           {"\n[ ]", ":2: the line is no [section]"},
           {"[a,b]", ":1: the line is no [section]"},
           {"[a]]", ":1: the line is no [section]"},
           {"[log] # a\n", ":1: the line is no [section]"},
           {"[log]\nsink\n", ":2: the line is neither a [section] nor 'key = value'"},
           {"[log]\n= memory\n", ":2: the line is neither a [section] nor 'key = value'"},
           {"[log]\nsink = \n", ":2: sink: it has no value"},
           {std::string("[log]\nsink = a\0b\n", 16), ":2: there is a zero byte in the line"},
           {memory + "[log]\n", ":3: [log]: the section is in line 1 already"},
           {memory + "most_entries = 1\n\nmost_entries = 2\n", ":5: most_entries: it is set in line 3 already"},
           {"[log]\nmost_entries = 1\n", ":1: sink: it is missing in [log]"},
           {"[log]\nsink = file system\n",
            ":2: sink: 'file system' is none of file, stream, text, memory, journal, syslog, filtered, limited, split"},
           {memory + "most = 1\n", ":3: most: a memory sink has no such setting"},
           {memory + "to = a\n", ":3: to: a memory sink has no such setting"},
           {memory + "path = a\n", ":3: path: a memory sink has no such setting"},
           {memory + "most_entries = many\n", ":3: most_entries: 'many' is no number"},
           {memory + "most_entries = -1\n", ":3: most_entries: '-1' is no number"},
           {memory + "most_entries = 1 2\n", ":3: most_entries: '1 2' is no number"},
           {memory + "most_entries = 0x\n", ":3: most_entries: '0x' is no number"},
           {memory + "most_entries = 4294967296\n", ":3: most_entries: 4294967296 is not from 0 to 4294967295"},
           {memory + "most_bytes = 18446744073709551616\n", ":3: most_bytes: '18446744073709551616' is too large"},
           {memory + "most_bytes = 3\nmost_entries = 0\n", ":4: most_entries: 0 is not from 1 to 1000000"},
           {memory + "wanted_level = 10\n", ":3: wanted_level: 10 is not from 0 to 9"},
           {"[log]\nsink = stream\n", ":1: descriptor: it is missing in [log]"},
           {"[log]\nsink = stream\ndescriptor = stdin\n", ":3: descriptor: 'stdin' is no number"},
           {"[log]\nsink = stream\ndescriptor = 987\n", ":3: descriptor: 987 is not open"},
           {"[log]\nsink = stream\ndescriptor = 2\ncolour = maybe\n", ":4: colour: 'maybe' is neither yes nor no"},
           {"[log]\nsink = stream\ndescriptor = 2\nform = xml\n", ":4: form: 'xml' is none of json, text"},
           {"[log]\nsink = stream\nform = text\ndescriptor = 2\nformat = {id\n",
            ":5: format: '{' without '}' (write '{{' for the character) at character 1"},
           {"[log]\nsink = text\ndescriptor = 2\npath = a\n", ":4: path: it is for files, and there is a descriptor"},
           {"[log]\nsink = text\nlost_event_id = 2\n", ":3: lost_event_id: a text sink has no such setting"},
           {"[log]\nsink = text\n", ":1: path: one of path and prefix has to be given"},
           {"[log]\nsink = file\n", ":1: path: one of path and prefix has to be given"},
           {"[log]\nsink = file\npath = a\nprefix = b\n", ":3: path: only one of path and prefix can be given"},
           {"[log]\nsink = file\npath = a\nway = fast\n", ":4: way: 'fast' is none of write, shared, buffered"},
           {"[log]\nsink = file\npath = a\nfile_permissions = 0800\n", ":4: file_permissions: '0800' is no number"},
           {"[log]\nsink = file\npath = a\nfile_permissions = 10000\n", ":4: file_permissions: '10000' is too large"},
           {"[log]\nsink = file\npath = a\nsync_level = 10\n", ":4: sync_level: 10 is not from 0 to 9"},
           {"[log]\nsink = file\npath = a\nsync_level = always\n", ":4: sync_level: 'always' is no number"},
           {"[log]\nsink = file\npath = a\nbuffer_bytes = 1\n", ":4: buffer_bytes: 1 is not from 16384 to 268435456"},
           {"[log]\nsink = journal\njournal_namespace = a/b\n",
            ":3: journal_namespace: it is not made of up to 64 letters, digits and : - _ . @"},
           {"[log]\nsink = journal\npath = a\n", ":3: path: a journal sink has no such setting"},
           {"[log]\nsink = filtered\n", ":1: to: it is missing in [log]"},
           {"[log]\nsink = filtered\nto = a\n", ":3: to: there is no section [a]"},
           {"[log]\nsink = filtered\nto = a, b\n[a]\nsink = memory\n[b]\nsink = memory\n",
            ":3: to: it is the name of one section"},
           {"[log]\nsink = filtered\nto = a\nlowest_level = 10\n[a]\nsink = memory\n",
            ":4: lowest_level: 10 is not from 0 to 9"},
           {"[log]\nsink = split\nto = a,\n[a]\nsink = memory\n", ":3: to: there is an empty name"},
           {"[log]\nsink = split\nto = a, a\n[a]\nsink = memory\n", ":3: to: [a] is the sink of line 3 already"},
           {"[log]\nsink = split\nto = a\n[a]\nsink = memory\n[b]\nsink = limited\nto = a\n",
            ":8: to: [a] is the sink of line 3 already"},
           {"[log]\nsink = limited\nto = a\nentries_per_second = 0\n[a]\nsink = memory\n",
            ":4: entries_per_second: 0 is not from 1 to 1000000000"},
           {"[log]\nsink = limited\nto = log\n", ":3: to: [log] leads back to itself"},
           {"[a]\nsink = memory\n[log]\nsink = split\nto = b,a\n[b]\nsink = limited\nto = log\n",
            ":5: to: [log] leads back to itself"},
           {"[log]\nsink = memory\n[c]\nsink = memory\n[a]\nsink = split\nto = b,c\n[b]\nsink = limited\nto = a\n",
            ":7: to: [a] leads back to itself"}}) {
    EXPECT_EQ(thrown_for(each.text), refusal(each.message)) << each.text;
  }
}

TEST_F(OpenSinks, ArgumentsAndFilesThatCannotBe_AreRefused) {
  EXPECT_EQ(thrown_by([] { qz_LOG_OpenSinks(nullptr, "log"); }),
            thrown<QZX_logging_illegal_argument>("invalid argument"));
  EXPECT_EQ(thrown_by([] { qz_LOG_OpenSinks("a", nullptr); }),
            thrown<QZX_logging_illegal_argument>("invalid argument"));
  const auto thrown_by_file = [&](const std::string& name, const std::string& reason) {
    EXPECT_EQ(thrown_by([&] { qz_LOG_OpenSinks(folder_.path(name).c_str(), "log"); }),
              thrown<QZX_logging_file_operation_failed>(folder_.path(name) + ": " + reason));
  };
  thrown_by_file("missing", "No such file or directory");
  thrown_by_file(".", "it is no regular file");
  ASSERT_EQ(mkfifo(folder_.path("fifo").c_str(), 0600), 0);
  thrown_by_file("fifo", "it is no regular file");
  folder_.write("long", std::string((1U << 20) + 1, '#'));
  thrown_by_file("long", "it is longer than 1048576 bytes");
}

TEST_F(OpenSinks, SinkWhoseFileCannotBeOpened_SaysWhere) {
  const std::string thrown = thrown_for("[log]\nsink = file\npath = " + folder_.path("none/a") + "\n");
  EXPECT_TRUE(thrown.starts_with("QZX_logging_file_operation_failed \"" + folder_.path("sinks.conf") + ":1: "))
      << thrown;
}

TEST_F(OpenSinks, ManySections_AreBounded) {
  std::string text;
  for (int i = 0; i < 256; ++i) {
    text += "[s" + std::to_string(i) +
            "]\nsink = " + (i == 255 ? "memory\n" : "limited\nto = s" + std::to_string(i + 1) + "\n");
  }
  EXPECT_TRUE(write_to(*open(text, "s0")));
  EXPECT_EQ(thrown_for(text + "[more]\n"), refusal(":768: there are more than 256 sections"));
}

TEST_F(OpenSinks, EveryPrefixOfAFile_IsOpenedOrRefused) {
  const std::string whole =
      "[log]\nsink = split\nto = a, b\n[a]\nsink = limited\nto = c\n[b]\nsink = memory\nmost_entries = 10\n"
      "[c]\nsink = text\ndescriptor = stderr\nformat = {id} {message}\n";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const std::string thrown = thrown_for(whole.substr(0, length));
    EXPECT_TRUE(thrown == "nothing" ||
                thrown.starts_with("QZX_logging_illegal_argument \"" + folder_.path("sinks.conf")))
        << thrown;
  }
}

TEST_F(OpenSinks, RandomBytes_AreRefusedOrOpened) {
  SeededRandom random;
  const std::string pieces[] = {"[",  "]",      "log",   "a", "=", "\n", "\r\n",         " ",    "sink",
                                "to", "memory", "split", ",", "#", "7",  "most_entries", "\xFF", "limited"};
  for (int round = 0; round < rounds(2000); ++round) {
    std::string text = random.one_in(2) ? "[log]\nsink = memory\n" : "";
    for (long long i = random.between(0, 25); i > 0; --i) text += pieces[random.below(std::size(pieces))];
    const std::string thrown = thrown_by([&] { qzlog::plan_sinks(qzlog::SinkFile("a", text)); });
    EXPECT_TRUE(thrown == "nothing" || thrown.starts_with("QZX_logging_illegal_argument \"a:")) << thrown;
  }
}

TEST_F(OpenSinks, WithoutMemory_ThrowsThatAndClosesWhatWasOpened) {
  const std::string path = file(
      "[log]\nsink = split\nto = a, b\n[a]\nsink = limited\nto = c\n[b]\nsink = text\npath = " + folder_.path("b.txt") +
      "\n[c]\nsink = filtered\nto = d\nsection = x\n[d]\nsink = memory\n");
  EXPECT_GT(FailEveryAllocation([&] { qz_LOG_OpenSinks(path.c_str(), "log"); }), 30U);
}

}  // namespace
