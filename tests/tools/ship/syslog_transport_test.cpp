// `qzlog ship` to servers of syslog: what they get, and what becomes of it when they are away, slow or the wrong ones.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ship/transport.h"
#include "tests/sinks/syslog_servers.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/ship/ship_fixture.h"
#include "tools/syslog/syslog_entry.h"

namespace qzlog_test {
namespace {

using qz_test::StreamServer;

std::string line_of(const std::string& message) {
  std::string line;
  return qzlog_tool::find_syslog_entry(message, line) == qzlog_tool::SyslogFound::kLine ? line : "no line: " + message;
}

/// Takes messages until it is destroyed, from one connection after the other.
class Collector {
 public:
  Collector() : thread_([this] { collect(); }) {}
  ~Collector() { stop(); }
  unsigned port() const { return server_.port(); }
  std::vector<std::string> stop() {
    is_ending_ = true;
    if (thread_.joinable()) thread_.join();
    return messages_;
  }

 private:
  void collect() {
    while (!is_ending_) {
      const std::string message = server_.next(50);
      if (message.empty()) {
        if (is_ended()) server_.close_connection();
        continue;
      }
      messages_.push_back(message);
    }
    for (const std::string& message : server_.all_there()) messages_.push_back(message);
  }

  /// By the other side, and nothing of what it sent is left.
  bool is_ended() const {
    char byte = 0;
    return server_.connection() && ::recv(server_.connection().get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
  }

  StreamServer server_;
  std::atomic<bool> is_ending_{false};
  std::vector<std::string> messages_;
  std::thread thread_;
};

class SyslogTransport : public ShipFixture {
 protected:
  static std::string url_of(unsigned port) { return "syslog+tcp://127.0.0.1:" + std::to_string(port); }
  CommandResult ship_to(const std::string& url, const std::string& more = "") const {
    return run("$QZLOG ship logs/s --to '" + url + "' --state state.json --once " + more);
  }
  std::string ship_error(const std::string& url, const std::string& more = "") const {
    write("logs/s.20261121.0001", line(1));
    std::filesystem::remove(folder_.path("state.json"));
    const CommandResult result = ship_to(url, more);
    EXPECT_NE(result.status, 0);
    return result.err;
  }
};

TEST_F(SyslogTransport, Line_IsAMessageWithItsPartsParametersAndText) {
  write("d.yaml",
        "version: \"1.0\"\nglobals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, "
        "{name: DAYLIGHT_SAVING_ACTIVE, type: Bool}]\nentries:\n  - {id: 1001, name: DISK_FULL, message: "
        "\"Gr\u00F6\u00DFe of {Name}\", "
        "attributes: [{name: Name, type: Char32}, {name: entry, type: Char32}, {name: \"a=b c\", type: Bool}, "
        "{name: n, type: SInt2}, {name: f, type: Float}]}\n");
  ASSERT_EQ(run("$QZLOG compile d.yaml -o d.ldf").status, 0);
  const std::string line = R"({"writer":"web1/4711/99","seq":1,"written":"2026-11-21T08:15:30.250001999Z","id":1001,)"
                           R"("level":7,"time":"2026-11-21T08:15:29Z","name":"DISK_FULL","attributes":)"
                           R"({"Name":"v\"o]l\\1","entry":"x","a=b c":true,"n":-5,"f":0.5}})";
  append("logs/s.20261121.0001", line + "\n");
  Collector collector;
  const CommandResult result = ship_to(url_of(collector.port()),
                                       "--product shop --definitions d.ldf --locale en_US --option facility=local0 "
                                       "--option enterprise-number=4242");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  const std::vector<std::string> messages = collector.stop();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0],
            R"(<131>1 2026-11-21T08:15:30.250001Z web1 shop 4711 DISK_FULL [qzlog@4242 entry=")"
            R"({\"writer\":\"web1/4711/99\",\"seq\":1,\"written\":\"2026-11-21T08:15:30.250001999Z\",\"id\":1001,)"
            R"(\"level\":7,\"time\":\"2026-11-21T08:15:29Z\",\"name\":\"DISK_FULL\",\"attributes\":)"
            R"({\"Name\":\"v\\\"o\]l\\\\1\",\"entry\":\"x\",\"a=b c\":true,\"n\":-5,\"f\":0.5}}" )"
            R"(Name="v\"o\]l\\1" a_b_c="true" n="-5" f="0.5"] )"
            "\xEF\xBB\xBFGr\u00F6\u00DFe of v\"o]l\\1");
  EXPECT_EQ(line_of(messages[0]), line);
}

TEST_F(SyslogTransport, LineWithoutAnything_HasWhatTheHostKnows) {
  append("logs/s.20261121.0001", "{\"id\":1}\n");
  Collector collector;
  EXPECT_EQ(ship_to(url_of(collector.port()), "--option application=door").err, "");
  const std::vector<std::string> messages = collector.stop();
  ASSERT_EQ(messages.size(), 1U);
  const CommandResult host = run("hostname");
  EXPECT_EQ(messages[0],
            "<15>1 - " + host.out.substr(0, host.out.size() - 1) + R"( door - - [qzlog@32473 entry="{\"id\":1}"])");
}

/// The long form, of `./dev cluster-test`, has 200 kills.
int kills() { return std::getenv("QZLOG_STRESS") != nullptr ? 200 : 12; }

std::string hostile_text(qz_test::SeededRandom& random) {
  static const char* const kTexts[] = {"]\\\\\\\"",           "\\u0000",  "\xC3\xA9\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                       "[qzlog@1 entry=\\\"", "12 <14>1 "};
  std::string text;
  for (std::size_t left = random.below(40); left != 0; --left) {
    const std::size_t byte = random.below(256);
    if (random.one_in(8)) {
      text += kTexts[random.below(std::size(kTexts))];
    } else if (byte < 0x20) {
      char escape[24];
      std::snprintf(escape, sizeof escape, "\\u%04zx", byte);
      text += escape;
    } else if (byte == '"' || byte == '\\') {
      text += {'\\', static_cast<char>(byte)};
    } else if (byte < 0x7F) {
      text += static_cast<char>(byte);
    }
  }
  return text;
}

std::set<std::string> write_hostile_lines(const std::string& path, int count) {
  qz_test::SeededRandom random;
  std::set<std::string> lines;
  std::ofstream file(path, std::ios::binary);
  for (int seq = 1; seq <= count; ++seq) {
    const std::string line = R"({"writer":"h/1/2","seq":)" + std::to_string(seq) + R"(,"id":1,"attributes":{"T":")" +
                             hostile_text(random) + R"("}})";
    lines.insert(line);
    file << line << '\n';
  }
  return lines;
}

TEST_F(SyslogTransport, HostileLines_ComeBackEqual) {
  const int count = qz_test::rounds(20'000);
  const std::set<std::string> lines = write_hostile_lines(folder_.path("logs/s.20261121.0001"), count);
  Collector collector;
  const CommandResult result = ship_to(url_of(collector.port()), "--option largest-message-bytes=65536");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  std::set<std::string> received;
  for (const std::string& message : collector.stop()) received.insert(line_of(message));
  EXPECT_TRUE(received == lines) << received.size() << " of " << lines.size();
}

TEST_F(SyslogTransport, ConnectionThatBreaks_HasTheBatchSentAgain) {
  append("logs/s.20261121.0001", lines(1, 3000));
  StreamServer server;
  server.shrink_window();
  Shipper shipper(folder_.path(), {"logs/s", "--to", url_of(server.port()), "--state", "state.json", "--once"});
  // The rest is in the systems of both sides, and not confirmed.
  EXPECT_NE(server.next().find("\\\"seq\\\":1,"), std::string::npos);
  server.break_connection();
  ASSERT_TRUE(server.accept());
  for (int seq = 1; seq <= 3000; ++seq) ASSERT_EQ(line_of(server.next()) + '\n', line(seq));
  EXPECT_EQ(shipper.wait(), 0) << read("said");
}

/// What the host offers of a record that nothing is known of.
qzlog_host silent_host() {
  return {.size = sizeof(qzlog_host),
          .context = nullptr,
          .warn = [](void*, const char*) {},
          .is_ending = [](void*) { return 0; },
          .find_member = [](void*, const qzlog_record*, const char*) { return qzlog_value(); },
          .find_attribute = [](void*, const qzlog_record*, const char*) { return qzlog_value(); },
          .attributes = [](void*, const qzlog_record*, std::size_t* count) -> const qzlog_attribute* {
            *count = 0;
            return nullptr;
          },
          .moment = [](void*, const qzlog_record*, std::int64_t*) { return 0; },
          .body = [](void*, const qzlog_record*, qzlog_text*) { return 0; }};
}

TEST_F(SyslogTransport, ServerThatDoesNotRead_HasNothingAcknowledged) {
  void* const plugin = ::dlopen(QZLOG_SYSLOG_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugin, nullptr) << ::dlerror();
  const auto* const transport =
      reinterpret_cast<qzlog_ship_transport_function>(::dlsym(plugin, QZLOG_TRANSPORT_FUNCTION))();
  StreamServer server;
  server.shrink_window();
  const std::string authority = "127.0.0.1:" + std::to_string(server.port());
  const qzlog_settings settings = {.size = sizeof(qzlog_settings),
                                   .url = "",
                                   .scheme = "syslog+tcp",
                                   .authority = authority.c_str(),
                                   .path = "",
                                   .ca_file = nullptr,
                                   .credentials_file = nullptr,
                                   .options = nullptr,
                                   .option_count = 0,
                                   .client = "test"};
  const qzlog_host host = silent_host();
  const std::string text = "{\"id\":1,\"a\":\"" + std::string(2000, 'x') + "\"}";
  const std::vector<qzlog_record> records(5000, {.identity = {"a", 1},
                                                 .line = {text.data(), text.size()},
                                                 .writer = {},
                                                 .seq = 0,
                                                 .product = {},
                                                 .event = {},
                                                 .id = 1,
                                                 .level = 3});
  // Much, which the sending side has no room for, and little, which only the other one has none for.
  for (const std::size_t count : {std::size_t{5000}, std::size_t{20}}) {
    qzlog_sender* sender = nullptr;
    qzlog_error error = {};
    ASSERT_EQ(transport->open_sender(&settings, &host, 5000, &sender, &error), QZLOG_DONE) << error.text;
    std::vector<qzlog_result> results(count);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(transport->send(sender, records.data(), count, 300, results.data(), &error), QZLOG_LATER);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
    EXPECT_NE(std::string(error.text).find("the server does not read"), std::string::npos) << error.text;
    EXPECT_TRUE(std::all_of(results.begin(), results.end(), [](const auto& each) { return each.fate == QZLOG_AGAIN; }));
    transport->close_sender(sender);
  }
}

// Of HTTP for example, which answers what it does not understand.
TEST_F(SyslogTransport, ServerThatAnswers_IsNoServerOfSyslog) {
  append("logs/s.20261121.0001", lines(1, 3));
  StreamServer server;
  std::thread answers([&server] {
    server.next(5000);
    const std::string answer = "HTTP/1.1 400 Bad Request\r\n\r\n";
    EXPECT_EQ(::send(server.connection().get(), answer.data(), answer.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(answer.size()));
  });
  const CommandResult result = ship_to(url_of(server.port()));
  answers.join();
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("the server answers, which none of syslog does: is the port right?"), std::string::npos)
      << result.err;
  Collector right;
  EXPECT_EQ(run("$QZLOG ship logs/s --state state.json --once --moved --to " + url_of(right.port())).err, "");
  EXPECT_EQ(right.stop().size(), 3U) << "nothing was taken for delivered";
}

TEST_F(SyslogTransport, ShippersThatAreKilled_LoseNothing) {
  append("logs/s.20261121.0001", lines(1, 20'000));
  Collector collector;
  qz_test::SeededRandom random;
  for (int count = 0; count < kills(); ++count) {
    Shipper shipper(folder_.path(),
                    {"logs/s", "--to", url_of(collector.port()), "--state", "state.json", "--batch", "100"});
    std::this_thread::sleep_for(std::chrono::milliseconds(random.below(60)));
    shipper.send(SIGKILL);
    EXPECT_EQ(shipper.wait(), -SIGKILL) << read("said");
  }
  EXPECT_EQ(ship_to(url_of(collector.port())).status, 0);
  std::map<std::string, int> received;
  for (const std::string& message : collector.stop()) ++received[line_of(message)];
  EXPECT_EQ(received.size(), 20'000U);
  // One batch for each kill at most.
  std::size_t doubles = 0;
  for (const auto& [line, times] : received) doubles += static_cast<std::size_t>(times - 1);
  EXPECT_LE(doubles, 100U * static_cast<unsigned>(kills()));
}

TEST_F(SyslogTransport, LineThatIsTooLong_IsADeadLetter_AfterParametersAndText) {
  const auto line_with = [](std::size_t bytes, int seq) {
    return R"({"writer":"h/1/2","seq":)" + std::to_string(seq) + R"(,"id":1,"attributes":{"A":"1","B":")" +
           std::string(bytes, 'x') + "\"}}\n";
  };
  append("logs/s.20261121.0001", line_with(100, 1) + line_with(250, 2) + line_with(2000, 3) + "{\"id\":\t2}\n");
  Collector collector;
  const CommandResult result =
      ship_to(url_of(collector.port()), "--option largest-message-bytes=480 --dead-letters dead.jsonl");
  EXPECT_EQ(result.status, 1);
  const std::vector<std::string> messages = collector.stop();
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_NE(messages[0].find(R"(" A="1" B="xxx)"), std::string::npos) << messages[0];
  EXPECT_TRUE(messages[1].ends_with(R"(" A="1" omitted="1"])")) << messages[1];
  EXPECT_LE(messages[1].size(), 480U);
  EXPECT_EQ(run("jq -r .reason dead.jsonl").out,
            "its message would be longer than 480 bytes: where the server takes longer ones, raise --option "
            "largest-message-bytes\n"
            "its line has control characters, such as a tab, which servers of syslog replace\n");
}

TEST_F(SyslogTransport, UrlAndOptionsThatAreWrong_AreErrorsThatSaySo) {
  const char* const kAuthority =
      "write the host and the port of the server, as in syslog+tls://logs.example.com:6514 or [2001:db8::1]:6514";
  for (const char* const place : {"here", ":514", "here:", "here:0", "here:65536", "::1:514", "here:5x"}) {
    EXPECT_NE(ship_error("syslog+tcp://" + std::string(place)).find(kAuthority), std::string::npos) << place;
  }
  const struct {
    const char* url;
    const char* more;
    const char* error;
  } kCases[] = {
      {"syslog://a:1", "", "syslog is reached as syslog+tcp://HOST:PORT or, encrypted, as syslog+tls://HOST:PORT"},
      {"syslog+tcp://a:1/x", "", "nothing may stand behind the port"},
      {"syslog+tcp://a:1", "--ca x", "certificates are for syslog+tls://; syslog+tcp:// has none"},
      {"syslog+tcp://a:1", "--option facility=loud", "--option facility takes the name of one"},
      {"syslog+tcp://a:1", "--option 'application=a b'", "--option application takes 1 to 48 characters of ASCII"},
      {"syslog+tcp://a:1", "--option largest-message-bytes=479", "largest-message-bytes"},
      {"syslog+tcp://a:1", "--option window=1", "there is no --option window for this receiver"},
      {"syslog+tls://a:1", "--ca nowhere", "the certificates to trust in"},
  };
  for (const auto& each : kCases) {
    EXPECT_NE(ship_error(each.url, each.more).find(each.error), std::string::npos) << each.url << ' ' << each.more;
  }
}

/// Keeps what it gets, of one connection after the other. Its arguments: the file to trust clients by, or "".
const char* const kTlsServer = R"(import os, socket, ssl, sys
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain("right.pem", "right.key")
if sys.argv[1]:
    context.verify_mode = ssl.CERT_REQUIRED
    context.load_verify_locations(sys.argv[1])
listener = socket.create_server(("127.0.0.1", 0))
with open("port.new", "w") as file:
    file.write(str(listener.getsockname()[1]))
os.rename("port.new", "port")
while True:
    connection, _ = listener.accept()
    try:
        with context.wrap_socket(connection, server_side=True) as session, open("got.txt", "ab") as got:
            while part := session.recv(65536):
                got.write(part)
    except OSError as error:
        print(error, file=sys.stderr, flush=True)
)";

class SyslogOverTls : public SyslogTransport {
 protected:
  SyslogOverTls() {
    write("server.py", kTlsServer);
    write("got.txt", "");
    for (const std::string name : {"right", "wrong"}) {
      run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=" + name +
          " -addext subjectAltName=IP:127.0.0.1 -keyout " + name + ".key -out " + name + ".pem 2> /dev/null && cat " +
          name + ".key " + name + ".pem > " + name + ".both");
    }
  }
  ~SyslogOverTls() override { run("kill $(cat server.pid)"); }

  /// Its certificate is "right".
  void serve(const std::string& trusted_clients = "") {
    ASSERT_EQ(
        run("python3 server.py '" + trusted_clients + "' > /dev/null 2> server.log & echo $! > server.pid").status, 0);
    ASSERT_TRUE(wait_until([this] { return folder_.has("port"); })) << read("server.log");
    port_ = read("port");
  }
  std::string url() const { return "syslog+tls://127.0.0.1:" + port_; }
  bool has_openssl() const { return run("openssl version && python3 -c 'import ssl'").status == 0; }

  std::string port_ = "1";
};

TEST_F(SyslogOverTls, CertificateThatIsTrusted_GetsEverything) {
  if (!has_openssl()) GTEST_SKIP() << "openssl or python3 is not there";
  const int count = qz_test::rounds(20'000);
  const std::set<std::string> lines = write_hostile_lines(folder_.path("logs/s.20261121.0001"), count);
  serve("wrong.pem");
  const CommandResult result =
      ship_to(url(), "--ca right.pem --credentials wrong.both --option largest-message-bytes=65536");
  EXPECT_EQ(result.status, 0) << result.err;
  std::set<std::string> received;
  ASSERT_TRUE(wait_until([&] {
    received.clear();
    const std::string got = read("got.txt");
    for (std::size_t at = 0; at < got.size();) {
      const std::size_t blank = got.find(' ', at);
      if (blank == std::string::npos) break;
      const std::size_t size = std::stoul(got.substr(at, blank - at));
      received.insert(line_of(got.substr(blank + 1, size)));
      at = blank + 1 + size;
    }
    return received.size() >= lines.size();
  })) << received.size();
  EXPECT_TRUE(received == lines);
}

TEST_F(SyslogOverTls, CertificateOfAnother_IsRefusedForGood) {
  if (!has_openssl()) GTEST_SKIP() << "openssl or python3 is not there";
  serve();
  EXPECT_NE(ship_error(url(), "--ca wrong.pem").find("the server's certificate is refused: self-signed certificate"),
            std::string::npos);
  // Not signed by whom the system trusts.
  EXPECT_NE(ship_error(url()).find("the server's certificate is refused: self-signed certificate"), std::string::npos);
  EXPECT_EQ(read("got.txt"), "");
}

TEST_F(SyslogOverTls, CertificateForAnotherName_IsRefusedForGood) {
  if (!has_openssl()) GTEST_SKIP() << "openssl or python3 is not there";
  serve();
  const std::string named = "syslog+tls://localhost:" + port_;
  const std::string error = ship_error(named, "--ca right.pem");
  EXPECT_NE(error.find("the server's certificate is refused: hostname mismatch"), std::string::npos) << error;
  EXPECT_EQ(read("got.txt"), "");
}

TEST_F(SyslogOverTls, ServerThatWantsACertificate_IsAnErrorThatSaysSo) {
  if (!has_openssl()) GTEST_SKIP() << "openssl or python3 is not there";
  serve("right.pem");
  for (const char* const credentials : {"", "--credentials wrong.both"}) {
    const std::string error = ship_error(url(), std::string("--ca right.pem ") + credentials);
    EXPECT_NE(error.find("the server does not take our certificate: "), std::string::npos) << error;
  }
}

TEST_F(SyslogOverTls, CredentialsThatCannotBeUsed_AreAnErrorWithoutTheirText) {
  if (!has_openssl()) GTEST_SKIP() << "openssl or python3 is not there";
  run("openssl ec -in right.key -aes128 -passout pass:secret -out locked.key 2> /dev/null && cat right.pem locked.key "
      "> locked.both");
  write("secret.pem", "very secret");
  for (const char* const file : {"locked.both", "secret.pem", "nowhere", "right.pem"}) {
    const std::string error = ship_error(url(), std::string("--ca right.pem --credentials ") + file);
    EXPECT_NE(error.find("has no certificate with a key that belongs to it and has no password"), std::string::npos)
        << error;
    EXPECT_EQ(error.find("very secret"), std::string::npos);
  }
}

}  // namespace
}  // namespace qzlog_test
