#ifndef QZLOG_SHIP_OTLP_HTTP_ANSWER_H
#define QZLOG_SHIP_OTLP_HTTP_ANSWER_H

#include <string>

namespace qzlog_ship {

/// What a receiver answered; what it may send is bounded.
struct HttpAnswer {
  long status = 0;
  std::string content_type;  // in small letters, without parameters
  std::string retry_after;
  std::string body;
  bool is_cut = false;  // there was more of it than is kept
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_HTTP_ANSWER_H
