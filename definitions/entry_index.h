#ifndef QZLOG_DEFINITIONS_ENTRY_INDEX_H
#define QZLOG_DEFINITIONS_ENTRY_INDEX_H

#include "foundation/hash_tbl.h"

/// Where the record of an entry ID stands.
struct _qz_LOG_log_definition_file_info_holder {
  bool is_aux;
  unsigned offset;
};

namespace qzlog {

/// Where every entry ID of the files stands, for the table, which locks it. Its buckets follow the number of IDs. IDs
/// in a row stand side by side, for files are loaded in their order; files that number their entries in steps of any
/// size fill the buckets evenly too.
class EntryIndex : public qz_MISC_hash_tbl<unsigned int, _qz_LOG_log_definition_file_info_holder> {
 public:
  using qz_MISC_hash_tbl::qz_MISC_hash_tbl;

  unsigned _get_slot_index(const unsigned int& entry_id) const override {
    return QZ_hash(entry_id + (entry_id >> 12) * 0x9E3779B1U, size);
  }

  /// Null when the ID is unknown.
  const _qz_LOG_log_definition_file_info_holder* find(unsigned int entry_id) const;
  void put(unsigned int entry_id, const _qz_LOG_log_definition_file_info_holder& place);
  /// Makes room for so many IDs beyond those that it has. QZX_memory_alloc, with nothing changed, without memory.
  void reserve(unsigned additional);
  void clear();

 private:
  unsigned count_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_ENTRY_INDEX_H
