#include "ship/syslog/tls_stream.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <poll.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

/// What OpenSSL says of the last failure of this thread.
std::string reason_of_failure() {
  const unsigned long code = ::ERR_peek_last_error();
  const char* const reason = code == 0 ? nullptr : ::ERR_reason_error_string(code);
  if (reason != nullptr) return reason;
  return ERR_SYSTEM_ERROR(code) ? std::strerror(ERR_GET_REASON(code)) : "it is not said why";
}

/// Nobody is asked for the password of a key.
int no_password(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*context*/) { return -1; }

/// Whether the server says that it takes no certificate, or not the one that we have.
bool is_own_certificate_refused() {
  switch (ERR_GET_REASON(::ERR_peek_last_error())) {
    case SSL_R_SSLV3_ALERT_HANDSHAKE_FAILURE:  // so says one that gets none
    case SSL_R_SSLV3_ALERT_BAD_CERTIFICATE:
    case SSL_R_SSLV3_ALERT_UNSUPPORTED_CERTIFICATE:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_REVOKED:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_EXPIRED:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_UNKNOWN:
    case SSL_R_TLSV1_ALERT_UNKNOWN_CA:
    case SSL_R_TLSV1_ALERT_ACCESS_DENIED:
      return true;
    default:
      return false;
  }
}

}  // namespace

TlsContext::TlsContext(const SyslogSettings& settings) : context_(::SSL_CTX_new(::TLS_client_method())) {
  if (!context_) throw std::bad_alloc();
  // With TLS 1.3 a client is done before the server has looked at the client's certificate: what is sent then could be
  // confirmed by the server's system, thrown away by the server, and nobody would know.
  ::SSL_CTX_set_min_proto_version(get(), TLS1_2_VERSION);
  ::SSL_CTX_set_max_proto_version(get(), TLS1_2_VERSION);
  ::SSL_CTX_set_verify(get(), SSL_VERIFY_PEER, nullptr);
  ::SSL_CTX_set_default_passwd_cb(get(), no_password);
  // A send that is tried again may find the bytes elsewhere.
  ::SSL_CTX_set_mode(get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  take_trusted(settings.ca_file);
  if (!settings.credentials_file.empty()) take_own(settings.credentials_file);
}

void TlsContext::take_trusted(const std::string& file) {
  ::ERR_clear_error();
  const int done =
      file.empty() ? ::SSL_CTX_set_default_verify_paths(get()) : ::SSL_CTX_load_verify_file(get(), file.c_str());
  if (done == 1) return;
  fail_for_good("the certificates to trust in '" + file + "' cannot be read: " + reason_of_failure());
}

// The reason of a key is not told: it may have bytes of the file in it.
void TlsContext::take_own(const std::string& file) {
  if (::SSL_CTX_use_certificate_chain_file(get(), file.c_str()) == 1 &&
      ::SSL_CTX_use_PrivateKey_file(get(), file.c_str(), SSL_FILETYPE_PEM) == 1) {
    return;
  }
  fail_for_good("'" + file +
                "' has no certificate with a key that belongs to it and has no password (PEM, both in one file)");
}

TlsStream::TlsStream(const TlsContext& context, const std::string& host, std::unique_ptr<TcpSocket> socket,
                     Patience& patience)
    : ServerStream(std::move(socket)), session_(::SSL_new(context.get())) {
  if (!session_) throw std::bad_alloc();
  expect_host(host);
  if (::SSL_set_fd(session_.get(), ServerStream::socket().get()) != 1) throw std::bad_alloc();
  for (;;) {
    ::ERR_clear_error();
    const int result = ::SSL_connect(session_.get());
    if (result == 1) return;
    wait_after(result, patience);
  }
}

void TlsStream::expect_host(const std::string& host) {
  X509_VERIFY_PARAM* const wanted = ::SSL_get0_param(session_.get());
  if (::X509_VERIFY_PARAM_set1_ip_asc(wanted, host.c_str()) == 1) return;
  ::ERR_clear_error();
  ::X509_VERIFY_PARAM_set_hostflags(wanted, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  if (::X509_VERIFY_PARAM_set1_host(wanted, host.c_str(), host.size()) != 1 ||
      ::SSL_set_tlsext_host_name(session_.get(), host.c_str()) != 1) {
    fail_for_good("'" + host + "' cannot be the name of a host");
  }
}

void TlsStream::wait_after(int result, Patience& patience) {
  const int error = ::SSL_get_error(session_.get(), result);
  if (error == SSL_ERROR_WANT_READ) {
    socket().wait(POLLIN, patience);
  } else if (error == SSL_ERROR_WANT_WRITE) {
    socket().wait(POLLOUT, patience);
  } else {
    fail(error);
  }
}

void TlsStream::fail(int error) {
  const int system_error = errno;
  const long verdict = ::SSL_get_verify_result(session_.get());
  if (verdict != X509_V_OK) {
    fail_for_good(std::string("the server's certificate is refused: ") + ::X509_verify_cert_error_string(verdict) +
                  "; --ca names the certificates to trust, and the URL has to have the name that the server's has");
  }
  if (error == SSL_ERROR_SSL && is_own_certificate_refused()) {
    fail_for_good("the server does not take our certificate: " + reason_of_failure() +
                  "; --credentials names a file with one and its key");
  }
  if (error == SSL_ERROR_SSL && ERR_GET_REASON(::ERR_peek_last_error()) == SSL_R_TLSV1_ALERT_PROTOCOL_VERSION) {
    fail_for_good("the server does not speak TLS 1.2");
  }
  if (error == SSL_ERROR_SSL && ERR_GET_REASON(::ERR_peek_last_error()) == SSL_R_WRONG_VERSION_NUMBER) {
    fail_for_good("the server speaks without TLS: name it as syslog+tcp://");
  }
  if (error == SSL_ERROR_ZERO_RETURN || (error == SSL_ERROR_SYSCALL && system_error == 0)) {
    fail_for_now("the server ended the connection");
  }
  if (error == SSL_ERROR_SYSCALL) fail_for_now(std::string("the connection broke: ") + std::strerror(system_error));
  fail_for_now("the connection broke: " + reason_of_failure());
}

void TlsStream::send(std::string_view bytes, Patience& patience) {
  while (!bytes.empty()) {
    ::ERR_clear_error();
    std::size_t count = 0;
    const int result = ::SSL_write_ex(session_.get(), bytes.data(), bytes.size(), &count);
    if (result == 1) {
      bytes.remove_prefix(count);
    } else if (::SSL_get_error(session_.get(), result) == SSL_ERROR_SYSCALL) {
      // What the server said before it ended the connection may be there still, and says why.
      look_for_end();
      fail_for_now("the connection broke");
    } else {
      wait_after(result, patience);
    }
  }
}

void TlsStream::look_for_end() {
  char answer[4096];
  std::size_t count = 0;
  ::ERR_clear_error();
  errno = 0;
  const int result = ::SSL_read_ex(session_.get(), answer, sizeof answer, &count);
  if (result == 1) fail_for_talking();
  const int error = ::SSL_get_error(session_.get(), result);
  if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) fail(error);
}

}  // namespace qzlog_ship
