#ifndef QZLOG_FOUNDATION_HASHING_H
#define QZLOG_FOUNDATION_HASHING_H

#include "qzlog/qz_string.h"

/// The number of buckets for a table asked to hold about `requested` entries: the smallest prime at or above the
/// request (the largest 32-bit prime for requests beyond it), so a table sized with its own bucket count keeps it.
unsigned QZ_recommended_hash_size(unsigned requested);

/// A bucket index in [0, size); `size` must not be 0. Equal keys give equal indexes.
unsigned QZ_hash(const qz_String& key, unsigned size);
unsigned QZ_hash(unsigned key, unsigned size);

/// The hash by which attribute names are compared first. Multipliers and sampling are fixed: texts of up to 15
/// characters count whole, longer ones at about eight positions. The same on every host, whatever the signedness of
/// char.
unsigned my_hashcode(const char* text);
unsigned my_hashcode(const char* text, unsigned length);

#endif  // QZLOG_FOUNDATION_HASHING_H
