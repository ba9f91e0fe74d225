#ifndef QZLOG_SHIP_OTLP_UTF8_CHECK_H
#define QZLOG_SHIP_OTLP_UTF8_CHECK_H

#include <string_view>

namespace qzlog_ship {

/// Whether it is well-formed: no surrogates, no longer forms than needed, nothing above U+10FFFF.
bool is_utf8(std::string_view bytes) noexcept;

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_UTF8_CHECK_H
