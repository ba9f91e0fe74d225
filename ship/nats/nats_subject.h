#ifndef QZLOG_SHIP_NATS_NATS_SUBJECT_H
#define QZLOG_SHIP_NATS_NATS_SUBJECT_H

#include <string>
#include <string_view>

#include "ship/transport.h"

namespace qzlog_ship {

/// Appends ".PRODUCT.EVENT.LEVEL" of a record, by which subscribers choose:
///
///   storage.DISK_FULL.7
///
/// In the product's and the event's name blanks, controls and the characters ".", "*" and ">" become "_", and what is
/// longer than 128 bytes is cut. An event without a name goes by its ID; what is not known is "-".
void append_subject(const qzlog_record& record, std::string& subject);

/// Whether a subject of a stream, with the wildcards "*" and ">", covers one without.
bool subject_covers(std::string_view pattern, std::string_view subject);

/// Whether it is one: parts that are not empty, without blanks, controls and wildcards, with dots between them.
bool is_plain_subject(std::string_view subject);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_NATS_NATS_SUBJECT_H
