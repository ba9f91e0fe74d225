#ifndef QZLOG_TESTS_FAULTS_SCENARIOS_OPERATIONS_H
#define QZLOG_TESTS_FAULTS_SCENARIOS_OPERATIONS_H

#include "tests/faults/scenarios/seen_text.h"

/// Something that a program does with the library, from nothing on. It may be done again and again in one process.
struct Operation {
  const char* name;
  /// Puts back what `run` changes; nothing fails meanwhile. May be null.
  void (*prepare)();
  /// What the caller sees goes into `seen`. Throws what the library throws, or StatedFailure.
  void (*run)(SeenText& seen);
  /// What can be seen of it afterwards, while nothing fails: true when all is in order after a run that did not fail,
  /// or after one that did (`failed`). May be null.
  bool (*check)(bool failed);
};

/// Thrown where the library states a failure by a result instead of an exception.
struct StatedFailure {
  const char* text;
};

void see_entries(SeenText& seen);
void see_narrow_messages(SeenText& seen);
void see_icu_messages(SeenText& seen);
void see_buffer_messages(SeenText& seen);
void see_catalog_messages(SeenText& seen);
void see_code_pages(SeenText& seen);
void see_configuration(SeenText& seen);
void see_filter(SeenText& seen);
void see_messages_with_debug_log(SeenText& seen);

void put_counter_back();
void remove_counter();
void count(SeenText& seen);
bool check_counts(bool failed);

#endif  // QZLOG_TESTS_FAULTS_SCENARIOS_OPERATIONS_H
