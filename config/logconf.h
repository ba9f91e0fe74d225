#ifndef QZLOG_CONFIG_LOGCONF_H
#define QZLOG_CONFIG_LOGCONF_H

#include <sys/types.h>

#include <atomic>
#include <cstdio>
#include <memory>

#include "config/filter_values.h"
#include "config/text_tbl.h"
#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "qzlog/export.h"
#include "qzlog/qz_string.h"

/// Answers what unsigned integer is configured for a key of a section.
class _qz_LOG_configuration : public qz_UTIL_no_inadvertant_copies {
 public:
  /// False, with `value` untouched, when there is none. Any thread.
  virtual bool get_integer_value(const char* section, const char* key, unsigned& value) const = 0;
  virtual ~_qz_LOG_configuration() = default;
  /// What get_integer_value says for all keys of a filter, at the price of one lookup. Null while lookups may still
  /// have to load something: each key has to be asked for then. Valid as long as this object. Any thread.
  virtual const qzlog::FilterValues* get_filter_values(const char* section) const = 0;

  _qz_LOG_configuration* next_retired = nullptr;  ///< of config/configuration_source
};

/// The settings of a file, keyed by the section's text followed by the key's, without a separator: sections "ab" with
/// key "c" and "a" with key "bc" share one setting, callers' files rely on it. Lookups take no memory, and no longer
/// among many settings than among few.
class _qz_LOG_log_setting_tbl : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit _qz_LOG_log_setting_tbl(unsigned size) : settings_(size), filter_values_(size) {}

  /// Inserts or overwrites. QZX_memory_alloc without memory. A null section counts as empty.
  void create_entry(const char* section, const char* key, unsigned value);
  /// The stored value or null.
  const unsigned* find_entry(const char* section, const char* key) const;
  /// Removes all settings.
  void clear();

  /// Gathers the values of the filters' keys by section, for find_filter_values. Once all settings are there.
  void gather_filter_values();
  /// The values of a section, completed by those of the section "global"; null when they were not gathered.
  const qzlog::FilterValues* find_filter_values(const char* section) const;

 private:
  static void _construct_hash_key_string(const char* section, const char* key, qz_String& out);
  void gather_from(const qz_String& name, unsigned value);

  qzlog::TextTable<unsigned> settings_;
  qzlog::TextTable<qzlog::FilterValues> filter_values_;  // by section
  qzlog::FilterValues global_filter_values_;
  bool filter_values_gathered_ = false;
};

/// Reads the lines of a file one by one. A line ends with a line feed, a carriage return or both.
class read_file {
 public:
  /// Reads the next line, without its end, into `buffer` of max + 1 bytes. 0: a line was read. -1: it has more than
  /// `max` characters, or the file cannot be positioned. -2: the file ended in or right after the line, so a last line
  /// with less than an empty line behind it is never reported with 0; configuration files are written to that rule.
  int readLine(std::FILE* file, char* buffer, int max);

 private:
  int finish_line(std::FILE* file, char* buffer, int count);
  int offset_ = 0;
};

/// A text file of sections in square brackets and lines of key and value, read on the first lookup.
///
/// Once any instance has loaded its file, no file is looked at again until the next instance is made.
class _qz_LOG_file_configuration : public _qz_LOG_configuration {
 public:
  enum LoadRule {
    kOnceForAll,  ///< as said above
    kByItself     ///< its first load does not depend on others: one that is being replaced may finish its own only now
  };

  /// Does not touch the file.
  explicit _qz_LOG_file_configuration(const char* path, LoadRule rule = kOnceForAll);

  /// The value in `section`, else in the section "global". A file that cannot be read has no values.
  bool get_integer_value(const char* section, const char* key, unsigned& value) const override;
  const qzlog::FilterValues* get_filter_values(const char* section) const override;
  ~_qz_LOG_file_configuration() override;

  /// 1 after the first successful load of any instance, 0 again with every instance made. Accessed atomically.
  QZLOG_EXPORT static int bCfgReaded;

 private:
  bool _find_value(const char* section, const char* key, unsigned& value) const;
  struct Loaded;
  std::unique_ptr<Loaded> _save_all_from_file() const;
  bool load(long long modification_time) const;

  // The file is loaded by the first lookup, which is const to its callers.
  mutable std::atomic<long long> modification_time_{0};
  // What was loaded last, or null. It never changes, and is kept when the file is loaded again: a lookup without the
  // lock may be under way in it.
  mutable std::atomic<const _qz_LOG_log_setting_tbl*> settings_{nullptr};
  mutable std::unique_ptr<const Loaded> loaded_;
  mutable qz_LOG_CRWLock lock_;
  qz_String path_;
  LoadRule rule_;
};

#endif  // QZLOG_CONFIG_LOGCONF_H
