#ifndef QZLOG_LOGATTRIB_H
#define QZLOG_LOGATTRIB_H

#include "qzlog/export.h"

/// The type of an attribute. The codes fit one byte and are stored in definition files.
enum qz_AttributeType : int {
  TypeUnknown = 0,
  TypeBool = 1,
  TypeUInt1 = 2,
  TypeSInt1 = 3,
  TypeUInt2 = 4,
  TypeSInt2 = 5,
  TypeUInt4 = 6,
  TypeSInt4 = 7,
  TypeFloat = 8,   ///< 64-bit
  TypeChar32 = 9,  ///< single-byte text, the number is its limit in bytes
  TypeChar64 = 10,
  TypeChar128 = 11,
  TypeChar256 = 12,
  TypeChar1K = 13,
  TypeChar2K = 14,
  TypeMBChar32 = 15,  ///< text in the configured code page, the number is its limit in characters
  TypeMBChar64 = 16,
  TypeMBChar128 = 17,
  TypeMBChar256 = 18,
  TypeMBChar1K = 19,
  TypeMBChar2K = 20,
  /// The three time types hold the same, a qz_Time with date and time of day. They differ in what qzlog compile shows
  /// for {NAME}: the date, the time of day, or both. A message shows the time on the clock that the value was added
  /// with: GMT, unless the caller called GMT_to_local() before. The entry's own TIMESTAMP is shown in local time.
  TypeDate = 21,
  TypeTime = 22,       ///< as TypeDate
  TypeTimestamp = 23,  ///< as TypeDate
  TypeGUID = 24        ///< can be defined, but no add method accepts it
};

struct qz_AttributeTypeName {
  const char* name;
  qz_AttributeType code;
};

/// The 24 types in code order, then two all-zero rows: a row whose name is null ends the table.
extern QZLOG_EXPORT const qz_AttributeTypeName AttributeTypeList[26] QZLOG_SYMBOL(AttributeTypeList);

/// The code of a type's full name ("TypeChar32", exact and case-sensitive), 0 for any other text and for null. Any
/// thread.
QZLOG_EXPORT qz_AttributeType _qz_LOG_get_attribute_type_code(const char* name);

/// The full name of a type, "TypeUnknown" for 0 and every other value without one. Static storage. Any thread.
QZLOG_EXPORT const char* _qz_LOG_get_attribute_type_string(qz_AttributeType code);

#endif  // QZLOG_LOGATTRIB_H
