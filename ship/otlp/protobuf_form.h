#ifndef QZLOG_SHIP_OTLP_PROTOBUF_FORM_H
#define QZLOG_SHIP_OTLP_PROTOBUF_FORM_H

#include <string>
#include <string_view>

#include "ship/otlp/log_form.h"

namespace qzlog_ship {

/// The messages of OTLP logs as protobuf writes them. They are few and flat: their sizes are known before they are
/// written, and nothing is copied to a message first.
class ProtobufForm : public LogForm {
 public:
  const char* content_type() const override { return "application/x-protobuf"; }
  void append_record(const LogRecord& record, std::string& run) const override;
  void begin(std::string& /*request*/) const override {}
  void append_run(const LogResource& resource, const LogScope& scope, std::string_view run,
                  std::string& request) const override;
  void end(std::string& /*request*/) const override {}
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_PROTOBUF_FORM_H
