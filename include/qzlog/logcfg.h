#ifndef QZLOG_LOGCFG_H
#define QZLOG_LOGCFG_H

#include <atomic>
#include <cstddef>

#include "qzlog/export.h"
#include "qzlog/qz_locale.h"

class _qz_LOG_configuration;
class _qz_LOG_log_definition_tbl;

/// Kept for callers; the library stores the level and never acts on it.
enum qz_SynchronizationLevelType : unsigned {
  QZ_SYNCHRONIZATION_NONE = 0,
  QZ_SYNCHRONIZATION_PROCESS = 1,
  QZ_SYNCHRONIZATION_FLUSH = 2,  ///< the initial level
  QZ_SYNCHRONIZATION_DATA = 3,
  QZ_SYNCHRONIZATION_FULL = 4
};

/// Whether a configuration file has to exist when it is named.
enum qz_ConfigurationSourceType : unsigned {
  QZ_CONFIGURATION_FILE = 0,                ///< must exist
  QZ_CONFIGURATION_FILE_MAY_BE_MISSING = 1  ///< may appear later
};

/// What happens to a text longer than its attribute's type allows.
enum qz_ActionAttrLenExceed : int {
  QZ_ACTION_REFUSE = 0,   ///< the add throws (the initial action)
  QZ_ACTION_TRUNCATE = 1  ///< the text is cut to the limit
};

/// What happens to an integer that is given as a wider type than its attribute has, and does not fit it.
enum qz_ActionOutOfRange : int {
  QZ_OUT_OF_RANGE_CUT = 0,    ///< its last bits are stored: 70000 as 4464 (the initial action)
  QZ_OUT_OF_RANGE_REFUSE = 1  ///< the add throws
};

/// The words below are read and written atomically by the library; callers use qz_LOG_LogConfig. A program that
/// declares them without this header reaches them too, unless it has variables of these names.
extern QZLOG_EXPORT bool b_is_icu_enabled QZLOG_SYMBOL(b_is_icu_enabled);
extern QZLOG_EXPORT int action_on_exceed QZLOG_SYMBOL(action_on_exceed);

/// The process-wide settings, set once at start-up. There is nothing to initialise and nothing to shut down.
///
/// Threads: the setters of paths, code page and locale and ClearDefinitions() exclude each other, but must not run
/// while other threads use entries. SetDefinitionMemory may. The configuration source may be set and removed at any
/// time, while others look up and filter. The flags (ICU, action, synchronization, count) may be read and written from
/// any thread. A text returned by a getter lives until the setting is set again.
///
/// Null where a text is wanted throws QZX_logging_illegal_argument "invalid argument" unless stated otherwise; running
/// out of memory throws QZX_memory_alloc, and the setting concerned is then unset (a catalog counts as open, and
/// fails).
class QZLOG_EXPORT qz_LOG_LogConfig {
 public:
  qz_LOG_LogConfig() = delete;

  /// Stores `level` when it is below 5; others are ignored.
  static void SetSynchronizationLevel(qz_SynchronizationLevelType level);
  static qz_SynchronizationLevelType GetSynchronizationLevel();

  /// A mark that the parts of a product agree on: whether they count the entries that they log (initially false). The
  /// library stores it and does nothing by it: it counts with qz_LOG_SharedCounter or _qz_LOG_EntryCounter, whatever is
  /// set here.
  static void EnableCountConfig(bool enable);
  static bool IsEnableCountConfig();

  /// Whether messages are rendered through ICU (initially true) or narrowly, byte by byte. Decides too whether the
  /// limits of MBChar attributes count UTF-16 code units or bytes.
  static void SetICUEnabled(bool enable);
  static bool IsICUEnabled();

  /// See qz_ActionAttrLenExceed. Any other value throws QZX_logging_illegal_argument
  /// "The action when attribute exceeds limitation is invalid!\n".
  static void SetActionAttrLenExceed(int action);
  static int GetActionAttrLenExceed();

  /// See qz_ActionOutOfRange. It holds where the value's own type is seen: in qz_LOG_LogEntry::SetEntry for attributes
  /// of one and two bytes, and in SetProductCode, SetProductPlatformCode and SetSeverityCode; these then throw
  /// QZX_logging_invalid_attribute_value NAME + " Attribute value is out of range under Entry ID " + ID + " !" and
  /// leave the attribute as it was. What AddAttrib1u and its like are given, the compiler has cut before: its warning
  /// -Wconversion tells of it. Any other action throws QZX_logging_illegal_argument
  /// "The action when a value is out of range is invalid!\n". Any thread.
  ///
  ///     qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_REFUSE);
  static void SetActionOutOfRange(int action);
  static int GetActionOutOfRange();

  /// The process's one table of definitions. Never null, lives as long as the library.
  static _qz_LOG_log_definition_tbl* GetDefinitionTable();

  /// Forgets both definition files, every definition and all global attributes. Entries keep the definitions they use,
  /// and a thread keeps the memory of up to 128 that it used last until it uses others or ends. The names of attributes
  /// stay known to the process, each once.
  static void ClearDefinitions();

  /// Loads the standard definition file, discarding every definition and the auxiliary file, but not the global
  /// attributes of earlier files. Throws QZX_logging_invalid_definition when it cannot be opened or read; the stored
  /// path is then the new one all the same and no definition is found any more.
  static void SetDefinitionPath(const char* path);
  /// The path as given, "" when unset.
  static const char* GetDefinitionPath();

  /// Loads an auxiliary definition file on top of the standard one. Throws QZX_logging_invalid_definition when no
  /// standard file was set, when the file cannot be opened or read, or when it contradicts the standard file.
  ///
  /// Limit: where an ID is in both files, they should have no more than qz_DefinitionCacheSize (128) IDs together. A
  /// process that has used more than that reads definitions again, and those of such IDs then hold only what the
  /// auxiliary file says: attributes of the standard file are refused, its messages gone. `qzlog compile --aux-of` and
  /// `qzlog check` warn of it; `qzlog compile --merge` makes one file of both, which has no limit.
  static void SetAuxDefinitionPath(const char* path);
  static const char* GetAuxDefinitionPath();

  /// How many bytes of memory the process may keep of definitions beyond the qz_DefinitionCacheSize cached ones, so
  /// that they need not be read and prepared for rendering again: of those that were replaced, of blocks of the
  /// definition files, and of what was prepared from message texts. 32 MiB unless it is set, which is enough for about
  /// 15,000 events; 0 keeps nothing. What is kept beyond a new limit is dropped at once. It changes no result: a
  /// definition is read again when its file was written to, which is noticed within a few milliseconds; writes through
  /// a shared mapping, and by other hosts, when the file system tells of them. Any thread.
  ///
  ///     qz_LOG_LogConfig::SetDefinitionMemory(std::size_t{256} << 20);  // a product with 100,000 events
  static void SetDefinitionMemory(std::size_t bytes);
  static std::size_t GetDefinitionMemory();

  /// Opens a message catalog, an ICU resource bundle with the table "STRING_TABLE", for the current locale; null closes
  /// it. While ICU is switched off this does nothing. Throws QZX_logging_missing_resource; the catalog then counts as
  /// open, so that every later message on the ICU path reports the failure. Its text says "Unable to locate" when there
  /// is no bundle for the locale and none to fall back to, and "Unable to access" when a file of the locale's is cut,
  /// damaged or fails while it is read, even when another language would be at hand. One that may not be opened, that
  /// is no regular file, or whose header is not that of a bundle of this machine is passed over, as ICU does. The
  /// catalog is read into memory here: files that are changed, cut or removed later count from the next
  /// SetMessageCatalogPath or SetLocale on; only the bundles that aliases name are read when they are needed.
  ///
  /// The path is that of a folder ("./messages", "/usr/share/messages"). ICU looks for a relative one with less than
  /// two slashes in its data directory; where there is no bundle, a folder of the working directory is meant:
  /// "messages" is then "./messages". The path that GetMessageCatalogPath and errors give is as it was given.
  static void SetMessageCatalogPath(const char* path);
  /// "" when unset or while ICU is switched off.
  static const char* GetMessageCatalogPath();

  /// The locale in which messages, numbers and dates are rendered from now on; an open catalog is opened again for it.
  /// Throws nothing: a catalog that cannot be opened for the locale, for whatever reason and be it a lack of memory,
  /// fails from then on as after a failed SetMessageCatalogPath, until it can be opened for another locale, or is set
  /// or closed. The process's own locale settings are not touched.
  static void SetLocale(qz_Locale locale);
  static qz_Locale GetLocale();

  /// The ICU converter name of the code page in which MBChar texts are given and messages returned; "" (initially)
  /// means ICU's default. Not checked here. GetReadableMessage keeps the code page of the process's first rendering.
  static void SetCodePage(const char* name);
  static const char* GetCodePage();

  /// Names the configuration file, read on the first lookup; null removes it. Any thread: a lookup or a stage of a
  /// filter that is under way ends with what it began with, every later one sees the new source or none. Removing takes
  /// no lock and no memory, and cannot fail. Throws QZX_logging_illegal_argument "invalid argument" when the file does
  /// not exist, unless `type` is QZ_CONFIGURATION_FILE_MAY_BE_MISSING.
  static void SetConfigurationSource(const char* path, qz_ConfigurationSourceType type);
  /// The unsigned value of `key` in `section`, else in the section "global". False, with `value` untouched, when there
  /// is none or no source is set. Any thread.
  static bool GetConfigurationIntegerValue(const char* section, const char* key, unsigned& value);
  /// The current source or null. The caller's thread may use it until it next calls this function, a lookup, an entry
  /// filter or SetConfigurationSource, whatever other threads set meanwhile; in what still runs after a thread's
  /// thread-local objects are gone (destructors of pthread keys) only until another thread sets the source.
  static _qz_LOG_configuration* _get_configuration_ptr();
  /// Whether there is one, for inlined code.
  static bool _has_configuration_source() { return has_configuration_source_.load(std::memory_order_relaxed); }

 private:
  static std::atomic<bool> has_configuration_source_;
};

#endif  // QZLOG_LOGCFG_H
