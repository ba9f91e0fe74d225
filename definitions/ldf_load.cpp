#include "definitions/ldf_load.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <memory>
#include <utility>

#include "definitions/def_read.h"
#include "definitions/definition_format.h"
#include "definitions/definition_memory.h"
#include "definitions/definition_reader.h"
#include "foundation/allocate.h"

using namespace qzlog;

namespace {

constexpr const char* kSource = kDefinitionFileSource;
constexpr unsigned kIndexSize = 23;
constexpr long long kMapPairSize = ldf::kMapPairSize;

/// How many pairs of an entry map fit between its beginning and the end of the file; an upper bound for what a damaged
/// header may ask for.
unsigned pairs_between(unsigned map_offset, std::FILE* file) {
  if (QZ_fseek(file, 0, SEEK_END) != 0) return 0;
  const long long pairs = (QZ_ftell(file) - map_offset) / kMapPairSize;
  return static_cast<unsigned>(std::clamp(pairs, 0LL, static_cast<long long>(UINT_MAX)));
}

/// From one line, whether the definition was read or kept.
void record_retrieved() {
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_retrieve_entry_definition return true\n");
}

}  // namespace

_qz_LOG_log_definition_tbl::_qz_LOG_log_definition_tbl() : index_(kIndexSize), lock_(nullptr) {}

_qz_LOG_log_definition_tbl::~_qz_LOG_log_definition_tbl() { clear(); }

void _qz_LOG_log_definition_tbl::set_precompiled_definition_file_path(const char* path) {
  std_file_ = _set_definition_file_path(path, false);
  digest_.forget();
}

void _qz_LOG_log_definition_tbl::set_precompiled_aux_definition_file_path(const char* path) {
  digest_.forget();
  _set_definition_file_path(path, true);
}

_qz_LOG_log_definition* _qz_LOG_log_definition_tbl::find_entry(unsigned int entry_id) const {
  return acquire_entry(entry_id).get();
}

DefinitionRef _qz_LOG_log_definition_tbl::acquire_entry(unsigned int entry_id) const {
  // A lookup may read the file and fill the cache: the table is const to its users only.
  return const_cast<_qz_LOG_log_definition_tbl*>(this)->_find_entry_non_const(entry_id);
}

DefinitionHoldRef _qz_LOG_log_definition_tbl::hold_afresh(unsigned int entry_id) const {
  DefinitionRef definition = acquire_entry(entry_id);
  if (!definition) return {};
  definition->prefetch_items();
  return with_thread_instance<ThreadHolds>(
      [&](ThreadHolds& holds) { return holds.keep(entry_id, std::move(definition)); });
}

/// Under the lock that reading records takes: the streams have one position each.
const char* _qz_LOG_log_definition_tbl::make_digest() const {
  const qz_LOG_CWriterSentry writer(lock_);
  return digest_.make(std_file_.get(), aux_file_.get());
}

const char* _qz_LOG_log_definition_tbl::find_event_name(unsigned int entry_id) const {
  for (const DefinitionStream* const file : {&std_file_, &aux_file_}) {
    const char* const name = file->names() != nullptr ? file->names()->get().find_name(entry_id) : nullptr;
    if (name != nullptr) return name;
  }
  return nullptr;
}

bool _qz_LOG_log_definition_tbl::find_event_id(std::string_view name, unsigned int& entry_id) const {
  for (const DefinitionStream* const file : {&std_file_, &aux_file_}) {
    if (file->names() != nullptr && file->names()->get().find_id(name, entry_id)) return true;
  }
  return false;
}

bool _qz_LOG_log_definition_tbl::has_event_names() const {
  for (const DefinitionStream* const file : {&std_file_, &aux_file_}) {
    if (file->names() != nullptr && file->names()->get().has_names()) return true;
  }
  return false;
}

void _qz_LOG_log_definition_tbl::clear() {
  digest_.forget();
  // Before the files are closed, which look after the names for whoever still needs them.
  definitions_.clear();
  std_file_.reset();
  aux_file_.reset();
  index_.clear();
  std_loaded_ = false;
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::clear() \n");
}

/// In vain when the lock is not free for long: a thread may read from a file system that does not answer, or be the one
/// that ends the process, in the handler of a signal.
void _qz_LOG_log_definition_tbl::stop_buffering() {
  constexpr int kTries = 1000;
  constexpr std::timespec kPause = {0, 100'000};
  for (int i = 0; i < kTries; ++i) {
    if (const WriterAttempt writer(lock_); writer) {
      for (std::FILE* const file : {std_file_.get(), aux_file_.get()}) {
        if (file != nullptr) std::setvbuf(file, nullptr, _IONBF, 0);
      }
      return;
    }
    nanosleep(&kPause, nullptr);
  }
}

DefinitionStream _qz_LOG_log_definition_tbl::_set_definition_file_path(const char* path, bool is_aux) {
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_set_definition_file_path\n");
  if (!is_aux) {
    clear();
    std_loaded_ = true;
  } else if (!std_loaded_) {
    throw QZX_logging_invalid_definition(
        "<QZX_logging_invalid_definition> user should set STD definition file before set AUX definition file.", 0);
  }
  DefinitionStream file = open_definition_file(path);
  const _qz_LOG_ldf_header_struct header = read_definition_header(file.get());
  char(&tag)[16] = is_aux ? aux_tag_ : std_tag_;
  QZ_bzero(tag, sizeof(tag));
  QZ_memcpy(tag, header.version_tag, sizeof(header.version_tag));
  read_global_attributes(file, header);
  if (!is_aux) {
    load_entry_map(file.get(), header, false);
    return file;
  }
  // Records of IDs that a former one had are sought in this one.
  definitions_.distrust();
  aux_file_ = std::move(file);
  load_entry_map(aux_file_.get(), header, true);
  return {};
}

void _qz_LOG_log_definition_tbl::load_entry_map(std::FILE* file, const _qz_LOG_ldf_header_struct& header, bool is_aux) {
  index_.reserve(std::min(header.entry_count, pairs_between(header.entry_map_offset, file)));
  long long position = header.entry_map_offset;
  bool has_moved = true;
  for (unsigned i = 0; i < header.entry_count; ++i) {
    if (has_moved) seek_in_definition_file(file, position);
    unsigned entry_id = 0;
    unsigned offset = 0;
    if (!_qz_LOG_read_entry_id_offset_mapping(file, entry_id, offset)) {
      if (is_aux) aux_file_.reset();
      throw_unreadable_definition_file();
    }
    position += kMapPairSize;
    has_moved = index_entry(entry_id, offset, file, is_aux);
  }
}

/// Whether records may have been read, so that the stream stands elsewhere.
bool _qz_LOG_log_definition_tbl::index_entry(unsigned int entry_id, unsigned int offset, std::FILE* file, bool is_aux) {
  const bool looked_up = may_be_known(entry_id, is_aux);
  const DefinitionRef known = looked_up ? _find_entry_non_const(entry_id) : DefinitionRef();
  index_.put(entry_id, {is_aux, offset});
  if (is_aux && known) {
    known->note_change();  // even when the record cannot be merged
    _retrieve_entry_definition(entry_id, *known.get(), file);
  }
  return looked_up;
}

/// A lookup while a file is loaded finds nothing while only a standard file is on its way; but traced it is to be seen.
bool _qz_LOG_log_definition_tbl::may_be_known(unsigned int entry_id, bool is_aux) const {
  return (is_aux && index_.find(entry_id) != nullptr) || debug_log_wants(kTraceLevel);
}

DefinitionRef _qz_LOG_log_definition_tbl::_find_entry_non_const(unsigned int entry_id) {
  if (!debug_log_wants(kTraceLevel)) {
    // One lock in place of two for IDs that are seldom cached.
    const WriterAttempt writer(lock_);
    if (writer) return find_locked(entry_id);
  }
  {
    const qz_LOG_CReaderSentry reader(lock_);
    QZ_DEBUG_RECORD(3, kSource,
                    "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const n_entry_definitions_cached:%d\n",
                    definitions_.count());
    if (_qz_LOG_log_definition* const cached = definitions_.find(entry_id)) return DefinitionRef::share(cached);
  }
  const qz_LOG_CWriterSentry writer(lock_);
  return find_locked(entry_id);
}

/// With the lock, whose other holders may have read it since.
DefinitionRef _qz_LOG_log_definition_tbl::find_locked(unsigned int entry_id) {
  if (_qz_LOG_log_definition* const cached = definitions_.find(entry_id)) return DefinitionRef::share(cached);
  notice_changed_files();
  DefinitionRef found;
  if (_qz_LOG_log_definition* const kept = definitions_.find_kept(entry_id)) {
    record_retrieved();
    definitions_.revive(kept);
    found = DefinitionRef::share(kept);
  } else {
    found = read_afresh(entry_id);
  }
  if (!found) {
    QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const return 0 %d\n",
                    definitions_.count());
    return {};
  }
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const return p_entry_definition %d\n",
                  definitions_.count());
  return found;
}

/// Reads the record of an ID and caches what it says; null when there is none.
DefinitionRef _qz_LOG_log_definition_tbl::read_afresh(unsigned int entry_id) {
  if (find_record(entry_id) == nullptr) return {};
  DefinitionRef fresh(new_object<_qz_LOG_log_definition>());
  if (!_retrieve_entry_definition(entry_id, *fresh.get(), nullptr)) return {};
  fresh->mark_as_read();
  definitions_.add(fresh.get());
  return fresh;
}

/// What was overwritten is read again, as far as it is not cached.
void _qz_LOG_log_definition_tbl::notice_changed_files() {
  const bool std_changed = std_file_.notice_change();
  const bool aux_changed = aux_file_.notice_change();
  if (std_changed || aux_changed) definitions_.distrust();
}

/// Records are read once while what they say can be kept, and then seldom stand side by side.
std::size_t _qz_LOG_log_definition_tbl::room_for_blocks() const {
  return definitions_.has_dropped() ? DefinitionMemory::for_file() : 0;
}

void _qz_LOG_log_definition_tbl::fit_memory() {
  const qz_LOG_CWriterSentry writer(lock_);
  definitions_.fit_memory();
  for (const DefinitionStream* const file : {&std_file_, &aux_file_}) {
    if (file->get() != nullptr) file->blocks().set_room(room_for_blocks());
  }
}

const _qz_LOG_log_definition_file_info_holder* _qz_LOG_log_definition_tbl::find_record(unsigned int entry_id) const {
  const _qz_LOG_log_definition_file_info_holder* const indexed = index_.find(entry_id);
  if (indexed == nullptr) {
    QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false\n");
  }
  return indexed;
}

bool _qz_LOG_log_definition_tbl::_retrieve_entry_definition(unsigned int entry_id, _qz_LOG_log_definition& def,
                                                            std::FILE* merge_file) {
  if (merge_file == nullptr) def.clear_attr_info();
  const _qz_LOG_log_definition_file_info_holder* const indexed = find_record(entry_id);
  if (indexed == nullptr) return false;
  const bool is_aux = merge_file != nullptr || indexed->is_aux;
  const DefinitionStream& file = is_aux ? aux_file_ : std_file_;
  if (file.get() == nullptr) {
    QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false pfile=0\n");
    return false;
  }
  file.blocks().set_room(room_for_blocks());
  read_definition(file, indexed->offset, entry_id, is_aux, def);
  def.set_version_tag(is_aux ? aux_tag_ : std_tag_);
  def.set_file_names(std_file_.names(), aux_file_.names());
  record_retrieved();
  return true;
}
