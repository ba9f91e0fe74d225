#include "ship/nats/nats_connection.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

#include "ship/plugin/credentials_file.h"
#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"
#include "ship/plugin/signals_blocked.h"

namespace qzlog_ship {

namespace {

constexpr int kUsualPort = 4222;
constexpr std::int64_t kMostForOneServer = 5000;
constexpr std::int64_t kPingInterval = 10'000;
constexpr std::int64_t kMostForWriting = 10'000;  // to a server that reads nothing
constexpr int kIoBufferBytes = 1 << 18;
constexpr std::string_view kCredentialsMark = "-----BEGIN NATS USER JWT-----";

bool has_port(const std::string& server) {
  const std::size_t colon = server.rfind(':');
  return colon != std::string::npos && server.find(']', colon) == std::string::npos;
}

void require_port(const std::string& server) {
  const std::string digits = server.substr(server.rfind(':') + 1);
  unsigned port = 0;
  const auto [stopped, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error == std::errc() && stopped == digits.data() + digits.size() && port >= 1 && port <= 65535) return;
  fail_for_good("the URL has no port in '" + server + "': write HOST:PORT, with a number from 1 to 65535");
}

bool is_secure(const qzlog_settings& settings) { return std::string_view(settings.scheme) == "nats+tls"; }

/// "(conn.c:2088): No server ..." says where in libnats it stands.
std::string without_source_lines(std::string text) {
  while (text.starts_with('(')) {
    const std::size_t end = text.find("): ");
    if (end == std::string::npos || text.find(".c:") > end) break;
    text.erase(0, end + 3);
  }
  return text;
}

std::string last_error(natsStatus status) {
  natsStatus told = NATS_OK;
  const char* const text = nats_GetLastError(&told);
  if (told == status && text != nullptr && *text != '\0') return without_source_lines(text);
  return natsStatus_GetText(status);
}

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

void require_option(natsStatus status, const std::string& what) {
  if (status == NATS_NO_MEMORY) throw std::bad_alloc();
  if (status != NATS_OK) fail_for_good(what + ": " + last_error(status));
}

void set_credentials(natsOptions* options, const qzlog_settings& settings) {
  if (settings.credentials_file == nullptr) return;
  const std::string path = settings.credentials_file;
  const std::string failure = "cannot use the credentials in '" + path + "'";
  const std::string content = read_credentials(path);
  if (content.find(kCredentialsMark) != std::string::npos) {
    require_option(natsOptions_SetUserCredentialsFromFiles(options, path.c_str(), nullptr), failure);
    return;
  }
  CredentialsFile credentials(path, content);
  const std::optional<std::string> user = credentials.take("user");
  const std::optional<std::string> password = credentials.take("password");
  const std::optional<std::string> token = credentials.take("token");
  const std::optional<std::string> certificate = credentials.take("certificate");
  const std::optional<std::string> key = credentials.take("key");
  credentials.refuse_others("user, password, token, certificate and key, or a file of the account as nsc writes it");
  if (user) require_option(natsOptions_SetUserInfo(options, user->c_str(), password.value_or("").c_str()), failure);
  if (token) require_option(natsOptions_SetToken(options, token->c_str()), failure);
  if (certificate && key) {
    require_option(natsOptions_LoadCertificatesChain(options, certificate->c_str(), key->c_str()), failure);
  }
  if (certificate.has_value() != key.has_value()) fail_for_good(failure + ": certificate and key belong together");
}

void set_servers(natsOptions* options, const NatsPlace& place) {
  std::vector<const char*> servers;
  std::transform(place.servers.begin(), place.servers.end(), std::back_inserter(servers),
                 [](const std::string& server) { return server.c_str(); });
  require_option(natsOptions_SetServers(options, servers.data(), static_cast<int>(servers.size())),
                 "the URL's servers cannot be used");
}

void set_security(natsOptions* options, const qzlog_settings& settings) {
  if (!is_secure(settings) && settings.ca_file != nullptr) fail_for_good("--ca is for nats+tls://");
  if (!is_secure(settings)) return;
  require_option(natsOptions_SetSecure(options, true), "cannot use TLS");
  if (settings.ca_file == nullptr) return;
  require_option(natsOptions_LoadCATrustedCertificates(options, settings.ca_file),
                 std::string("cannot use the certificates in '") + settings.ca_file + "'");
}

NatsOptionsPtr make_options(const qzlog_settings& settings, const NatsPlace& place, std::uint32_t timeout_ms) {
  natsOptions* made = nullptr;
  require_option(natsOptions_Create(&made), "libnats cannot be used");
  NatsOptionsPtr options(made);
  set_servers(made, place);
  set_security(made, settings);
  set_credentials(made, settings);
  const auto servers = static_cast<std::int64_t>(place.servers.size());
  const std::int64_t timeout = std::clamp<std::int64_t>(timeout_ms / servers, 1, kMostForOneServer);
  require_option(natsOptions_SetTimeout(made, timeout), "timeout");
  require_option(natsOptions_SetName(made, settings.client), "name");
  // Whoever uses the connection knows what is lost with it, and makes another one.
  require_option(natsOptions_SetAllowReconnect(made, false), "reconnecting");
  require_option(natsOptions_SetPingInterval(made, kPingInterval), "ping interval");
  require_option(natsOptions_SetWriteDeadline(made, std::clamp<std::int64_t>(timeout_ms, 1, kMostForWriting)),
                 "write deadline");
  require_option(natsOptions_SetIOBufSize(made, kIoBufferBytes), "buffer");
  return options;
}

/// The library tells of one that was looked at with its depth in the chain, whatever was wrong with it.
bool is_about_certificate(const std::string& reason) {
  return contains(reason, "certificate") || contains(reason, ":depth=");
}

/// Nobody gets further by waiting.
bool is_for_good(natsStatus status, const std::string& reason) {
  switch (status) {
    case NATS_CONNECTION_AUTH_FAILED:
    case NATS_SECURE_CONNECTION_WANTED:
    case NATS_SECURE_CONNECTION_REQUIRED:
    case NATS_NOT_PERMITTED:
    case NATS_ADDRESS_MISSING:
      return true;
    default:
      return is_about_certificate(reason) || contains(reason, "Authorization");
  }
}

std::string next_step(natsStatus status, const std::string& reason, const qzlog_settings& settings) {
  if (status == NATS_NO_SERVER) return ": is it started, and are host and port right?";
  if (status == NATS_SECURE_CONNECTION_WANTED) return ": it speaks without TLS: name it as nats://";
  if (status == NATS_SECURE_CONNECTION_REQUIRED) return ": it wants TLS: name it as nats+tls://";
  if (is_about_certificate(reason)) {
    return ": its certificate is not trusted: name those to trust with --ca, and the server as its certificate does";
  }
  if (!is_for_good(status, reason)) return "";
  if (settings.credentials_file == nullptr) return ": it refuses who is speaking: name a file with --credentials";
  return ": it refuses who is speaking: look at what stands in '" + std::string(settings.credentials_file) + "'";
}

}  // namespace

NatsPlace::NatsPlace(const qzlog_settings& settings) : stream(percent_decoded(settings.path)) {
  require_scheme(settings, "nats", "nats+tls");
  if (!stream.empty()) stream.erase(0, 1);
  const std::string authority = settings.authority;
  for (std::size_t begin = 0; begin <= authority.size();) {
    const std::size_t end = std::min(authority.find(',', begin), authority.size());
    std::string server = authority.substr(begin, end - begin);
    if (server.empty())
      fail_for_good("the URL names no server: " + std::string(settings.scheme) + "://HOST:PORT/STREAM");
    if (!has_port(server)) server += ':' + std::to_string(kUsualPort);
    require_port(server);
    servers.push_back((is_secure(settings) ? "tls://" : "nats://") + server);
    begin = end + 1;
  }
  if (stream.empty()) fail_for_good("the URL names no stream: " + std::string(settings.scheme) + "://HOST:PORT/STREAM");
  if (stream.find_first_of(" \t\r\n.*>/\\") != std::string::npos) {
    fail_for_good("the URL names the stream '" + stream + "': a stream's name has no blanks and none of . * > / \\");
  }
}

NatsConnection::NatsConnection(const qzlog_settings& settings, const NatsPlace& place, std::uint32_t timeout_ms)
    : has_one_server_(place.servers.size() == 1) {
  const SignalsBlocked blocked;
  try {
    open(settings, place, timeout_ms);
  } catch (...) {
    natsConnection_Destroy(connection_);
    throw;
  }
}

// The callback is the last that libnats does with this object.
NatsConnection::~NatsConnection() {
  natsConnection_Close(connection_);
  {
    std::unique_lock lock(mutex_);
    closed_.wait(lock, [&] { return is_closed_; });
  }
  natsConnection_Destroy(connection_);
}

void NatsConnection::open(const qzlog_settings& settings, const NatsPlace& place, std::uint32_t timeout_ms) {
  const NatsOptionsPtr options = make_options(settings, place, timeout_ms);
  require_option(natsOptions_SetErrorHandler(options.get(), on_error, this), "error handler");
  require_option(natsOptions_SetClosedCB(options.get(), on_closed, this), "closing handler");
  const natsStatus status = natsConnection_Connect(&connection_, options.get());
  if (status == NATS_OK) return;
  const std::string reason = last_error(status);
  const std::string text = "cannot connect (" + reason + ')' + next_step(status, reason, settings);
  throw Failure(is_for_good(status, reason) ? QZLOG_NEVER : QZLOG_LATER, text);
}

bool NatsConnection::is_broken() const {
  const std::lock_guard lock(mutex_);
  return is_closed_;
}

bool NatsConnection::has_violation() const {
  const std::lock_guard lock(mutex_);
  return !violation_.empty();
}

bool NatsConnection::is_alone() const {
  char** others = nullptr;
  int count = 0;
  if (natsConnection_GetDiscoveredServers(connection_, &others, &count) != NATS_OK) return false;
  for (int index = 0; index < count; ++index) std::free(others[index]);
  std::free(others);
  return count == 0 && has_one_server_;
}

std::string NatsConnection::take_violation() {
  const std::lock_guard lock(mutex_);
  return std::exchange(violation_, "");
}

void NatsConnection::fail(const std::string& tried, natsStatus status, jsErrCode code) {
  const std::string reason = last_error(status);
  const std::string violation = take_violation();
  if (!violation.empty()) fail_for_good(tried + ": the account lacks a right: " + violation);
  if (status == NATS_NO_MEMORY) throw std::bad_alloc();
  const std::string text = tried + ": " + reason;
  if (code == JSNotEnabledForAccountErr) fail_for_good(text + ": enable JetStream for the account");
  if (status == NATS_NO_RESPONDERS || code == JSNotEnabledErr) {
    if (is_alone()) fail_for_good(tried + ": the server is without JetStream: start it with -js");
    fail_for_now(tried + ": no JetStream answers there; a server has it with -js, a cluster with more than half of it");
  }
  fail_for_now(text);
}

void NatsConnection::on_error(natsConnection* /*connection*/, natsSubscription* /*subscription*/, natsStatus status,
                              void* closure) {
  if (status != NATS_NOT_PERMITTED) return;
  auto* const self = static_cast<NatsConnection*>(closure);
  const std::string text = last_error(status);
  const std::lock_guard lock(self->mutex_);
  if (self->violation_.empty()) self->violation_ = text;
}

void NatsConnection::on_closed(natsConnection* /*connection*/, void* closure) {
  auto* const self = static_cast<NatsConnection*>(closure);
  const std::lock_guard lock(self->mutex_);
  self->is_closed_ = true;
  self->closed_.notify_all();
}

}  // namespace qzlog_ship
