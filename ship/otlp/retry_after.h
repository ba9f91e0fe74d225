#ifndef QZLOG_SHIP_OTLP_RETRY_AFTER_H
#define QZLOG_SHIP_OTLP_RETRY_AFTER_H

#include <chrono>
#include <optional>
#include <string>

#include "ship/transport.h"

namespace qzlog_ship {

/// How long a receiver asks to be left alone: seconds or a date, as HTTP has them; an hour at most.
std::optional<std::chrono::seconds> parse_retry_after(const std::string& text);

/// Remembers beyond the life of a sender, which is closed when a receiver is busy.
void leave_alone(const std::string& url, std::chrono::seconds time);
/// Waits until the receiver may be asked again; throws a failure for now where that is later than `timeout`, or the
/// command is to end.
void wait_until_welcome(const std::string& url, const qzlog_host& host, std::chrono::milliseconds timeout);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_RETRY_AFTER_H
