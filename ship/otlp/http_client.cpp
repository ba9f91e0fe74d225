#include "ship/otlp/http_client.h"

#include <algorithm>
#include <cctype>

#include "ship/plugin/plugin_call.h"
#include "ship/plugin/signals_blocked.h"

namespace qzlog_ship {

namespace {

constexpr std::size_t kMostBodyBytes = 64 * 1024;
constexpr std::size_t kMostHeaderBytes = 64 * 1024;

std::string lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return out;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  return text;
}

/// Once for the process; libcurl stays as long as it does.
void start_libcurl() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (started != CURLE_OK) fail_for_good(std::string("libcurl does not start: ") + curl_easy_strerror(started));
}

}  // namespace

HttpClient::HttpClient(const HttpSettings& settings) {
  start_libcurl();
  multi_.reset(curl_multi_init());
  easy_.reset(curl_easy_init());
  if (multi_ == nullptr || easy_ == nullptr) fail_for_now("out of memory");
  set_headers(settings);
  set(CURLOPT_URL, settings.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 0L);
  set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_POST, 1L);
  set(CURLOPT_USERAGENT, settings.client.c_str());
  set(CURLOPT_ERRORBUFFER, reason_);
  set(CURLOPT_WRITEFUNCTION, &HttpClient::take_body);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_HEADERFUNCTION, &HttpClient::take_header);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (!settings.ca_file.empty()) {
    set(CURLOPT_CAINFO, settings.ca_file.c_str());
    set(CURLOPT_CAPATH, nullptr);
  }
  if (!settings.certificate_file.empty()) set(CURLOPT_SSLCERT, settings.certificate_file.c_str());
  if (!settings.key_file.empty()) set(CURLOPT_SSLKEY, settings.key_file.c_str());
}

template <class Value>
void HttpClient::set(CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(easy_.get(), option, value);
  if (code != CURLE_OK) fail_for_good(std::string("libcurl: ") + curl_easy_strerror(code));
}

void HttpClient::set_headers(const HttpSettings& settings) {
  std::vector<std::string> headers = settings.headers;
  headers.emplace_back("Expect:");  // a request is not held back until the receiver asks for it
  for (const std::string& header : headers) {
    curl_slist* const longer = curl_slist_append(headers_.get(), header.c_str());
    if (longer == nullptr) fail_for_now("out of memory");
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  }
  set(CURLOPT_HTTPHEADER, headers_.get());
}

HttpAnswer HttpClient::post(std::string_view body, Patience& patience) {
  answer_ = {};
  header_bytes_ = 0;
  has_whole_head_ = false;
  reason_[0] = '\0';
  const long milliseconds = std::max(1L, static_cast<long>(patience.left().count()));
  set(CURLOPT_POSTFIELDS, body.data());
  set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  set(CURLOPT_TIMEOUT_MS, milliseconds);
  set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds);
  const CURLcode code = perform(patience);
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &answer_.status);
  // Where more came than is kept, the rest is not waited for.
  if (code != CURLE_OK && !answer_.is_cut) fail(code);
  // libcurl takes the end of a connection for the end of the headers.
  if (!has_whole_head_) fail_for_now("the connection ended within an answer");
  return std::move(answer_);
}

CURLcode HttpClient::perform(Patience& patience) {
  if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) fail_for_now("libcurl takes no request");
  CURLcode result = CURLE_OK;
  for (int running = 1; running != 0;) {
    CURLMcode code = CURLM_OK;
    {
      const SignalsBlocked blocked;  // libcurl asks for names in threads of its own
      code = curl_multi_perform(multi_.get(), &running);
    }
    const int slice = static_cast<int>(patience.slice().count());
    if (code == CURLM_OK && running != 0) code = curl_multi_poll(multi_.get(), nullptr, 0, slice, nullptr);
    if (code == CURLM_OK && !(running != 0 && patience.is_over())) continue;
    result = code == CURLM_OK ? CURLE_OPERATION_TIMEDOUT : CURLE_FAILED_INIT;
    break;
  }
  for (int left = 0; const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left);) {
    if (message->msg == CURLMSG_DONE) result = message->data.result;
  }
  curl_multi_remove_handle(multi_.get(), easy_.get());
  return result;
}

void HttpClient::fail(CURLcode code) const {
  const std::string text = reason_[0] != '\0' ? reason_ : curl_easy_strerror(code);
  if (text.find("wrong version number") != std::string::npos) {
    fail_for_good(text + ": it speaks without TLS: name it as otlp+http://");
  }
  switch (code) {
    case CURLE_PEER_FAILED_VERIFICATION:
      fail_for_good("the receiver's certificate is not trusted: " + text + ": see --ca");
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      fail_for_good(text);
    case CURLE_WEIRD_SERVER_REPLY:
      fail_for_good(text + ": it is no receiver of OTLP over HTTP: is the port right?");
    case CURLE_OPERATION_TIMEDOUT:
      fail_for_now("no whole answer in time: " + text);
    default:
      fail_for_now(text);
  }
}

std::size_t HttpClient::take_body(char* bytes, std::size_t size, std::size_t count, void* client) {
  HttpAnswer& answer = static_cast<HttpClient*>(client)->answer_;
  const std::size_t kept = std::min(size * count, kMostBodyBytes - answer.body.size());
  answer.body.append(bytes, kept);
  answer.is_cut = kept < size * count;
  return kept;
}

std::size_t HttpClient::take_header(char* bytes, std::size_t size, std::size_t count, void* client) {
  auto& self = *static_cast<HttpClient*>(client);
  const std::string_view line(bytes, size * count);
  self.header_bytes_ += line.size();
  if (self.header_bytes_ > kMostHeaderBytes) return 0;
  // There are several heads where the first ones say 100, and trailers may follow the body.
  if (line.starts_with("HTTP/")) self.has_whole_head_ = false;
  if (line == "\r\n" || line == "\n") self.has_whole_head_ = true;
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return line.size();
  const std::string name = lower(line.substr(0, colon));
  const std::string_view value = trimmed(line.substr(colon + 1));
  if (name == "content-type") self.answer_.content_type = lower(trimmed(value.substr(0, value.find(';'))));
  if (name == "retry-after") self.answer_.retry_after = value;
  return line.size();
}

}  // namespace qzlog_ship
