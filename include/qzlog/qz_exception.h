#ifndef QZLOG_QZ_EXCEPTION_H
#define QZLOG_QZ_EXCEPTION_H

#include "qzlog/export.h"

/// The root of everything the library throws, always by value. Not polymorphic: an exception is told apart by its
/// static type, and no derived class adds a field. Nothing is thrown as plain qz_EXCEPTION_base.
class QZLOG_EXPORT qz_EXCEPTION_base {
 public:
  /// Copies `message` (null allowed). When there is no memory for the copy the message is null.
  explicit qz_EXCEPTION_base(const char* message = nullptr, int code = 0) noexcept;
  qz_EXCEPTION_base(const qz_EXCEPTION_base& other) noexcept;
  qz_EXCEPTION_base& operator=(const qz_EXCEPTION_base& other) noexcept;
  ~qz_EXCEPTION_base();

  /// The message text, or null. Valid as long as this object.
  const char* get_message() const noexcept { return message_; }
  /// Always 0 for exceptions thrown by the library.
  int get_code() const noexcept { return code_; }

 private:
  char* message_;
  int code_;
};

/// No memory. Always with a null message. Deliberately outside QZX_logging_all.
class QZLOG_EXPORT QZX_memory_alloc : public qz_EXCEPTION_base {
 public:
  explicit QZX_memory_alloc(const char* message = nullptr, int code = 0) noexcept : qz_EXCEPTION_base(message, code) {}
};

class QZLOG_EXPORT QZX_runtime : public qz_EXCEPTION_base {
 public:
  explicit QZX_runtime(const char* message = nullptr, int code = 0) noexcept : qz_EXCEPTION_base(message, code) {}
};

/// A character index outside a qz_String. Not to be confused with QZX_logging_index_out_of_bound.
class QZLOG_EXPORT QZX_index_out_of_bounds : public QZX_runtime {
 public:
  explicit QZX_index_out_of_bounds(const char* message = nullptr, int code = 0) noexcept : QZX_runtime(message, code) {}
};

/// The base of the library's own failures.
class QZLOG_EXPORT QZX_logging_all : public qz_EXCEPTION_base {
 public:
  explicit QZX_logging_all(const char* message = nullptr, int code = 0) noexcept : qz_EXCEPTION_base(message, code) {}
};

/// An argument that no entry, setting or file could make valid (null, out of range).
class QZLOG_EXPORT QZX_logging_illegal_argument : public QZX_logging_all {
 public:
  explicit QZX_logging_illegal_argument(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// A log level above 9.
class QZLOG_EXPORT QZX_logging_invalid_log_level : public QZX_logging_all {
 public:
  explicit QZX_logging_invalid_log_level(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// An index beyond the global attributes.
class QZLOG_EXPORT QZX_logging_index_out_of_bound : public QZX_logging_all {
 public:
  explicit QZX_logging_index_out_of_bound(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// ICU refused something, or an index beyond an entry's own attributes.
class QZLOG_EXPORT QZX_logging_internal_error : public QZX_logging_all {
 public:
  explicit QZX_logging_internal_error(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// An operation on an entry that has no definition.
class QZLOG_EXPORT QZX_logging_misc : public QZX_logging_all {
 public:
  explicit QZX_logging_misc(const char* message = nullptr, int code = 0) noexcept : QZX_logging_all(message, code) {}
};

/// An attribute that is defined but not set was read in operation mode 1.
class QZLOG_EXPORT QZX_logging_attribute_not_found : public QZX_logging_all {
 public:
  explicit QZX_logging_attribute_not_found(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// An add or get method that does not fit the attribute's type.
class QZLOG_EXPORT QZX_logging_attribute_type_mismatch : public QZX_logging_all {
 public:
  explicit QZX_logging_attribute_type_mismatch(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// An entry ID that no definition file defines.
class QZLOG_EXPORT QZX_logging_entry_type_not_found : public QZX_logging_all {
 public:
  explicit QZX_logging_entry_type_not_found(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// An attribute name that is defined neither for the entry ID nor globally.
class QZLOG_EXPORT QZX_logging_invalid_attribute_name : public QZX_logging_all {
 public:
  explicit QZX_logging_invalid_attribute_name(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// A text longer than its attribute's type allows.
class QZLOG_EXPORT QZX_logging_invalid_attribute_value : public QZX_logging_all {
 public:
  explicit QZX_logging_invalid_attribute_value(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// A message template that refers to something it must not, or a selector index that does not exist.
class QZLOG_EXPORT QZX_logging_invalid_message_string : public QZX_logging_all {
 public:
  explicit QZX_logging_invalid_message_string(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// The message catalog or a message in it cannot be found.
class QZLOG_EXPORT QZX_logging_missing_resource : public QZX_logging_all {
 public:
  explicit QZX_logging_missing_resource(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// A definition file that cannot be read or contradicts itself.
class QZLOG_EXPORT QZX_logging_invalid_definition : public QZX_logging_all {
 public:
  explicit QZX_logging_invalid_definition(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// A counter file that cannot be opened.
class QZLOG_EXPORT QZX_logging_file_operation_failed : public QZX_logging_all {
 public:
  explicit QZX_logging_file_operation_failed(const char* message = nullptr, int code = 0) noexcept
      : QZX_logging_all(message, code) {}
};

/// From now on an exception of the library that nobody catches is told on standard error before the process ends:
///
///     qzlog: nobody caught QZX_logging_entry_type_not_found: entry ID 7 ...
///
/// The C++ runtime alone tells the class: these are no std::exception, whose text it would show. Then what was to be
/// called before is called (std::set_terminate), which ends the process as without it. Call it at the beginning of
/// main; a second call changes nothing. Any thread.
///
///     int main() {
///       qz_LOG_install_terminate_text();
///       ...
QZLOG_EXPORT void qz_LOG_install_terminate_text() noexcept;

#endif  // QZLOG_QZ_EXCEPTION_H
