#ifndef QZLOG_SHIP_OTLP_OTLP_ANSWER_H
#define QZLOG_SHIP_OTLP_OTLP_ANSWER_H

#include <cstdint>
#include <string>

#include "ship/otlp/http_answer.h"

namespace qzlog_ship {

/// What a receiver says of a request.
struct ExportAnswer {
  std::int64_t rejected = 0;  // log records that it did not take; it does not say which
  std::string message;        // may be empty
};

/// ExportLogsServiceResponse, of an answer with status 200. Throws a failure for now where it is none.
ExportAnswer parse_export_answer(const HttpAnswer& answer);
/// The message of an answer with another status, which is google.rpc.Status or a text: one short line of UTF-8; may be
/// empty.
std::string message_of(const HttpAnswer& answer);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_OTLP_ANSWER_H
