#ifndef QZLOG_SHIP_NATS_PUBLISH_ANSWER_H
#define QZLOG_SHIP_NATS_PUBLISH_ANSWER_H

#include <string>
#include <string_view>

namespace qzlog_ship {

/// What JetStream says of a record that was published.
struct PublishAnswer {
  bool is_stored = false;
  bool is_double = false;   ///< it had that identity before
  unsigned error_code = 0;  ///< of JetStream, where it is not stored; 0 where it says none
  std::string error;        ///< in words
};

/// Reads {"stream":"S","seq":7,"duplicate":true} or {"error":{"err_code":10077,"description":"..."}}. What is neither
/// is an error that says so.
PublishAnswer read_publish_answer(std::string_view json);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_NATS_PUBLISH_ANSWER_H
