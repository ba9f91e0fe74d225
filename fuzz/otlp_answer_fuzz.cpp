// Answers of receivers of OTLP: understood, or refused with a failure that says so.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ship/otlp/otlp_answer.h"
#include "ship/otlp/utf8_check.h"
#include "ship/plugin/plugin_call.h"

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

}  // namespace

// The first byte says of which kind the answer is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static constexpr const char* kTypes[] = {"application/json", "application/x-protobuf", "text/plain", ""};
  qzlog_ship::HttpAnswer answer;
  answer.content_type = kTypes[data[0] % 4];
  answer.body.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string message = qzlog_ship::message_of(answer);
  require(message.size() <= 300 && qzlog_ship::is_utf8(message) && message.find('\n') == std::string::npos);
  try {
    const qzlog_ship::ExportAnswer parsed = qzlog_ship::parse_export_answer(answer);
    require(parsed.rejected >= 0 && qzlog_ship::is_utf8(parsed.message) && parsed.message.size() <= 300);
  } catch (const qzlog_ship::Failure& failure) {
    require(failure.outcome() == QZLOG_LATER);
  }
  return 0;
}
