// OTLP over TLS: what is trusted, and what is not.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/ship/otlp/otlp_fixture.h"

namespace qzlog_test {
namespace {

/// The script of the same name, at work.
class TlsReceiver {
 public:
  TlsReceiver(const std::string& certificate, const std::string& key, const std::string& clients) {
    int ends[2] = {};
    if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::execlp("python3", "python3", "-B", QZLOG_TLS_RECEIVER, certificate.c_str(), key.c_str(), clients.c_str(),
               nullptr);
      ::_exit(127);
    }
    ::close(ends[1]);
    for (char digit = 0; ::read(ends[0], &digit, 1) == 1 && digit != '\n';) port_ += digit;
    ::close(ends[0]);
  }
  ~TlsReceiver() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  TlsReceiver(const TlsReceiver&) = delete;
  TlsReceiver& operator=(const TlsReceiver&) = delete;

  std::string url(const std::string& host = "127.0.0.1") const { return "otlp+https://" + host + ":" + port_; }

 private:
  pid_t process_ = -1;
  std::string port_;
};

class OtlpTls : public OtlpFixture {
 protected:
  /// NAME.pem and NAME.key: a certificate of its own for this name or address.
  void make_certificate(const std::string& name, const std::string& alternative) const {
    const std::string command = "cd '" + folder_.path() +
                                "' && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes " +
                                "-keyout " + name + ".key -out " + name + ".pem -days 2 -subj /CN=" + name +
                                " -addext subjectAltName=" + alternative + " 2> /dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
  }
  TlsReceiver receiver(const std::string& name, const std::string& clients = "-") const {
    return {folder_.path(name + ".pem"), folder_.path(name + ".key"), clients};
  }
};

TEST_F(OtlpTls, CertificateThatIsTrusted_Takes) {
  make_certificate("good", "IP:127.0.0.1");
  const TlsReceiver server = receiver("good");
  options_.ca_file = folder_.path("good.pem");
  send(server.url(), numbered(3));
  EXPECT_EQ(reason_, "");
  EXPECT_EQ(fates_, std::vector<std::int32_t>(3, QZLOG_ACKNOWLEDGED));
}

TEST_F(OtlpTls, CertificateThatIsNotTrusted_IsRefusedForGood) {
  make_certificate("good", "IP:127.0.0.1");
  make_certificate("bad", "IP:127.0.0.1");
  make_certificate("elsewhere", "DNS:example.org");
  const TlsReceiver bad = receiver("bad");
  options_.ca_file = folder_.path("good.pem");
  send(bad.url(), numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_.substr(0, 44), "the receiver's certificate is not trusted: S") << reason_;
  EXPECT_TRUE(reason_.ends_with(": see --ca")) << reason_;
  options_.ca_file.clear();  // those of the system
  send(bad.url(), numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  const TlsReceiver elsewhere = receiver("elsewhere");
  options_.ca_file = folder_.path("elsewhere.pem");
  send(elsewhere.url(), numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_NE(reason_.find("127.0.0.1"), std::string::npos) << reason_;
  EXPECT_EQ(fates_, std::vector<std::int32_t>{QZLOG_AGAIN});
}

TEST_F(OtlpTls, FileOfCertificatesThatIsNotThere_IsAnError) {
  options_.ca_file = folder_.path("none.pem");
  make_certificate("good", "IP:127.0.0.1");
  const TlsReceiver server = receiver("good");
  send(server.url(), numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_NE(reason_.find(options_.ca_file), std::string::npos) << reason_;
}

TEST_F(OtlpTls, ClientsCertificate_IsShown) {
  make_certificate("good", "IP:127.0.0.1");
  make_certificate("client", "DNS:shipper");
  const TlsReceiver server = receiver("good", folder_.path("client.pem"));
  options_.ca_file = folder_.path("good.pem");
  send(server.url(), numbered(1));
  EXPECT_EQ(fates_, std::vector<std::int32_t>{QZLOG_AGAIN});
  options_.options.emplace_back("certificate", folder_.path("client.pem"));
  options_.options.emplace_back("key", folder_.path("client.key"));
  send(server.url(), numbered(1));
  EXPECT_EQ(reason_, "");
  EXPECT_EQ(fates_, std::vector<std::int32_t>{QZLOG_ACKNOWLEDGED});
}

}  // namespace
}  // namespace qzlog_test
