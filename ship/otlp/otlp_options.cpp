#include "ship/otlp/otlp_options.h"

#include <string>
#include <string_view>

#include "ship/otlp/header_file.h"
#include "ship/otlp/json_form.h"
#include "ship/otlp/protobuf_form.h"
#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"

namespace qzlog_ship {

namespace {

constexpr const char* kKnownOptions =
    "body, certificate, compression, encoding, event-name-attribute, key, partial-success, request-bytes, "
    "span-attribute, trace-attribute";
constexpr const char* kUsualPath = "/v1/logs";
constexpr std::size_t kLeastRequestBytes = 1024;
constexpr std::size_t kMostRequestBytes = std::size_t{1} << 30U;
constexpr std::size_t kUsualRequestBytes = std::size_t{4} << 20U;

/// One of two words, of which the first is the usual one; true for the other.
bool is_second(PluginOptions& options, const std::string& key, std::string_view first, std::string_view second) {
  const std::string word = options.take(key).value_or(std::string(first));
  if (word != first && word != second) {
    fail_for_good("--option " + key + " takes " + std::string(first) + " or " + std::string(second));
  }
  return word == second;
}

std::string url_of(const qzlog_settings& settings) {
  const std::string_view scheme = settings.scheme;
  if (scheme != "otlp+http" && scheme != "otlp+https") {
    fail_for_good("OTLP goes over HTTP: the URL begins with otlp+http:// or otlp+https://");
  }
  const std::string_view authority = settings.authority;
  if (authority.empty()) fail_for_good("the URL names no host");
  if (authority.find(',') != std::string_view::npos) fail_for_good("the URL names more than one host");
  const std::string_view path = settings.path;
  return std::string(scheme.substr(5)) + "://" + std::string(authority) +
         std::string(path.empty() || path == "/" ? kUsualPath : path);
}

}  // namespace

OtlpOptions::OtlpOptions(const qzlog_settings& settings) {
  PluginOptions options(settings);
  http.url = url_of(settings);
  if (is_second(options, "encoding", "protobuf", "json")) {
    form = std::make_unique<JsonForm>();
  } else {
    form = std::make_unique<ProtobufForm>();
  }
  compressed = is_second(options, "compression", "none", "gzip");
  if (is_second(options, "partial-success", "find", "accept")) partial_success = PartialSuccess::kAccept;
  request_bytes =
      options.take_number("request-bytes", kLeastRequestBytes, kMostRequestBytes).value_or(kUsualRequestBytes);
  mapping.body = options.take_flag("body", true);
  mapping.event_name_attribute = options.take_flag("event-name-attribute", false);
  mapping.trace_attribute = options.take("trace-attribute").value_or("");
  mapping.span_attribute = options.take("span-attribute").value_or("");
  http.certificate_file = options.take("certificate").value_or("");
  http.key_file = options.take("key").value_or("");
  options.refuse_others(kKnownOptions);
  http.client = settings.client;
  if (settings.ca_file != nullptr) http.ca_file = settings.ca_file;
  if (!http.ca_file.empty() && std::string_view(settings.scheme) == "otlp+http") {
    fail_for_good("--ca is for otlp+https://; otlp+http:// is not encrypted");
  }
  if (settings.credentials_file != nullptr) http.headers = read_header_file(settings.credentials_file);
  credential_count = http.headers.size();
  http.headers.push_back(std::string("Content-Type: ") + form->content_type());
  if (compressed) http.headers.emplace_back("Content-Encoding: gzip");
}

}  // namespace qzlog_ship
