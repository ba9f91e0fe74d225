#include "definitions/ldf_load.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <memory>
#include <utility>

#include "definitions/def_read.h"
#include "foundation/allocate.h"
#include "foundation/unshared_file.h"
#include "qzlog/file_io.h"

namespace {

constexpr const char* kSource = "ldf_load";
constexpr unsigned kIndexSize = 23;
constexpr unsigned long long kMostBuckets = 1U << 28;
constexpr unsigned kMapPairSize = 8;

[[noreturn]] void _throw_file_io_error() {
  QZ_DEBUG_RECORD(1, kSource, "%s:%d _throw_file_io_error()\n");
  throw QZX_logging_invalid_definition(
      "<QZX_logging_invalid_definition> Unable to access definition file successfully.", 0);
}

void require(bool transferred) {
  if (!transferred) _throw_file_io_error();
}

void seek_to(std::FILE* file, long long offset) { require(QZ_fseek(file, offset, SEEK_SET) == 0); }

qz_FileHandle open_definition_file(const char* path) {
  qz_FileHandle file = qz_open_unshared(path);
  if (file != nullptr) return file;
  qz_String text("<QZX_logging_invalid_definition> Unable to access definition file \"");
  text += path;
  text += "\".";
  throw QZX_logging_invalid_definition(text.c_str(), 0);
}

_qz_LOG_ldf_header_struct read_header(std::FILE* file) {
  _qz_LOG_ldf_header_struct header = {};
  seek_to(file, 0);
  require(_qz_LOG_read_file_header(file, header));
  return header;
}

void load_global_attributes(std::FILE* file, const _qz_LOG_ldf_header_struct& header) {
  seek_to(file, header.global_attr_offset);
  for (unsigned i = 0; i < header.global_attr_count; ++i) {
    qz_String name;
    qz_String redirection_name;
    qz_AttributeType type = TypeUnknown;
    require(_qz_LOG_read_attribute(file, name, type, redirection_name));
    _qz_LOG_log_definition::add_global_attr_info(name.c_str(), static_cast<unsigned char>(type));
  }
}

/// How many pairs of an entry map fit between its beginning and the end of the file; an upper bound for what a damaged
/// header may ask for.
unsigned pairs_between(unsigned map_offset, std::FILE* file) {
  if (QZ_fseek(file, 0, SEEK_END) != 0) return 0;
  const long long pairs = (QZ_ftell(file) - map_offset) / kMapPairSize;
  return static_cast<unsigned>(std::clamp(pairs, 0LL, static_cast<long long>(UINT_MAX)));
}

bool equal(const qz_String& text, const char* other) { return text.compare_string(other) == 0; }

/// The fixed part of an entry record and its attribute count.
struct EntryInfo {
  unsigned int entry_id = 0;
  unsigned int entry_word = 0;
  unsigned int property_mask = 0;
  qz_String default_msg_id;
  qz_String default_msg_text;
  qz_String selector_attribute_name;
  unsigned int attribute_count = 0;

  /// An empty selector name means no selector, also for an attribute whose name is empty.
  bool is_selector(const qz_String& name) const {
    return !name.empty() && equal(name, selector_attribute_name.c_str());
  }
};

EntryInfo read_entry_info(std::FILE* file, unsigned int entry_id) {
  EntryInfo info;
  require(_qz_LOG_read_entry_info(file, info.entry_id, info.entry_word, info.property_mask, info.default_msg_id,
                                  info.default_msg_text, info.selector_attribute_name));
  require(qz_be_read_int4(file, &info.attribute_count));
  if (info.entry_id != entry_id) {
    throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition> The definition file is corrupted.", 0);
  }
  return info;
}

void check_selector_attribute(const EntryInfo& info, const _qz_LOG_log_definition& def) {
  const _qz_LOG_attribute_entry* const selector = def.get_selector_attribute();
  if (selector == nullptr || info.selector_attribute_name.empty()) return;
  if (!equal(info.selector_attribute_name, selector->get_name())) {
    throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition> selector_attribute name conflict.", 0);
  }
}

void read_attributes(std::FILE* file, const EntryInfo& info, _qz_LOG_log_definition& def) {
  qz_String name;
  qz_String redirection_name;
  qz_AttributeType type = TypeUnknown;
  for (unsigned i = 0; i < info.attribute_count; ++i) {
    require(_qz_LOG_read_attribute(file, name, type, redirection_name));
    const bool is_selector = info.is_selector(name);
    // Only the selector attribute may be repeated; it then replaces the one that the definition has.
    if (!is_selector && def.find_own_attribute(_qz_LOG_attribute_name(name.c_str())) != nullptr) {
      qz_String text("<QZX_logging_invalid_definition> attribute ");
      text += name.c_str();
      text += " already exist.";
      throw QZX_logging_invalid_definition(text.c_str(), 0);
    }
    def.add_attr_info(name.c_str(), static_cast<unsigned char>(type), is_selector, redirection_name.c_str());
  }
}

/// Whether one of the first `count` messages, those of the standard file, has this index or value.
bool conflicts_with_selector(const _qz_LOG_log_definition& def, unsigned count, unsigned index, unsigned value) {
  for (unsigned i = 0; i < std::min<unsigned>(count, def.get_selector_msg_count()); ++i) {
    const _qz_LOG_selector_message& message = def.get_selector_msg_at(static_cast<unsigned char>(i));
    if (message.get_index() == index || message.get_value() == value) return true;
  }
  return false;
}

void read_selector_messages(std::FILE* file, bool is_aux, _qz_LOG_log_definition& def) {
  unsigned count = 0;
  require(qz_be_read_int4(file, &count));
  const unsigned former_count = def.get_selector_msg_count();
  qz_String message_id;
  qz_String message_text;
  for (unsigned i = 0; i < count; ++i) {
    unsigned index = 0;
    unsigned value = 0;
    require(_qz_LOG_read_selector_msg(file, index, value, message_id, message_text));
    if (is_aux && conflicts_with_selector(def, former_count, index, value)) {
      throw QZX_logging_invalid_definition(
          "<QZX_logging_invalid_definition> selector message index in AUX definition file conflict with STD definition",
          0);
    }
    def.add_selector_message(index, value, message_id.c_str(), message_text.c_str());
  }
}

}  // namespace

const _qz_LOG_log_definition_file_info_holder* _qz_LOG_entry_index::find(unsigned int entry_id) const {
  const auto* const node = slots[_qz_LOG_entry_index::_get_slot_index(entry_id)].find_entry(entry_id);
  return node != nullptr ? &node->value : nullptr;
}

void _qz_LOG_entry_index::put(unsigned int entry_id, const _qz_LOG_log_definition_file_info_holder& place) {
  Slot& slot = slots[_qz_LOG_entry_index::_get_slot_index(entry_id)];
  const auto* const newest = slot.head;
  slot.add_entry(entry_id, place);
  if (slot.head != newest) ++count_;  // a known ID keeps its node
}

void _qz_LOG_entry_index::reserve(unsigned additional) {
  using Walker = qz_MISC_hash_tbl_walker<unsigned int, _qz_LOG_log_definition_file_info_holder>;
  const unsigned long long wanted = 0ULL + count_ + additional;
  if (wanted <= size) return;
  _qz_LOG_entry_index larger(static_cast<unsigned>(std::min(wanted, kMostBuckets)));
  Walker walker(*this);
  while (const auto* const node = walker._next_key()) larger.put(node->key, node->value);
  std::swap(slots, larger.slots);
  std::swap(size, larger.size);
}

void _qz_LOG_entry_index::clear() {
  qz_MISC_hash_tbl::clear();
  count_ = 0;
}

_qz_LOG_log_definition_tbl::_qz_LOG_log_definition_tbl() : index_(kIndexSize), lock_(nullptr) {}

_qz_LOG_log_definition_tbl::~_qz_LOG_log_definition_tbl() { clear(); }

void _qz_LOG_log_definition_tbl::set_precompiled_definition_file_path(const char* path) {
  std_file_ = _set_definition_file_path(path, false);
}

void _qz_LOG_log_definition_tbl::set_precompiled_aux_definition_file_path(const char* path) {
  _set_definition_file_path(path, true);
}

_qz_LOG_log_definition* _qz_LOG_log_definition_tbl::find_entry(unsigned int entry_id) const {
  return acquire_entry(entry_id).get();
}

_qz_LOG_definition_ref _qz_LOG_log_definition_tbl::acquire_entry(unsigned int entry_id) const {
  // A lookup may read the file and fill the cache: the table is const to its users only.
  return const_cast<_qz_LOG_log_definition_tbl*>(this)->_find_entry_non_const(entry_id);
}

_qz_LOG_definition_hold_ref _qz_LOG_log_definition_tbl::hold_afresh(unsigned int entry_id) const {
  _qz_LOG_definition_ref definition = acquire_entry(entry_id);
  if (!definition) return {};
  return with_thread_instance<_qz_LOG_thread_holds>(
      [&](_qz_LOG_thread_holds& holds) { return holds.keep(entry_id, std::move(definition)); });
}

void _qz_LOG_log_definition_tbl::clear() {
  std_file_.reset();
  aux_file_.reset();
  for (unsigned i = 0; i < n_entry_definitions_cached; ++i) drop_from_cache(cache_[i]);
  std::fill(std::begin(cache_), std::end(cache_), nullptr);
  next_evict_ = 0;
  n_entry_definitions_cached = 0;
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
    if (const qz_LOG_CWriterAttempt writer(lock_); writer) {
      for (std::FILE* const file : {std_file_.get(), aux_file_.get()}) {
        if (file != nullptr) std::setvbuf(file, nullptr, _IONBF, 0);
      }
      return;
    }
    nanosleep(&kPause, nullptr);
  }
}

qz_FileHandle _qz_LOG_log_definition_tbl::_set_definition_file_path(const char* path, bool is_aux) {
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_set_definition_file_path\n");
  if (!is_aux) {
    clear();
    std_loaded_ = true;
  } else if (!std_loaded_) {
    throw QZX_logging_invalid_definition(
        "<QZX_logging_invalid_definition> user should set STD definition file before set AUX definition file.", 0);
  }
  qz_FileHandle file = open_definition_file(path);
  const _qz_LOG_ldf_header_struct header = read_header(file.get());
  char(&tag)[16] = is_aux ? aux_tag_ : std_tag_;
  QZ_bzero(tag, sizeof(tag));
  QZ_memcpy(tag, header.version_tag, sizeof(header.version_tag));
  load_global_attributes(file.get(), header);
  if (!is_aux) {
    load_entry_map(file.get(), header, false);
    return file;
  }
  aux_file_ = std::move(file);
  load_entry_map(aux_file_.get(), header, true);
  return nullptr;
}

void _qz_LOG_log_definition_tbl::load_entry_map(std::FILE* file, const _qz_LOG_ldf_header_struct& header, bool is_aux) {
  index_.reserve(std::min(header.entry_count, pairs_between(header.entry_map_offset, file)));
  long long position = header.entry_map_offset;
  bool has_moved = true;
  for (unsigned i = 0; i < header.entry_count; ++i) {
    if (has_moved) seek_to(file, position);
    unsigned entry_id = 0;
    unsigned offset = 0;
    if (!_qz_LOG_read_entry_id_offset_mapping(file, entry_id, offset)) {
      if (is_aux) aux_file_.reset();
      _throw_file_io_error();
    }
    position += kMapPairSize;
    has_moved = index_entry(entry_id, offset, file, is_aux);
  }
}

/// Whether records may have been read, so that the stream stands elsewhere.
bool _qz_LOG_log_definition_tbl::index_entry(unsigned int entry_id, unsigned int offset, std::FILE* file, bool is_aux) {
  const bool looked_up = may_be_known(entry_id, is_aux);
  const _qz_LOG_definition_ref known = looked_up ? _find_entry_non_const(entry_id) : _qz_LOG_definition_ref();
  index_.put(entry_id, {is_aux, offset});
  if (is_aux && known) _retrieve_entry_definition(entry_id, *known.get(), file);
  return looked_up;
}

/// A lookup while a file is loaded finds nothing while only a standard file is on its way; but traced it is to be seen.
bool _qz_LOG_log_definition_tbl::may_be_known(unsigned int entry_id, bool is_aux) const {
  return (is_aux && index_.find(entry_id) != nullptr) || debug_log_wants(kTraceLevel);
}

_qz_LOG_definition_ref _qz_LOG_log_definition_tbl::_find_entry_non_const(unsigned int entry_id) {
  {
    const qz_LOG_CReaderSentry reader(lock_);
    QZ_DEBUG_RECORD(3, kSource,
                    "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const n_entry_definitions_cached:%d\n",
                    n_entry_definitions_cached);
    if (_qz_LOG_log_definition* const cached = find_cached(entry_id)) return _qz_LOG_definition_ref::share(cached);
  }
  const qz_LOG_CWriterSentry writer(lock_);
  // Another thread may have read it since.
  if (_qz_LOG_log_definition* const cached = find_cached(entry_id)) return _qz_LOG_definition_ref::share(cached);

  _qz_LOG_definition_ref fresh;
  if (find_record(entry_id) != nullptr) fresh = _qz_LOG_definition_ref(qz_new<_qz_LOG_log_definition>());
  if (!fresh || !_retrieve_entry_definition(entry_id, *fresh.get(), nullptr)) {
    QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const return 0 %d\n",
                    n_entry_definitions_cached);
    return {};
  }
  store_in_cache(fresh.get());
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_find_entry_non_const return p_entry_definition %d\n",
                  n_entry_definitions_cached);
  return fresh;
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
  std::FILE* const file = is_aux ? aux_file_.get() : std_file_.get();
  if (file == nullptr) {
    QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false pfile=0\n");
    return false;
  }
  seek_to(file, indexed->offset);
  const EntryInfo info = read_entry_info(file, entry_id);
  if (is_aux) check_selector_attribute(info, def);
  read_attributes(file, info, def);
  read_selector_messages(file, is_aux, def);

  def.entry_id_ = info.entry_id;
  def.entry_word_ = info.entry_word;
  // An AUX merge keeps the standard mask.
  if (def.property_mask_ == 0) def.property_mask_ = info.property_mask;
  if (!is_aux || (!info.default_msg_id.empty() && !info.default_msg_text.empty())) {
    def.set_default_msg_id(info.default_msg_id.c_str());
    def.set_default_msg_text(info.default_msg_text.c_str());
  }
  def.set_version_tag(is_aux ? aux_tag_ : std_tag_);
  QZ_DEBUG_RECORD(3, kSource, "%s:%d _qz_LOG_log_definition_tbl::_retrieve_entry_definition return true\n");
  return true;
}

_qz_LOG_log_definition* _qz_LOG_log_definition_tbl::find_cached(unsigned int entry_id) const {
  const unsigned* const end = cached_ids_ + n_entry_definitions_cached;
  const unsigned* const found = std::find(cached_ids_, end, entry_id);
  return found != end ? cache_[found - cached_ids_] : nullptr;
}

/// Takes a reference of its own.
void _qz_LOG_log_definition_tbl::store_in_cache(_qz_LOG_log_definition* definition) {
  unsigned place = n_entry_definitions_cached;
  if (place < kCacheSize) {
    ++n_entry_definitions_cached;
  } else {
    place = next_evict_;
    next_evict_ = (next_evict_ + 1) % kCacheSize;
    drop_from_cache(cache_[place]);
  }
  definition->add_reference();
  definition->set_caching_table(this);
  cache_[place] = definition;
  cached_ids_[place] = definition->get_entry_id();
}

/// Holds of other threads on it end with their next lookup.
void _qz_LOG_log_definition_tbl::drop_from_cache(_qz_LOG_log_definition* definition) {
  definition->set_caching_table(nullptr);
  definition->release();
}
