#ifndef QZLOG_SHIP_OTLP_GZIP_H
#define QZLOG_SHIP_OTLP_GZIP_H

#include <string>
#include <string_view>

namespace qzlog_ship {

/// Compresses, quickly rather than well, in the form of Content-Encoding: gzip. Throws std::bad_alloc.
void compress(std::string_view bytes, std::string& compressed);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_GZIP_H
