#ifndef QZLOG_TESTS_TOOLS_INSPECT_LDF_FORMS_H
#define QZLOG_TESTS_TOOLS_INSPECT_LDF_FORMS_H

#include <sstream>
#include <string>
#include <string_view>

#include "tests/support/seeded_random.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/inspect/ldf_annotation.h"
#include "tools/inspect/ldf_json.h"
#include "tools/inspect/ldf_survey.h"
#include "tools/inspect/ldf_table.h"

namespace qzlog_compiler {

inline std::string annotation_of(std::string_view bytes, std::size_t columns = 0) {
  std::ostringstream out;
  write_annotation(LdfSurvey(bytes), columns, out);
  return out.str();
}

inline std::string json_of(std::string_view bytes) {
  std::ostringstream out;
  write_json(LdfSurvey(bytes), {}, out);
  return out.str();
}

inline std::string table_of(std::string_view bytes, std::size_t columns = 0) {
  std::ostringstream out;
  write_table(LdfSurvey(bytes), columns, out);
  return out.str();
}

/// A file of random definitions, every other one with names.
inline std::string random_file(RandomStoredModel& maker, qz_test::SeededRandom& random) {
  DefinitionModel model = maker.make();
  if (random.one_in(2)) return write_ldf(model);
  maker.name_everything(model);
  std::string bytes = write_ldf(model);
  append_names(model, bytes);
  return bytes;
}

/// A copy with a few bytes changed, or four of them set to a number that leads somewhere.
inline std::string damaged(std::string bytes, qz_test::SeededRandom& random) {
  for (long long changes = random.between(1, 4); changes > 0; --changes) {
    const auto at = static_cast<std::size_t>(random.between(0, static_cast<long long>(bytes.size()) - 4));
    if (random.one_in(2)) {
      bytes[at] = static_cast<char>(random.between(0, 255));
    } else {
      const long long most = random.one_in(4) ? 0xFFFFFFFF : static_cast<long long>(bytes.size()) + 8;
      const long long number = random.between(0, most);
      for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(number >> (24 - 8 * i) & 0xFF);
    }
  }
  return bytes;
}

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_INSPECT_LDF_FORMS_H
