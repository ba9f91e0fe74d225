#ifndef QZLOG_SHIP_OTLP_OTLP_OPTIONS_H
#define QZLOG_SHIP_OTLP_OTLP_OPTIONS_H

#include <cstddef>
#include <memory>

#include "ship/otlp/http_client.h"
#include "ship/otlp/log_form.h"
#include "ship/otlp/record_mapping.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// What is done about an answer that says how many records were not taken, and not which.
enum class PartialSuccess {
  kFind,   // the batch goes again in halves, until those are found that are refused; what was taken comes twice
  kAccept  // as the specification of OTLP has it: nothing goes again, and a warning tells of it
};

/// All that somebody asked for.
struct OtlpOptions {
  /// Throws what is wrong as a failure for good.
  explicit OtlpOptions(const qzlog_settings& settings);

  std::unique_ptr<LogForm> form;
  bool compressed = false;
  std::size_t request_bytes = 0;  // before they are compressed; a single record may have more
  PartialSuccess partial_success = PartialSuccess::kFind;
  MappingChoices mapping;
  HttpSettings http;
  std::size_t credential_count = 0;  // the first so many headers are from the file of credentials
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_OTLP_OPTIONS_H
