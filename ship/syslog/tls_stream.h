#ifndef QZLOG_SHIP_SYSLOG_TLS_STREAM_H
#define QZLOG_SHIP_SYSLOG_TLS_STREAM_H

#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <string_view>

#include "ship/syslog/server_stream.h"

namespace qzlog_ship {

/// Which certificates are trusted, and which one is ours.
class TlsContext {
 public:
  /// Throws a failure for good, which names the file that cannot be used.
  explicit TlsContext(const SyslogSettings& settings);
  SSL_CTX* get() const { return context_.get(); }

 private:
  void take_trusted(const std::string& file);
  void take_own(const std::string& file);

  struct Free {
    void operator()(SSL_CTX* context) const { ::SSL_CTX_free(context); }
  };
  std::unique_ptr<SSL_CTX, Free> context_;
};

/// TLS 1.2, with a server whose certificate is for the host and signed by whom we trust (RFC 5425).
class TlsStream final : public ServerStream {
 public:
  TlsStream(const TlsContext& context, const std::string& host, std::unique_ptr<TcpSocket> socket, Patience& patience);

  void send(std::string_view bytes, Patience& patience) override;
  void look_for_end() override;

 private:
  void expect_host(const std::string& host);
  /// Waits for what a call that returned `result` needs; throws where it failed.
  void wait_after(int result, Patience& patience);
  [[noreturn]] void fail(int error);

  struct Free {
    void operator()(SSL* session) const { ::SSL_free(session); }
  };
  std::unique_ptr<SSL, Free> session_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_TLS_STREAM_H
