#ifndef QZLOG_SHIP_OTLP_JSON_FORM_H
#define QZLOG_SHIP_OTLP_JSON_FORM_H

#include <string>
#include <string_view>

#include "ship/otlp/log_form.h"

namespace qzlog_ship {

/// OTLP's JSON: that of protobuf with names in lowerCamelCase, enums as numbers, and identities of traces in
/// hexadecimal digits.
class JsonForm : public LogForm {
 public:
  const char* content_type() const override { return "application/json"; }
  void append_record(const LogRecord& record, std::string& run) const override;
  void begin(std::string& request) const override;
  void append_run(const LogResource& resource, const LogScope& scope, std::string_view run,
                  std::string& request) const override;
  void end(std::string& request) const override;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_JSON_FORM_H
