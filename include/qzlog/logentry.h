#ifndef QZLOG_LOGENTRY_H
#define QZLOG_LOGENTRY_H

#include <iosfwd>
#include <string>

#include "qzlog/export.h"
#include "qzlog/logattrib.h"
#include "qzlog/qz_time.h"

/// Warns of argument lists without their null pointer, for who asks for it: see qz_LOG_LogEntry::SetEntry.
#ifdef QZLOG_WARN_SENTINEL
#define QZLOG_SENTINEL __attribute__((sentinel))
#else
#define QZLOG_SENTINEL
#endif

class _qz_LOG_log_entry_imp;

namespace qzlog {
struct EntryAccess;
}

/// What a filter decides by, where inlined code finds it.
struct _qz_LOG_entry_head {
  unsigned int entry_id;
  unsigned int log_level;
  unsigned int property_mask;
};

/// Receives the attributes of an entry from qz_LOG_LogEntry::VisitAttributes. Names, texts and times are valid during
/// the call only. A visitor must not change the entry; what it throws ends the visit and reaches its caller.
class QZLOG_EXPORT qz_LOG_AttributeVisitor {
 public:
  virtual ~qz_LOG_AttributeVisitor();
  virtual void VisitBool(const char* name, qz_AttributeType type, bool value) = 0;
  /// TypeUInt1, TypeUInt2, TypeUInt4.
  virtual void VisitUnsigned(const char* name, qz_AttributeType type, unsigned int value) = 0;
  /// TypeSInt1, TypeSInt2, TypeSInt4.
  virtual void VisitSigned(const char* name, qz_AttributeType type, int value) = 0;
  virtual void VisitFloat(const char* name, qz_AttributeType type, double value) = 0;
  /// Char and MBChar types: the text as stored (line breaks escaped), zero-terminated, with its length in bytes.
  virtual void VisitText(const char* name, qz_AttributeType type, const char* text, unsigned int length) = 0;
  virtual void VisitTime(const char* name, qz_AttributeType type, const qz_Time& value) = 0;
};

/// One log entry: an ID, a level from 0 to 9, a property mask, a time and typed attributes, each checked against the
/// definition of the entry ID when it is added.
///
/// Levels: 9 is the most important. 0 and 1 are debug, 2 and 3 info, 4 notice, 5 and 6 warning, 7 error, 8 critical, 9
/// alert: so everything names and maps them that shows, filters or ships entries. The library itself only compares
/// them.
///
/// An entry keeps the definition it uses alive, so loading other definition files or clearing them never leaves it
/// dangling. One thread uses one entry at a time; different threads may use different entries at once.
///
/// Exceptions, besides those named below: a null or empty attribute name or a null text throws
/// QZX_logging_illegal_argument, a name that neither the entry ID nor the globals define throws
/// QZX_logging_invalid_attribute_name, a method that does not fit the attribute's type throws
/// QZX_logging_attribute_type_mismatch, an entry without an ID throws QZX_logging_misc, and running out of memory
/// throws QZX_memory_alloc. An operation that throws leaves the attributes as they were.
class QZLOG_EXPORT qz_LOG_LogEntry {
 public:
  /// An entry without an ID: give it one (SetEntryID, SetEntry) before anything is added. Reads the class-wide log
  /// version from the first of the IDs 0 to 9 that is defined.
  qz_LOG_LogEntry();
  /// Throws QZX_logging_entry_type_not_found for an ID that no definition file defines and
  /// QZX_logging_invalid_log_level for a level above 9. Sets the class-wide log version from the definition file's tag.
  qz_LOG_LogEntry(unsigned int entry_id, unsigned int log_level);
  /// Copies of an entry without an ID throw QZX_logging_entry_type_not_found (unless the ID 0 is defined). Assigning an
  /// entry to itself empties it: callers rely on both.
  qz_LOG_LogEntry(const qz_LOG_LogEntry& other);
  qz_LOG_LogEntry& operator=(const qz_LOG_LogEntry& other);
  ~qz_LOG_LogEntry();

  unsigned int GetEntryID() const;
  /// Changes the ID, resets the level to 0 and takes the new definition's property mask; attributes stay. An unknown ID
  /// throws QZX_logging_entry_type_not_found and leaves the entry without a definition.
  void SetEntryID(unsigned int entry_id);
  unsigned int GetLogLevel() const;
  /// Throws QZX_logging_invalid_log_level above 9.
  void SetLogLevel(unsigned int log_level);
  unsigned int GetPropertyMask() const;

  /// The name of the event, as the definitions have it that the entry was made with: "DISK_FULL"; "" where they have
  /// none. Lives as long as the process. Throws QZX_logging_misc for an entry without an ID and QZX_memory_alloc.
  const char* GetEventName() const;

  /// SetEntryID, SetLogLevel, then pairs of attribute name and value up to a null pointer (`nullptr`, or `(char*)0`,
  /// never a plain 0) or an empty name. The value's kind follows from the attribute's defined type: `const char*` for
  /// the text types and for times (as qz_Time::set_to_string_value reads them), an integer for every integer type and
  /// TypeBool, a double for TypeFloat. Attributes already present stay; pairs before one that throws are added. An
  /// integer that its attribute of one or two bytes cannot hold is cut to its last bits or refused, see
  /// qz_LOG_LogConfig::SetActionOutOfRange.
  ///
  /// A list without its end reads what is not there. Where QZLOG_WARN_SENTINEL is defined before the first header of
  /// the library, GCC (-Wformat, which is in -Wall) and Clang warn of a list that no null pointer ends, also of one
  /// that an empty name ends.
  void SetEntry(unsigned int entry_id, unsigned int log_level, ...) QZLOG_SENTINEL;

  /// Add an attribute or replace its value. Text longer than its type allows throws QZX_logging_invalid_attribute_value
  /// or is cut, see qz_LOG_LogConfig::SetActionAttrLenExceed; line feeds and carriage returns are stored as "\n" and
  /// "\r" (two characters each). AddAttribTime serves all three time types.
  ///
  /// AddAttribStr serves the Char types: bytes that are stored unchecked, whose limit is a number of bytes. ICU takes
  /// them to be in the configured code page (qz_LOG_LogConfig::SetCodePage) when the message is shown, as it takes
  /// those of AddAttribMBStr; a text that is cut may then end within a character. AddAttribMBStr serves the MBChar
  /// types: text in the configured code page at the time of the call, whose limit is a number of UTF-16 code units
  /// where ICU is enabled, and of bytes where it is not; with ICU it is cut between those. Without ICU both are shown
  /// byte by byte.
  void AddAttribBool(const char* name, bool value);
  void AddAttrib1u(const char* name, unsigned char value);
  void AddAttrib1(const char* name, char value);
  void AddAttrib2u(const char* name, unsigned short value);
  void AddAttrib2(const char* name, short value);
  void AddAttrib4u(const char* name, unsigned int value);
  void AddAttrib4(const char* name, int value);
  void AddAttribFloat8(const char* name, double value);
  void AddAttribTime(const char* name, const qz_Time& value);
  void AddAttribStr(const char* name, const char* value);
  void AddAttribMBStr(const char* name, const char* value);

  /// Read an attribute. One that is defined but not set reads as 0, false, "" or the zero time, or throws
  /// QZX_logging_attribute_not_found in operation mode 1. Texts stay valid until the attribute is replaced or removed
  /// or the entry is cleared or destroyed. GetAttribTime("TIMESTAMP") is the entry's own time. GetAttrib1 returns the
  /// stored number as a `char`, which has no sign on some hosts (arm64, s390x): convert it to `signed char` there.
  bool GetAttribBool(const char* name) const;
  unsigned char GetAttrib1u(const char* name) const;
  char GetAttrib1(const char* name) const;
  unsigned short GetAttrib2u(const char* name) const;
  short GetAttrib2(const char* name) const;
  unsigned int GetAttrib4u(const char* name) const;
  int GetAttrib4(const char* name) const;
  double GetAttribFloat8(const char* name) const;
  qz_Time GetAttribTime(const char* name) const;
  const char* GetAttribStr(const char* name) const;
  const char* GetAttribMBStr(const char* name) const;

  /// The same, but false with `value` untouched when the attribute is not set, in every mode.
  bool GetAttribBool(const char* name, bool& value) const;
  bool GetAttrib1u(const char* name, unsigned char& value) const;
  bool GetAttrib1(const char* name, char& value) const;
  bool GetAttrib2u(const char* name, unsigned short& value) const;
  bool GetAttrib2(const char* name, short& value) const;
  bool GetAttrib4u(const char* name, unsigned int& value) const;
  bool GetAttrib4(const char* name, int& value) const;
  bool GetAttribFloat8(const char* name, double& value) const;
  bool GetAttribTime(const char* name, qz_Time& value) const;
  bool GetAttribStr(const char* name, const char*& value) const;
  bool GetAttribMBStr(const char* name, const char*& value) const;

  /// True when a value was removed.
  bool RemoveAttrib(const char* name);
  /// Removes every attribute and resets the level to 0 and the time to zero.
  void ClearAttribs();
  /// 0 when set (`type` is the stored value's), 1 when defined but not set, -1 with TypeUnknown when unknown; a null or
  /// empty name gives -1 and leaves `type` alone. Never throws.
  int CheckAttribute(const char* name, qz_AttributeType& type) const;
  /// Every attribute that is set: in the order of the definition, own attributes first, then global ones; values whose
  /// names the current definition does not know (the ID was changed) come last, ordered by name.
  void VisitAttributes(qz_LOG_AttributeVisitor& visitor) const;

  /// The entry's time: stored with its calendar fields read as GMT or local time; returned on the clock asked for.
  /// Setting it also sets "TIMEZONE_DIFFERENCE" (TypeSInt2, minutes east of GMT) and "DAYLIGHT_SAVING_ACTIVE"
  /// (TypeBool) when they change, so both have to be defined, else QZX_logging_invalid_attribute_name: the time is set
  /// even then.
  void SetTimestamp(const qz_Time& time, bool gmt);
  qz_Time GetTimestamp(bool gmt) const;
  /// The calendar fields of the entry's time on the local clock.
  void GetEventLocalDate(unsigned short& year, unsigned short& month, unsigned short& day) const;
  void GetEventLocalTime(unsigned short& hour, unsigned short& minute, unsigned short& second) const;

  /// The standard information attributes; like every attribute each has to be defined, globally or for the ID:
  /// "COMPUTER_NAME" and "PRODUCT_VERSION" (an MBChar type; null or empty throws QZX_logging_illegal_argument),
  /// "PRODUCT_CODE" and "PRODUCT_PLATFORM_CODE" (TypeUInt2, cut to 16 bits), "PRODUCT_LANGUAGE_CODE", "COMPONENT_CODE"
  /// and "REASON_CODE_SOURCE" (TypeUInt4), "SEVERITY_CODE" (TypeUInt1, cut to 8 bits), "REASON_CODE" (TypeSInt4).
  void SetComputerInfo(const char* name);
  void SetProductCode(unsigned int code);
  void SetProductPlatformCode(unsigned int code);
  void SetProductLanguageCode(unsigned int code);
  void SetProductVersion(const char* version);
  void SetComponentCode(unsigned int code);
  void SetSeverityCode(unsigned int code);
  void SetReasonCode(int code);
  void SetReasonCodeSource(unsigned int code);
  const char* GetComputerInfo() const;
  unsigned short GetProductCode() const;
  unsigned short GetProductPlatformCode() const;
  unsigned int GetProductLanguageCode() const;
  const char* GetProductVersion() const;
  unsigned int GetComponentCode() const;
  unsigned char GetSeverityCode() const;
  int GetReasonCode() const;
  unsigned int GetReasonCodeSource() const;

  /// The readable message, always rendered afresh, of any length, in the configured code page. `use_default` skips the
  /// selector messages; a `selector_index` other than 0 asks for the selector message with that index. Throws what
  /// rendering throws: QZX_logging_invalid_message_string (the template or the index is wrong),
  /// QZX_logging_missing_resource and QZX_logging_invalid_definition (the catalog), QZX_logging_internal_error (ICU).
  /// While the environment variable _QZ_DISABLE_READABLE_MSG existed at the process's first rendering, the text is
  /// "qz_LOG_LogEntry::GetMessage:  this method is not yet supported."
  std::string FormatMessage(bool use_default = false, unsigned int selector_index = 0) const;
  /// The same into `message`, whose memory is used again: for callers that format one message after the other. When it
  /// throws, `message` is as it was.
  void FormatMessage(std::string& message, bool use_default = false, unsigned int selector_index = 0) const;

  /// The readable message in the caller's `buffer`, which must hold `size` + 1 bytes: on the ICU path the terminator
  /// comes on top of `size`. Returns `buffer`, or a fixed text (see FormatMessage), or the cached text of the short
  /// form below. The narrow path cuts the text to `size` - 1 bytes; on the ICU path a text longer than `size` throws
  /// QZX_logging_internal_error. A `size` of 0 or less touches nothing. The code page is the one of the process's
  /// first message rendered through ICU by this function.
  const char* GetReadableMessage(char* buffer, long size, bool use_default, unsigned int selector_index) const;
  /// Renders, with every failure of rendering, and returns the empty text, which is cached until the entry changes or
  /// other arguments are given: callers rely on it. For the text use FormatMessage or the form above.
  const char* GetReadableMessage(bool use_default, unsigned int selector_index) const;
  /// GetReadableMessage(false, 0): the empty text, once the message could be rendered.
  operator const char*() const;  // NOLINT(google-explicit-constructor): callers pass entries as texts

  /// The entry as a JSON object on one line, without a line end, as `qzlog render` and readers of entries take it: the
  /// members "id", "level", "time" (RFC 3339, in GMT; only when it is set), "default" and "selector" (only when they
  /// are not false and 0: the caller's choice of message, as FormatMessage takes it), "name" (the event's, where the
  /// definitions know it) and "attributes", name to value, in the order in which they were added. Those that the
  /// definition does not know, as the ID was changed, are among them. Times have no mode in it: a moment is the same on
  /// every clock.
  ///
  ///   std::string line = entry.ToJson();
  ///   {"id":1001,"level":3,"attributes":{"Name":"vol1","Load":0.875}}
  ///
  /// It is always valid JSON and UTF-8. Texts are read in the configured code page (SetCodePage; without one ICU's
  /// default), or as UTF-8 while ICU is switched off. A text whose UTF-8 form does not lead back
  /// to its bytes also stands in the member "bytes", name to base64: there what is not UTF-8 has become replacement
  /// characters. Floating point numbers have the fewest digits that read back as the same number, and a point or an
  /// exponent; those that JSON lacks are the texts "NaN", "Infinity" and "-Infinity".
  ///
  /// AppendJson appends to `line`, whose memory is used again: for callers that write one entry after the other. When
  /// it throws, `line` is as it was. Throws QZX_logging_misc for an entry without an ID, QZX_logging_illegal_argument
  /// while the configured code page is unknown or one whose texts have zero bytes (UTF-16, UTF-32), and
  /// QZX_memory_alloc.
  void AppendJson(std::string& line, bool use_default = false, unsigned int selector_index = 0) const;
  std::string ToJson(bool use_default = false, unsigned int selector_index = 0) const;

  /// Convert a zero-terminated `source` from a code page to UTF-8, and back. `target` must hold `size` + 1 bytes: the
  /// terminator comes on top of `size`. Return 1 and set `size` to the bytes written without the terminator, or return
  /// 0 when an argument is null, `size` is 0, the code page is unknown or the text does not fit (`target` may then hold
  /// a part of it). Characters that the code page lacks are replaced. Never throw. Any thread.
  static int ConvertToUTF8(const char* source, char* target, unsigned int& size, const char* codepage);
  static int ConvertFromUTF8(const char* source, char* target, unsigned int& size, const char* codepage);

  /// 1 makes reads of defined but unset attributes throw; any other value (initially 2) makes them return defaults.
  /// Process-wide.
  static void SetOperationMode(unsigned int mode);
  /// The class-wide log version: read from the tag of the first of the IDs 0 to 9 that is defined, else as the last
  /// entry constructed with an ID left it.
  static unsigned int GetLogMajorVersion();
  static unsigned int GetLogMinorVersion();
  static void GetLogVersion(unsigned int& major, unsigned int& minor);
  /// Defines an attribute at run time, for one entry ID or, with ID 0, for all. False when the name exists already.
  /// A null name or a type outside 0 to 25 throws QZX_logging_illegal_argument, an unknown ID
  /// QZX_logging_entry_type_not_found. Not to be called while other threads use entries of that ID.
  static bool AddAttributeDefinition(unsigned int entry_id, const char* name, qz_AttributeType type);

 private:
  friend class _qz_LOG_entry_filter;
  friend struct qzlog::EntryAccess;
  QZLOG_NO_EXPORT explicit qz_LOG_LogEntry(_qz_LOG_log_entry_imp* implementation);

  _qz_LOG_log_entry_imp* implementation_;
  const _qz_LOG_entry_head* head_;  // of the implementation
};

/// Writes the entry's FormatMessage(), and throws what that throws. Without it an entry written to a stream would be
/// the empty text that it becomes as a `const char*`. Any operator of the program's own that takes entries, or values
/// of all types, is preferred. For who writes entries with it, <ostream> is to be included.
///
///     std::cout << entry << '\n';
template <class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                             const volatile qz_LOG_LogEntry& entry) {
  return stream << const_cast<const qz_LOG_LogEntry&>(entry).FormatMessage();
}

#endif  // QZLOG_LOGENTRY_H
