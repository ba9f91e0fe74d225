#ifndef QZLOG_TESTS_FAULTS_SCENARIOS_ICU_ANSWERS_H
#define QZLOG_TESTS_FAULTS_SCENARIOS_ICU_ANSWERS_H

#include "tests/faults/scenarios/seen_text.h"

/// ICU and the C library remember some of what failed for the life of the process. Whether they do is seen by asking
/// them without the library: a line for each question, with a tab before the answer, which begins with "failed: " where
/// there is none.

/// The C library's time zone, which the formats are asked with too. To be asked before what makes the C library read
/// the zone again, as ICU does.
void ask_for_local_time(SeenText& answers);
/// What every message may need: the default locale, the default code page and ICU's time zone.
void ask_for_defaults(SeenText& answers);
/// How a locale shows each number and moment of the samples; "" is the default locale.
void ask_for_formats(SeenText& answers, const char* locale);
/// A text in a code page and back.
void ask_for_code_page(SeenText& answers, const char* code_page, const char16_t* text);

#endif  // QZLOG_TESTS_FAULTS_SCENARIOS_ICU_ANSWERS_H
