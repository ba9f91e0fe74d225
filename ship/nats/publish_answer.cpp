#include "ship/nats/publish_answer.h"

#include <simdjson.h>

#include <cstdint>

namespace qzlog_ship {

namespace {

constexpr std::size_t kLongestText = 400;

PublishAnswer refusal(const simdjson::dom::element& error) {
  PublishAnswer answer;
  std::uint64_t code = 0;
  std::string_view text;
  if (error["err_code"].get(code) == simdjson::SUCCESS && code <= UINT32_MAX) {
    answer.error_code = static_cast<unsigned>(code);
  }
  const bool has_text = error["description"].get(text) == simdjson::SUCCESS;
  answer.error = has_text ? text.substr(0, kLongestText) : "it does not say why";
  return answer;
}

}  // namespace

PublishAnswer read_publish_answer(std::string_view json) {
  thread_local simdjson::dom::parser parser;
  simdjson::dom::element answer;
  simdjson::dom::element error;
  std::uint64_t number = 0;
  bool is_double = false;
  if (parser.parse(json.data(), json.size()).get(answer) == simdjson::SUCCESS) {
    if (answer["error"].get(error) == simdjson::SUCCESS) return refusal(error);
    const bool says_so = answer["duplicate"].get(is_double) == simdjson::SUCCESS;
    if (answer["seq"].get(number) == simdjson::SUCCESS && number != 0) return {true, says_so && is_double, 0, ""};
  }
  return {false, false, 0, "what answers is no stream"};
}

}  // namespace qzlog_ship
