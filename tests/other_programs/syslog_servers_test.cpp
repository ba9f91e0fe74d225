// What syslog sinks send, through rsyslogd and syslog-ng, and back into entries. The programs are looked for where they
// are installed, and below the folder that QZLOG_SYSLOG_SERVERS names, where packages that exclude each other may be
// unpacked.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/entry_lines.h"
#include "qzlog/file_sink.h"
#include "qzlog/logcfg.h"
#include "qzlog/syslog_sink.h"
#include "tests/sinks/syslog_servers.h"
#include "tests/support/ldf_file.h"
#include "tests/support/names_section.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/settings_test.h"
#include "tools/syslog/syslog_source.h"

namespace qz_test {
namespace {

namespace fs = std::filesystem;
using Settings = qz_LOG_SyslogSinkSettings;

constexpr unsigned kEvent = 3001;
constexpr std::chrono::seconds kPatience(120);

bool comes_true(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

/// A server in the foreground, ended with this object.
class ServerProcess {
 public:
  explicit ServerProcess(const std::vector<std::string>& command, const std::string& output) : id_(fork()) {
    if (id_ != 0) return;
    const int log = open(output.c_str(), O_CREAT | O_WRONLY | O_APPEND, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& each : command) arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  ~ServerProcess() { stop(); }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  /// Lets it write what it has.
  void stop() {
    if (id_ <= 0) return;
    kill(id_, SIGTERM);
    if (!comes_true([this] { return waitpid(id_, nullptr, WNOHANG) == id_; })) {
      kill(id_, SIGKILL);
      waitpid(id_, nullptr, 0);
    }
    id_ = -1;
  }

 private:
  pid_t id_;
};

std::string servers_folder() {
  const char* const folder = std::getenv("QZLOG_SYSLOG_SERVERS");
  return folder != nullptr ? folder : "";
}

/// Where a package's file is; "" where it is not there.
std::string find_file(const std::string& package, const std::string& path) {
  for (const std::string& root : {servers_folder() + '/' + package, std::string()}) {
    if (fs::exists(root + path)) return root + path;
  }
  return "";
}

const char* const kHostile[] = {"",
                                "plain",
                                "\"quoted\" \\ / \b\f\n\r\t]",
                                "\x1B[2J\x1B]0;title\x07",
                                "[qzlog@32473 entry=\"{}\"] <14>1 - - - - - -",
                                "%s%n$!{}@cee:{\"a\":1}",
                                "Gr\xC3\xB6\303\237e \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\x85\xC2\x9B",
                                "\xC0\x80\xED\xA0\x80\xFF\xFE",
                                "#012#033",
                                "trailing blanks   ",
                                "trailing \\",
                                "\x7F\x7F]"};

/// Entries of every type, told apart by their number.
class SyslogServersTest : public SettingsTest {
 protected:
  SyslogServersTest() {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    const LdfFile file = {.globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}},
                          .entries = {{.id = kEvent,
                                       .mask = 1,
                                       .message_text = "Entry %d%Number%: %s%Text%",
                                       .attributes = {{"Number", TypeUInt4},
                                                      {"Text", TypeMBChar2K},
                                                      {"Bytes", TypeChar256},
                                                      {"Bool", TypeBool},
                                                      {"SInt4", TypeSInt4},
                                                      {"Float", TypeFloat},
                                                      {"Moment", TypeTimestamp},
                                                      {"na\"me\\\n]{=\xC3\xA4}", TypeUInt1}}}}};
    const std::string bytes = with_names(file.bytes(), {.events = {{kEvent, {"HOSTILE EVENT]\"", ""}}}});
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", bytes).c_str());
  }

  static qz_LOG_LogEntry hostile_entry(unsigned number, RandomNumbers& random) {
    qz_LOG_LogEntry entry(kEvent, number % 10);
    entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930 + number), true);
    entry.AddAttrib4u("Number", number);
    const bool is_listed = random.one_in(2);
    const std::string text = is_listed ? kHostile[random.below(std::size(kHostile))]
                                       : random.text(random.one_in(20) ? random.below(700) : random.below(60));
    entry.AddAttribMBStr("Text", text.c_str());
    if (random.one_in(3)) entry.AddAttribStr("Bytes", random.text(random.below(60)).c_str());
    if (random.one_in(2)) entry.AddAttribBool("Bool", random.one_in(2));
    if (random.one_in(2)) entry.AddAttrib4("SInt4", std::numeric_limits<int>::min());
    if (random.one_in(2)) entry.AddAttribFloat8("Float", random.one_in(2) ? HUGE_VAL : 0.1);
    if (random.one_in(2)) entry.AddAttribTime("Moment", qz_Time::from_unix_seconds(-1));
    if (random.one_in(2)) entry.AddAttrib1u("na\"me\\\n]{=\xC3\xA4}", 255);
    return entry;
  }

  /// Sends entries, waits until the server has written them all, and looks whether each came back as it was.
  void expect_all_come_back(const Settings& settings, ServerProcess& server, const std::string& file) {
    qz_LOG_SyslogSink sink(settings);
    write_hostile_entries(sink);
    EXPECT_EQ(sink.GetStatus().without_entry, 0U);
    expect_all_in(file, server);
  }

  /// The same with entries that go to files, and from there to the server.
  void expect_all_come_back_from_files(unsigned port, ServerProcess& server, const std::string& file) {
    if (!fs::exists(QZLOG_SYSLOG_PLUGIN)) GTEST_SKIP() << "there is no plug-in for syslog";
    qz_LOG_FileSinkSettings settings;
    fs::create_directory(folder_.path("logs"));
    settings.folder = folder_.path("logs");
    settings.prefix = "s";
    qz_LOG_FileSink sink(settings);
    write_hostile_entries(sink);
    const std::string command = std::string(QZLOG_COMMAND) + " ship '" + folder_.path("logs") + "/s' --once --state '" +
                                folder_.path("state.json") + "' --to syslog+tcp://127.0.0.1:" + std::to_string(port);
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    expect_all_in(file, server);
  }

  void write_hostile_entries(qz_LOG_Sink& sink) {
    SeededRandom random;
    for (unsigned number = 0; number < static_cast<unsigned>(rounds(20000)); ++number) {
      const qz_LOG_LogEntry entry = hostile_entry(number, random);
      lines_.push_back(entry.ToJson());
      messages_.push_back(entry.FormatMessage());
      ASSERT_TRUE(sink.Write(entry)) << number;
    }
    EXPECT_EQ(sink.Close(60000), 0U);
  }

  void expect_all_in(const std::string& file, ServerProcess& server) {
    EXPECT_TRUE(has_lines(file, lines_.size()));
    server.stop();
    compare(file, lines_, messages_);
  }

  /// Whether a file comes to have so many lines; what was counted is not read again.
  static bool has_lines(const std::string& path, std::size_t wanted) {
    std::size_t lines = 0;
    std::streamoff at = 0;
    std::string part(1U << 20, '\0');
    return comes_true([&] {
      std::ifstream file(path, std::ios::binary);
      file.seekg(at);
      while (file.read(part.data(), static_cast<std::streamsize>(part.size())), file.gcount() > 0) {
        at += file.gcount();
        lines += static_cast<std::size_t>(std::count(part.begin(), part.begin() + file.gcount(), '\n'));
      }
      return lines >= wanted;
    });
  }

  static void compare(const std::string& file, const std::vector<std::string>& lines,
                      const std::vector<std::string>& messages) {
    FileSource bytes(file);
    qzlog_tool::SyslogSource source(bytes);
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source, file.c_str());
    qz_LOG_EntryLine line;
    unsigned count = 0;
    std::vector<bool> seen(lines.size());
    while (reader.Next(line)) {
      ASSERT_FALSE(line.IsLoss());
      const unsigned number = line.GetEntry().GetAttrib4u("Number");
      ASSERT_LT(number, lines.size());
      ASSERT_FALSE(seen[number]) << number;
      seen[number] = true;
      ASSERT_EQ(without_head({line.GetSource(), line.GetSourceLength()}), lines[number]);
      ASSERT_EQ(line.GetEntry().ToJson(), read_again(lines[number]));
      ASSERT_EQ(line.GetEntry().FormatMessage(), messages[number]);
      ASSERT_EQ(line.GetSeq(), number + 1ULL);
      ++count;
    }
    EXPECT_EQ(count, lines.size());
    EXPECT_EQ(reader.GetErrorCount(), 0U);
    EXPECT_EQ(source.counts().broken + source.counts().omitted, 0U);
  }

  std::vector<std::string> lines_;
  std::vector<std::string> messages_;

  /// A line as the entry has it: without the head, and with the character that the sink does not send as it is.
  static std::string without_head(std::string_view line) {
    std::string text = '{' + std::string(line.substr(line.find("\"id\":")));
    constexpr std::string_view kEscape = "\\u007F";
    for (std::size_t at = 0; (at = text.find(kEscape, at)) != std::string::npos;)
      text.replace(at, kEscape.size(), "\x7F");
    return text;
  }

  /// What the entry of a line is written as: the order of attributes may be another one than that of adding them.
  static std::string read_again(const std::string& line) {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(line.data(), line.size());
    qz_LOG_EntryLine read;
    return reader.Next(read) ? read.GetEntry().ToJson() : "no entry: " + line;
  }

  class FileSource : public qz_LOG_ByteSource {
   public:
    explicit FileSource(const std::string& path) : file_(path, std::ios::binary) {}
    std::size_t Read(char* buffer, std::size_t size) override {
      file_.read(buffer, static_cast<std::streamsize>(size));
      return static_cast<std::size_t>(file_.gcount());
    }

   private:
    std::ifstream file_;
  };

  static Settings tcp(unsigned port) {
    Settings settings;
    settings.transport = Settings::kTcp;
    settings.host = "127.0.0.1";
    settings.port = port;
    settings.longest_wait_milliseconds = 60000;
    settings.longest_pause_milliseconds = 100;
    settings.application = "qzlog-test";
    return settings;
  }

  /// Tries until the server listens.
  static bool is_listening(unsigned port) {
    return comes_true([port] {
      const ServerSocket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
      const sockaddr_in address = loopback(port);
      return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    });
  }

  std::string out() const { return folder_.path("out"); }
  std::string server_log() const { return folder_.path("server.log"); }

  // rsyslogd

  static std::string rsyslogd() { return find_file("rsyslog", "/usr/sbin/rsyslogd"); }
  /// Writes to a file what comes, as RFC 5424 has it, or with the parameters that it found as JSON.
  std::vector<std::string> rsyslog_with(const std::string& input) const {
    const std::string modules =
        fs::path(find_file("rsyslog", "/usr/lib/x86_64-linux-gnu/rsyslog/imtcp.so")).parent_path();
    const std::string configuration = folder_.write(
        "rsyslog.conf", "global(workDirectory=\"" + folder_.path() + "\")\nmodule(load=\"mmpstrucdata\")\n" + input +
                            "\ntemplate(name=\"whole\" type=\"string\" string=\"<%PRI%>1 %TIMESTAMP:::date-rfc3339% "
                            "%HOSTNAME% %APP-NAME% %PROCID% "
                            "%MSGID% %STRUCTURED-DATA%%msg%\\n\")\n"
                            "template(name=\"found\" type=\"string\" string=\"%$!rfc5424-sd%\\n\")\n"
                            "action(type=\"mmpstrucdata\")\n"
                            "action(type=\"omfile\" file=\"" +
                            out() +
                            "\" template=\"whole\")\n"
                            "action(type=\"omfile\" file=\"" +
                            out() + ".json\" template=\"found\")\n");
    return {rsyslogd(), "-n", "-f", configuration, "-i", folder_.path("rsyslog.pid"), "-M", modules};
  }

  // syslog-ng

  static std::string syslog_ng() { return find_file("syslog-ng-core", "/usr/sbin/syslog-ng"); }
  std::vector<std::string> syslog_ng_with(const std::string& source, const std::string& destination) const {
    const std::string modules =
        fs::path(find_file("syslog-ng-core", "/usr/lib/syslog-ng/3.38/libsyslogformat.so")).parent_path();
    const std::string configuration = folder_.write(
        "syslog-ng.conf",
        "@version: 3.38\noptions { keep-hostname(yes); stats-freq(0); log-msg-size(65536); };\nsource s { " + source +
            " };\ndestination d { file(\"" + out() + "\" " + destination +
            "); };\nlog { source(s); destination(d); };\n");
    return {syslog_ng(),
            "-F",
            "-f",
            configuration,
            "--module-path=" + modules,
            "--persist-file=" + folder_.path("persist"),
            "--pidfile=" + folder_.path("pid"),
            "--control=" + folder_.path("control"),
            "--no-caps"};
  }
};

TEST_F(SyslogServersTest, Rsyslog_OverTcp_GivesEveryEntryBack) {
  if (rsyslogd().empty()) GTEST_SKIP() << "rsyslogd is not there";
  const unsigned port = free_port(SOCK_STREAM);
  ServerProcess server(rsyslog_with("module(load=\"imtcp\")\ninput(type=\"imtcp\" address=\"127.0.0.1\" port=\"" +
                                    std::to_string(port) + "\")"),
                       server_log());
  ASSERT_TRUE(is_listening(port)) << read_file(server_log());
  expect_all_come_back(tcp(port), server, out());
  // What it makes of parameters: their names in lower case.
  std::ifstream found(out() + ".json");
  std::string first;
  std::getline(found, first);
  EXPECT_NE(first.find("\"qzlog@32473\": { \"entry\": \"{\\\"writer\\\":"), std::string::npos) << first;
  EXPECT_NE(first.find("\"number\": \"0\""), std::string::npos) << first;
}

TEST_F(SyslogServersTest, Rsyslog_FromFiles_GivesEveryEntryBack) {
  if (rsyslogd().empty()) GTEST_SKIP() << "rsyslogd is not there";
  const unsigned port = free_port(SOCK_STREAM);
  ServerProcess server(rsyslog_with("module(load=\"imtcp\")\ninput(type=\"imtcp\" address=\"127.0.0.1\" port=\"" +
                                    std::to_string(port) + "\")"),
                       server_log());
  ASSERT_TRUE(is_listening(port)) << read_file(server_log());
  expect_all_come_back_from_files(port, server, out());
}

TEST_F(SyslogServersTest, Rsyslog_OverTheLocalSocket_GivesEveryEntryBack) {
  if (rsyslogd().empty()) GTEST_SKIP() << "rsyslogd is not there";
  const std::string path = folder_.path("log");
  ServerProcess server(rsyslog_with("module(load=\"imuxsock\" SysSock.Use=\"off\")\ninput(type=\"imuxsock\" Socket=\"" +
                                    path + "\" RateLimit.Interval=\"0\" CreatePath=\"on\")"),
                       server_log());
  ASSERT_TRUE(comes_true([&] { return fs::exists(path); })) << read_file(server_log());
  Settings settings = tcp(1);
  settings.transport = Settings::kLocal;
  settings.path = path;
  expect_all_come_back(settings, server, out());
}

TEST_F(SyslogServersTest, SyslogNg_OverTcp_GivesEveryEntryBack) {
  if (syslog_ng().empty()) GTEST_SKIP() << "syslog-ng is not there";
  const unsigned port = free_port(SOCK_STREAM);
  ServerProcess server(
      syslog_ng_with("syslog(ip(\"127.0.0.1\") port(" + std::to_string(port) + ") transport(\"tcp\"));",
                     "flags(syslog-protocol)"),
      server_log());
  ASSERT_TRUE(is_listening(port)) << read_file(server_log());
  expect_all_come_back(tcp(port), server, out());
}

TEST_F(SyslogServersTest, SyslogNg_FromFiles_GivesEveryEntryBack) {
  if (syslog_ng().empty()) GTEST_SKIP() << "syslog-ng is not there";
  const unsigned port = free_port(SOCK_STREAM);
  ServerProcess server(
      syslog_ng_with("syslog(ip(\"127.0.0.1\") port(" + std::to_string(port) + ") transport(\"tcp\"));",
                     "flags(syslog-protocol)"),
      server_log());
  ASSERT_TRUE(is_listening(port)) << read_file(server_log());
  expect_all_come_back_from_files(port, server, out());
}

TEST_F(SyslogServersTest, SyslogNg_OverTheLocalSocket_GivesEveryEntryBack) {
  if (syslog_ng().empty()) GTEST_SKIP() << "syslog-ng is not there";
  const std::string path = folder_.path("log");
  ServerProcess server(syslog_ng_with("unix-dgram(\"" + path + "\");", ""), server_log());
  ASSERT_TRUE(comes_true([&] { return fs::exists(path); })) << read_file(server_log());
  Settings settings = tcp(1);
  settings.transport = Settings::kLocal;
  settings.path = path;
  expect_all_come_back(settings, server, out());
}

}  // namespace
}  // namespace qz_test
