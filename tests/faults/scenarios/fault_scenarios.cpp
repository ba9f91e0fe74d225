// fault_scenarios NAME cold|warm [ask]: runs an operation while something fails, then once more when nothing does any
// more. "warm" has run it before. Writes what came of both to standard output: "result" and what was seen, or "error: "
// and how the failure was stated; then "again" and the same for the second run; with "ask" then "icu" and what ICU and
// the C library say by themselves. Exit status: 0, or 1 where a failure was not one of those that the library states.
#include <qzlog/qz_exception.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>

#include "tests/faults/fault_marks.h"
#include "tests/faults/scenarios/icu_answers.h"
#include "tests/faults/scenarios/operations.h"

namespace {

struct Scenario {
  Operation operation;
  /// Asks ICU for what the operation has from it, see icu_answers.h. May be null.
  void (*ask)(SeenText& answers);
};

const Scenario kScenarios[] = {
    {{"entries", nullptr, see_entries, nullptr}, nullptr},
    {{"narrow", nullptr, see_narrow_messages, nullptr}, nullptr},
    {{"icu", nullptr, see_icu_messages, nullptr},
     [](SeenText& answers) {
       for (const char* const locale : {"en_US", "de_DE"}) ask_for_formats(answers, locale);
     }},
    {{"buffers", nullptr, see_buffer_messages, nullptr}, [](SeenText& answers) { ask_for_formats(answers, ""); }},
    {{"catalog", nullptr, see_catalog_messages, nullptr},
     [](SeenText& answers) {
       for (const char* const locale : {"de_DE", "ja_JP", "en_US"}) ask_for_formats(answers, locale);
     }},
    {{"code-pages", nullptr, see_code_pages, nullptr},
     [](SeenText& answers) {
       ask_for_code_page(answers, "ISO-8859-1", u"Gr\u00FC\u00DFe");
       ask_for_code_page(answers, "Shift_JIS", u"\u8A2D\u8A08");
       ask_for_code_page(answers, "IBM850", u"caf\u00E9");
     }},
    {{"configuration", nullptr, see_configuration, nullptr}, nullptr},
    {{"filter", nullptr, see_filter, nullptr}, nullptr},
    {{"debug-log", nullptr, see_messages_with_debug_log, nullptr},
     [](SeenText& answers) { ask_for_formats(answers, "en_US"); }},
    {{"counter", put_counter_back, count, check_counts}, nullptr},
    {{"counter-new", remove_counter, count, check_counts}, nullptr},
};

SeenText g_seen;
SeenText g_answers;
bool g_is_stated = true;

// What the operation ends with: the first line. An exception's text goes with the exception.
struct Ending {
  bool failed = false;
  char line[512] = "result";
};

Ending stated(const char* kind, const char* text) {
  Ending ending{true, ""};
  std::snprintf(ending.line, sizeof ending.line, "%s%s", kind, text == nullptr ? "" : text);
  for (char* letter = ending.line; *letter != '\0'; ++letter) {
    if (*letter == '\n') *letter = ' ';
  }
  return ending;
}

Ending run_to_its_end(const Operation& operation) {
  try {
    operation.run(g_seen);
    return {};
  } catch (const QZX_memory_alloc& error) {
    return stated("error: QZX_memory_alloc ", error.get_message());
  } catch (const QZX_logging_invalid_definition& error) {
    return stated("error: QZX_logging_invalid_definition ", error.get_message());
  } catch (const QZX_logging_missing_resource& error) {
    return stated("error: QZX_logging_missing_resource ", error.get_message());
  } catch (const QZX_logging_illegal_argument& error) {
    return stated("error: QZX_logging_illegal_argument ", error.get_message());
  } catch (const QZX_logging_file_operation_failed& error) {
    return stated("error: QZX_logging_file_operation_failed ", error.get_message());
  } catch (const QZX_logging_entry_type_not_found& error) {
    return stated("error: QZX_logging_entry_type_not_found ", error.get_message());
  } catch (const QZX_logging_all& error) {
    return stated("error: QZX_logging_all ", error.get_message());
  } catch (const StatedFailure& failure) {
    return stated("error: ", failure.text);
  } catch (const std::exception& error) {
    g_is_stated = false;
    return stated("not stated: ", error.what());
  }
}

void run_and_print(const Operation& operation, bool with_faults) {
  g_seen.clear();
  if (operation.prepare != nullptr) operation.prepare();
  if (with_faults && qz_faults_begin != nullptr) qz_faults_begin();
  const Ending ending = run_to_its_end(operation);
  if (with_faults && qz_faults_end != nullptr) qz_faults_end();
  SeenText line;
  line.add(ending.line);
  if (operation.check != nullptr && !operation.check(ending.failed)) {
    g_is_stated = false;
    line.add(" (but what it left is not in order)");
  }
  line.end_line();
  line.print();
  if (!ending.failed) g_seen.print();
}

const Scenario* find_scenario(const char* name) {
  for (const Scenario& scenario : kScenarios) {
    if (std::strcmp(scenario.operation.name, name) == 0) return &scenario;
  }
  return nullptr;
}

void print_line(const char* text) {
  SeenText line;
  line.add(text);
  line.end_line();
  line.print();
}

void ask_and_print(const Scenario& scenario, SeenText& answers) {
  print_line("icu");
  ask_for_defaults(answers);
  if (scenario.ask != nullptr) scenario.ask(answers);
  answers.print();
}

}  // namespace

int main(int argc, char** argv) {
  const Scenario* const scenario = argc == 3 || argc == 4 ? find_scenario(argv[1]) : nullptr;
  if (scenario == nullptr) return 2;
  const Operation& operation = scenario->operation;
  // Templates are read in the character set of the process.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  if (std::strcmp(argv[2], "warm") == 0) {
    if (operation.prepare != nullptr) operation.prepare();
    if (run_to_its_end(operation).failed) return 1;
  }
  run_and_print(operation, true);
  if (argc == 4) ask_for_local_time(g_answers);
  print_line("again");
  run_and_print(operation, false);
  if (argc == 4) ask_and_print(*scenario, g_answers);
  return g_is_stated ? 0 : 1;
}
