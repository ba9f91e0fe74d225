#ifndef QZLOG_SHIP_OTLP_LOG_FORM_H
#define QZLOG_SHIP_OTLP_LOG_FORM_H

#include <string>
#include <string_view>

#include "ship/otlp/log_record.h"

namespace qzlog_ship {

/// One of the two forms that OTLP gives to ExportLogsServiceRequest. Records are written one by one, so that any run of
/// them can be sent without writing it again.
class LogForm {
 public:
  virtual ~LogForm() = default;

  virtual const char* content_type() const = 0;
  /// Appends the record as it stands in a run; a run is what was appended in one go.
  virtual void append_record(const LogRecord& record, std::string& run) const = 0;
  /// A request is begin, append_run for each resource, and end.
  virtual void begin(std::string& request) const = 0;
  virtual void append_run(const LogResource& resource, const LogScope& scope, std::string_view run,
                          std::string& request) const = 0;
  virtual void end(std::string& request) const = 0;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_LOG_FORM_H
