#ifndef QZLOG_SHIP_OTLP_HTTP_CLIENT_H
#define QZLOG_SHIP_OTLP_HTTP_CLIENT_H

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ship/otlp/http_answer.h"
#include "ship/plugin/patience.h"

namespace qzlog_ship {

struct HttpSettings {
  std::string url;
  std::vector<std::string> headers;  // "Name: value"
  std::string client;
  std::string ca_file;  // empty: those of the system
  std::string certificate_file;
  std::string key_file;
};

/// Posts to one URL over a connection that is kept.
class HttpClient {
 public:
  explicit HttpClient(const HttpSettings& settings);
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  /// Throws a failure where there is no whole answer, which says what to do about it.
  HttpAnswer post(std::string_view body, Patience& patience);

 private:
  struct EasyCleanup {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  struct MultiCleanup {
    void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
  };
  struct ListCleanup {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  template <class Value>
  void set(CURLoption option, Value value);
  void set_headers(const HttpSettings& settings);
  CURLcode perform(Patience& patience);
  [[noreturn]] void fail(CURLcode code) const;
  static std::size_t take_body(char* bytes, std::size_t size, std::size_t count, void* client);
  static std::size_t take_header(char* bytes, std::size_t size, std::size_t count, void* client);

  // The multi handle outlives the easy one that it has.
  std::unique_ptr<CURLM, MultiCleanup> multi_;
  std::unique_ptr<curl_slist, ListCleanup> headers_;
  std::unique_ptr<CURL, EasyCleanup> easy_;
  char reason_[CURL_ERROR_SIZE] = {};
  HttpAnswer answer_;
  std::size_t header_bytes_ = 0;
  bool has_whole_head_ = false;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_HTTP_CLIENT_H
