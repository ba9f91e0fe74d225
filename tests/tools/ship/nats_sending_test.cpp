// What becomes of records that are sent to a stream, through the functions of the plug-in, and what people are told
// where it cannot work.
#include <fstream>

#include "tests/support/seeded_random.h"
#include "tests/tools/ship/nats_fixture.h"
#include "tools/ship/transport_sender.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_url.h"

namespace qzlog_test {
namespace {

using qzlog_tool::TransportUrl;

struct Sample {
  std::string identity;
  std::string line;
  std::string event;
};

class NatsSending : public NatsFixture {
 protected:
  std::vector<std::int32_t> send(const std::vector<Sample>& samples) {
    const TransportUrl url(nats_url());
    const qzlog_tool::TransportPlugin plugin(url, QZLOG_BUILT_PLUGINS);
    qzlog_tool::TransportOptions options;
    options.client = "test";
    options.options = {{"create", "yes"}};
    const qzlog_tool::TransportSettings settings(url, options);
    qzlog_tool::KnownDefinitions known;
    qzlog_tool::RecordHost host(
        known, nullptr, [](const std::string&) {}, [] { return false; });
    qzlog_tool::TransportSender sender(plugin, settings, host);
    std::vector<std::int32_t> fates;
    for (std::size_t begin = 0; begin < samples.size(); begin += 500) {
      const std::size_t end = std::min(begin + 500, samples.size());
      send_batch(
          {samples.begin() + static_cast<std::ptrdiff_t>(begin), samples.begin() + static_cast<std::ptrdiff_t>(end)},
          sender, fates);
    }
    return fates;
  }

  static qzlog_text text_of(const std::string& text) { return {text.data(), text.size()}; }
  void send_batch(const std::vector<Sample>& samples, qzlog_tool::TransportSender& sender,
                  std::vector<std::int32_t>& fates) {
    std::vector<qzlog_record> records;
    for (const Sample& sample : samples) {
      qzlog_record& record = records.emplace_back();
      record.identity = text_of(sample.identity);
      record.line = text_of(sample.line);
      record.event = text_of(sample.event);
      record.level = -1;
    }
    std::vector<qzlog_result> results(records.size());
    EXPECT_EQ(sender.send(records, std::chrono::seconds(20), results, reason_), QZLOG_DONE) << reason_;
    for (const qzlog_result& result : results) {
      fates.push_back(result.fate);
      if (result.reason != nullptr) reason_ = result.reason;
    }
  }

  /// Takes the limit of stream S away.
  void let_grow() const {
    natsConnection* connection = nullptr;
    jsCtx* context = nullptr;
    jsStreamInfo* info = nullptr;
    jsErrCode code = jsErrCode(0);
    ASSERT_EQ(natsConnection_ConnectTo(&connection, ("nats://" + server_->address()).c_str()), NATS_OK);
    ASSERT_EQ(natsConnection_JetStream(&context, connection, nullptr), NATS_OK);
    ASSERT_EQ(js_GetStreamInfo(&info, context, "S", nullptr, &code), NATS_OK);
    info->Config->MaxBytes = -1;
    EXPECT_EQ(js_UpdateStream(nullptr, context, info->Config, nullptr, &code), NATS_OK);
    jsStreamInfo_Destroy(info);
    jsCtx_Destroy(context);
    natsConnection_Destroy(connection);
  }

  std::string reason_;
};

TEST_F(NatsSending, RandomLines_ComeBackEqual) {
  qz_test::SeededRandom random;
  std::vector<Sample> samples;
  for (int number = 0; number < 20000; ++number) {
    std::string line = random.text(random.below(random.one_in(100) ? 5000 : 200));
    std::replace(line.begin(), line.end(), '\n', '\0');
    samples.push_back({"id/" + std::to_string(number), line, random.text(random.below(200))});
  }
  EXPECT_EQ(send(samples), std::vector<std::int32_t>(samples.size(), QZLOG_ACKNOWLEDGED));
  EXPECT_EQ(send({samples[0], samples[7]}), (std::vector<std::int32_t>{QZLOG_DOUBLE, QZLOG_DOUBLE}));
  const std::vector<StoredRecord> records = stored(server_->address());
  ASSERT_EQ(records.size(), samples.size());
  for (std::size_t index = 0; index < records.size(); ++index) {
    ASSERT_EQ(records[index].identity, samples[index].identity);
    ASSERT_EQ(records[index].line, samples[index].line) << index;
  }
}

TEST_F(NatsSending, LineLongerThanTheServerTakes_IsRefusedAlone) {
  const std::vector<std::int32_t> fates =
      send({{"a", "{}", ""}, {"b", std::string(2 << 20, 'x'), ""}, {"c", "{}", ""}});
  EXPECT_EQ(fates, (std::vector<std::int32_t>{QZLOG_ACKNOWLEDGED, QZLOG_REFUSED, QZLOG_ACKNOWLEDGED}));
  EXPECT_EQ(reason_, "it is longer than the server takes (max_payload)");
}

TEST_F(NatsSending, Subject_IsMadeOfProductEventAndLevel) {
  append("logs/s.20261121.0001", line(1, 7));
  EXPECT_EQ(ship_to(nats_url(), "--option create=yes --product 'a.b *'").err, "");
  const std::vector<StoredRecord> records = stored(server_->address());
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].subject, "S.a_b__.N.7");
  EXPECT_EQ(records[0].line + '\n', line(1, 7));
}

TEST_F(NatsSending, WrongUrlsAndOptions_AreErrorsBeforeAnythingIsSent) {
  append("logs/s.20261121.0001", line(1));
  write("user", "user = u\npassword = hidden\n");
  const auto expect_said = [this](const std::string& url, const std::string& more, const std::string& said) {
    const CommandResult result = run("timeout 20 $QZLOG ship logs/s --once --state x.json --to " + url + ' ' + more);
    EXPECT_EQ(result.status, 2) << url << more;
    EXPECT_NE(result.err.find(said), std::string::npos) << result.err;
  };
  expect_said(nats_url("nats+ssl"), "--credentials user", "no scheme 'nats+ssl': write nats:// or nats+tls://");
  expect_said(nats_url(), "--ca user", "--ca is for nats+tls://");
  // Nobody listens at port 1: it is known without asking.
  expect_said("nats://127.0.0.1:1/S", "--option creat=yes", "creat");
  expect_said("nats://127.0.0.1:1/S", "--option create=true", "create");
  expect_said("nats://127.0.0.1:1/S", "--option replicas=2", "--option replicas is for a stream that is made");
  expect_said("nats://127.0.0.1:70000/S", "", "no port in '127.0.0.1:70000'");
  expect_said("nats://127.0.0.1:42x2/S", "", "no port in '127.0.0.1:42x2'");
  expect_said("nats://127.0.0.1:1/a.b", "", "the stream 'a.b': a stream's name has no blanks");
  expect_said(nats_url(), "--option create=yes --option replicas=3", "replicas need a cluster of servers");
}

TEST_F(NatsSending, StreamThatIsMissing_IsNamedWithTheNextStep) {
  append("logs/s.20261121.0001", line(1));
  const CommandResult result = ship_to(nats_url());
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("there is no stream 'S'"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("--option create=yes"), std::string::npos) << result.err;
}

TEST_F(NatsSending, StreamThatIsFull_LeavesRecordsInTheirFiles) {
  append("logs/s.20261121.0001", lines(1, 2000));
  Shipper shipper(folder_.path(), nats_arguments(nats_url(), {"--option", "create=yes", "--option", "max-bytes=60000",
                                                              "--batch", "50"}));
  EXPECT_TRUE(wait_until([&] { return read("said").find("maximum bytes exceeded") != std::string::npos; }))
      << read("said");
  EXPECT_GT(stored(server_->address()).size(), 10U);
  let_grow();
  EXPECT_TRUE(wait_until([&] { return stored(server_->address()).size() >= 2000; })) << read("said");
  EXPECT_EQ(shipper.end(), 0) << read("said");
  expect_all(stored(server_->address()), 2000);
}

class NatsRights : public NatsSending {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
  }
  void start_with(const std::string& configuration) {
    write("nats.conf", configuration);
    start_server({"-js", "-c", folder_.path("nats.conf")});
    append("logs/s.20261121.0001", line(1));
  }
};

TEST_F(NatsRights, UserWhoMayNotPublish_IsToldSoAtOnce) {
  start_with(
      "authorization { users = [ {user: admin, password: a},"
      " {user: u, password: hidden, permissions: {publish: [\"$JS.API.>\"]}} ] }\n");
  write("admin", "user = admin\npassword = a\n");
  write("user", "user = u\npassword = hidden\n");
  EXPECT_EQ(ship_to(nats_url(), "--option create=yes --credentials admin").err, "");
  append("logs/s.20261121.0001", line(2));
  const auto begin = std::chrono::steady_clock::now();
  const CommandResult result = ship_to(nats_url(), "--credentials user");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("the account lacks a right"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("hidden"), std::string::npos) << result.err;
}

TEST_F(NatsRights, WrongPassword_EndsTheCommandWithoutNamingIt) {
  start_with("authorization {user: u, password: right}\n");
  write("user", "user = u\npassword = hidden\n");
  const CommandResult result = ship_to(nats_url(), "--credentials user");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("look at what stands in 'user'"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("hidden"), std::string::npos) << result.err;
}

TEST_F(NatsRights, ServerWithoutJetStream_EndsTheCommandWithTheNextStep) {
  start_server({});
  append("logs/s.20261121.0001", line(1));
  const CommandResult result = ship_to(nats_url(), "--option create=yes");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("start it with -js"), std::string::npos) << result.err;
}

class NatsTls : public NatsRights {
 protected:
  /// Files NAME.key and NAME.pem, a certificate for `host` that is its own authority.
  void make_certificate(const std::string& name, const std::string& host) const {
    const CommandResult made =
        run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=" + name +
            " -addext subjectAltName=" + host + " -keyout " + name + ".key -out " + name + ".pem");
    ASSERT_EQ(made.status, 0) << made.err;
  }
  void start_with_certificate(const std::string& name) {
    start_with("tls {cert_file: \"" + folder_.path(name + ".pem") + "\", key_file: \"" + folder_.path(name + ".key") +
               "\"}\n");
  }
  void expect_refused(const CommandResult& result) const {
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("certificate is not trusted"), std::string::npos) << result.err;
  }
};

TEST_F(NatsTls, CertificateOfTheServer_IsTrustedOnlyWhereItIsNamed) {
  make_certificate("good", "IP:127.0.0.1");
  make_certificate("other", "IP:127.0.0.1");
  start_with_certificate("good");
  expect_refused(ship_to(nats_url("nats+tls"), "--option create=yes"));
  expect_refused(ship_to(nats_url("nats+tls"), "--option create=yes --ca other.pem"));
  EXPECT_EQ(ship_to(nats_url("nats+tls"), "--option create=yes --ca good.pem").err, "");
  const CommandResult plain = ship_to(nats_url());
  EXPECT_EQ(plain.status, 2);
  EXPECT_NE(plain.err.find("nats+tls://"), std::string::npos) << plain.err;
}

TEST_F(NatsTls, CertificateForAnotherHost_IsRefused) {
  make_certificate("elsewhere", "DNS:elsewhere.example");
  start_with_certificate("elsewhere");
  expect_refused(ship_to(nats_url("nats+tls"), "--option create=yes --ca elsewhere.pem"));
}

}  // namespace
}  // namespace qzlog_test
