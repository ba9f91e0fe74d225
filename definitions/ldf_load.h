#ifndef QZLOG_DEFINITIONS_LDF_LOAD_H
#define QZLOG_DEFINITIONS_LDF_LOAD_H

#include <cstdio>
#include <string_view>

#include "definitions/cached_definitions.h"
#include "definitions/definition_hold.h"
#include "definitions/definition_stream.h"
#include "definitions/definitions_digest.h"
#include "definitions/entry_index.h"
#include "definitions/ldf_def.h"
#include "foundation/locks.h"
#include "foundation/thread_instance.h"
#include "util/debug_record.h"

struct _qz_LOG_ldf_header_struct;

/// The process's one store of definitions: an index from entry ID to file and offset, and a ring of the last 128
/// definitions read, replaced first-in first-out. A replaced one is kept while there is memory for it (see
/// qz_LOG_LogConfig::SetDefinitionMemory), so that it need not be read again as long as its file does not change.
///
/// Failures throw QZX_logging_invalid_definition, or QZX_memory_alloc. Lookups may run in many threads at once; loading
/// and clear() are serialised by the process-wide lock of their callers and must not run while other threads look up.
class _qz_LOG_log_definition_tbl : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kCacheSize = qzlog::CachedDefinitions::kCacheSize;
  /// The debug level of the records about lookups.
  static constexpr unsigned kTraceLevel = 3;

  _qz_LOG_log_definition_tbl();
  ~_qz_LOG_log_definition_tbl();

  /// Clears the table and loads the standard file: header, global attributes and entry map. Records are read on demand.
  void set_precompiled_definition_file_path(const char* path);
  /// Loads an auxiliary file over the standard one, which must have been set; records of IDs already known are merged
  /// into their definitions.
  void set_precompiled_aux_definition_file_path(const char* path);

  /// The definition of an ID, or null when neither file has it. The pointer is valid until the definition is evicted or
  /// the table is cleared; use acquire_entry to keep it.
  _qz_LOG_log_definition* find_entry(unsigned int entry_id) const;
  /// The same with a reference of the caller's own, taken in the same step.
  qzlog::DefinitionRef acquire_entry(unsigned int entry_id) const;
  /// The same for an entry of the calling thread: a hold that the thread's entries share. A thread that looks up an ID
  /// again reads nothing that other threads write, unless the definition was evicted or replaced meanwhile.
  qzlog::DefinitionHoldRef hold_entry(unsigned int entry_id) const {
    const qzlog::ThreadHolds* const holds = qzlog::ThreadInstance<qzlog::ThreadHolds>::find();
    qzlog::DefinitionHold* const hold = holds != nullptr ? holds->find(entry_id) : nullptr;
    // A lookup that is traced takes the way that writes the records.
    if (hold == nullptr || !hold->definition().is_cached_in(this) || qzlog::debug_log_wants(kTraceLevel)) {
      return hold_afresh(entry_id);
    }
    return qzlog::DefinitionHoldRef::share(hold);
  }

  /// What tells the loaded files apart (see DefinitionsDigest): "" while none is loaded, or one cannot be read. Made of
  /// the files when it is asked for the first time, without a lock from then on. The text lives as long as the process.
  const char* definitions_digest() const {
    const char* const made = digest_.find();
    return made != nullptr ? made : make_digest();
  }
  /// The same, but null when nobody has asked for it since files were loaded.
  const char* find_definitions_digest() const noexcept { return digest_.find(); }

  /// The name of an event as the files' names sections have it, the standard one first; null where none has it. Valid
  /// until a file is replaced or cleared. This and the next read the sections when they are the first to ask; they
  /// throw QZX_memory_alloc, and must not run while files are loaded or cleared.
  const char* find_event_name(unsigned int entry_id) const;
  /// The ID of an event; false, with the ID as it was, for a name that no file has.
  bool find_event_id(std::string_view name, unsigned int& entry_id) const;
  /// Whether a file has names at all.
  bool has_event_names() const;

  /// Keeps no more than is allowed now. Not while files are loaded or cleared.
  void fit_memory();

  /// Forgets both files, every definition and the index, but not the global attributes.
  void clear();

  /// Prepares the streams for the end of the process: then the C library takes away every stream's buffer, and goes on
  /// when another thread is just using it. Lookups after this take longer.
  void stop_buffering();

 private:
  /// Returns the standard file's stream for the caller to keep; an auxiliary stream is kept before the map is read,
  /// because reading it may need auxiliary records.
  qzlog::DefinitionStream _set_definition_file_path(const char* path, bool is_aux);
  qzlog::DefinitionRef _find_entry_non_const(unsigned int entry_id);
  /// Reads the record of an ID into `def`, or merges it when `merge_file` (which only selects the mode) is not null.
  /// False when the ID is not in the index or its file is not open.
  bool _retrieve_entry_definition(unsigned int entry_id, _qz_LOG_log_definition& def, std::FILE* merge_file);

  /// Where an ID's record is; null when no file has it, which is traced.
  const _qz_LOG_log_definition_file_info_holder* find_record(unsigned int entry_id) const;
  void load_entry_map(std::FILE* file, const _qz_LOG_ldf_header_struct& header, bool is_aux);
  std::size_t room_for_blocks() const;
  bool index_entry(unsigned int entry_id, unsigned int offset, std::FILE* file, bool is_aux);
  bool may_be_known(unsigned int entry_id, bool is_aux) const;
  qzlog::DefinitionRef find_locked(unsigned int entry_id);
  qzlog::DefinitionRef read_afresh(unsigned int entry_id);
  void notice_changed_files();
  qzlog::DefinitionHoldRef hold_afresh(unsigned int entry_id) const;
  const char* make_digest() const;

  bool std_loaded_ = false;
  qzlog::EntryIndex index_;
  qzlog::CachedDefinitions definitions_{this};
  qzlog::DefinitionStream std_file_;
  qzlog::DefinitionStream aux_file_;
  mutable qz_LOG_CRWLock lock_;
  mutable qzlog::DefinitionsDigest digest_;
  char std_tag_[16] = {};
  char aux_tag_[16] = {};
};

#endif  // QZLOG_DEFINITIONS_LDF_LOAD_H
