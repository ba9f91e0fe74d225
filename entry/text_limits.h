#ifndef QZLOG_ENTRY_TEXT_LIMITS_H
#define QZLOG_ENTRY_TEXT_LIMITS_H

#include <iterator>

#include "qzlog/logattrib.h"

namespace qzlog {

/// How long texts may be: bytes for the types TypeChar32 to TypeChar2K, characters for TypeMBChar32 to TypeMBChar2K,
/// each in the order of the codes.
inline constexpr int kTextLimits[] = {32, 64, 128, 256, 1024, 2048};

/// The limit of one of those types.
constexpr int text_limit(unsigned char type) {
  return kTextLimits[static_cast<unsigned>(type - TypeChar32) % std::size(kTextLimits)];
}

}  // namespace qzlog

#endif  // QZLOG_ENTRY_TEXT_LIMITS_H
