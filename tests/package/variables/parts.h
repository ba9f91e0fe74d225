#ifndef QZLOG_TESTS_PACKAGE_VARIABLES_PARTS_H
#define QZLOG_TESTS_PACKAGE_VARIABLES_PARTS_H

/// The parts of a program, each in a source of its own that sees the library's variables in its own way.

/// Values of the library's three variables.
struct Values {
  unsigned level;
  bool icu;
  int action;
};

inline bool operator==(const Values& left, const Values& right) {
  return left.level == right.level && left.icu == right.icu && left.action == right.action;
}

#define VISIBLE __attribute__((visibility("default")))

/// By the library's header.
VISIBLE void header_write(const Values& values);
VISIBLE Values header_read();
VISIBLE const void* header_type_list();

/// By declarations of the program's own.
VISIBLE void declared_write(const Values& values);
VISIBLE Values declared_read();
VISIBLE const void* declared_type_list();

/// Variables of the program's own that have the names of the library's; true while they are as they were made.
VISIBLE bool own_variables_are_untouched();

#endif  // QZLOG_TESTS_PACKAGE_VARIABLES_PARTS_H
