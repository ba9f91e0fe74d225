#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "qzlog.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/source/aux_merge.h"

namespace qzlog_compiler {
namespace {

constexpr SourcePosition kHere{1, 1};
constexpr std::uint32_t kIds = 12;
const std::vector<std::string> kNames = {"A", "B", "C", "D", "E", "F"};
const std::vector<qz_AttributeType> kTypes = {TypeUInt1, TypeUInt2, TypeUInt4, TypeSInt4, TypeBool, TypeChar32};

/// Makes definitions of few names and numbers, so that files have much in common.
class ModelMaker {
 public:
  explicit ModelMaker(qz_test::SeededRandom& random) : random_(random) {}

  DefinitionModel make(const char* version) {
    DefinitionModel model;
    model.version = version;
    model.globals = attributes(4);
    for (std::uint32_t id = 1; id <= kIds; ++id) {
      if (!random_.one_in(3)) model.entries.push_back(entry(id));
    }
    return model;
  }

 private:
  template <typename Item>
  const Item& pick(const std::vector<Item>& items) {
    return items[static_cast<std::size_t>(random_.between(0, static_cast<long long>(items.size()) - 1))];
  }

  std::vector<AttributeDefinition> attributes(int one_of) {
    std::vector<AttributeDefinition> result;
    for (const std::string& name : kNames) {
      if (random_.one_in(one_of)) result.push_back({name, pick(kTypes), "", kHere});
    }
    return result;
  }

  MessageText text() {
    std::string stored;
    for (long long i = random_.between(0, 3); i > 0; --i) {
      stored +=
          "t" + std::to_string(random_.between(0, 99)) + (random_.one_in(2) ? " %d%" : " %s%") + pick(kNames) + "%";
    }
    return {stored, true, stored, kHere};
  }

  std::string id(std::uint32_t number) { return random_.one_in(4) ? "" : "id" + std::to_string(number); }

  EntryDefinition entry(std::uint32_t number) {
    EntryDefinition result;
    result.id = number;
    result.position = kHere;
    result.mask = static_cast<std::uint32_t>(random_.between(0, 3));
    result.word = static_cast<std::uint32_t>(random_.between(0, 3));
    result.message_id = id(number);
    result.message = text();
    result.attributes = attributes(4);
    if (!random_.one_in(3)) result.selector.attribute = pick(kNames);
    for (std::uint32_t index = 0; index < 5; ++index) {
      if (random_.one_in(4)) result.selector.messages.push_back({index, index + 1, id(index), text(), kHere, kHere});
    }
    return result;
  }

  qz_test::SeededRandom& random_;
};

/// Leaves out what the library would refuse.
void keep_what_extends(DefinitionModel& aux, const DefinitionModel& standard) {
  const ModelIndex index(standard);
  std::erase_if(aux.entries, [&](const EntryDefinition& entry) {
    Findings diagnostics("f");
    check_aux_merge({"", {}, {entry}}, index, "", diagnostics);
    return diagnostics.has_errors();
  });
}

/// Notes each attribute that an entry holds.
class Notes : public qz_LOG_AttributeVisitor {
 public:
  explicit Notes(std::ostream& out) : out_(out) {}

  void VisitBool(const char* name, qz_AttributeType type, bool value) override { note(name, type, value); }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned value) override { note(name, type, value); }
  void VisitSigned(const char* name, qz_AttributeType type, int value) override { note(name, type, value); }
  void VisitFloat(const char* name, qz_AttributeType type, double value) override { note(name, type, value); }
  void VisitText(const char* name, qz_AttributeType type, const char* value, unsigned) override {
    note(name, type, value);
  }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time&) override { note(name, type, "time"); }

 private:
  template <typename Value>
  void note(const char* name, qz_AttributeType type, const Value& value) {
    out_ << ' ' << name << ':' << type << '=' << value;
  }

  std::ostream& out_;
};

/// What a call gives or throws, as text.
void note(std::ostream& out, const std::function<std::string()>& call) {
  try {
    out << ' ' << call();
  } catch (const qz_EXCEPTION_base& error) {
    out << " (" << (error.get_message() == nullptr ? "" : error.get_message()) << ')';
  }
}

void fill(qz_LOG_LogEntry& entry, std::uint32_t number, std::ostream& out) {
  const auto add = [&](auto&& call) {
    note(out, [&] {
      call();
      return std::string("added");
    });
  };
  for (const std::string& name : kNames) {
    const char* const key = name.c_str();
    add([&] { entry.AddAttrib1u(key, static_cast<unsigned char>(number)); });
    add([&] { entry.AddAttrib2u(key, static_cast<unsigned short>(number)); });
    add([&] { entry.AddAttrib4u(key, number); });
    add([&] { entry.AddAttrib4(key, -7); });
    add([&] { entry.AddAttribBool(key, true); });
    add([&] { entry.AddAttribStr(key, "txt"); });
  }
}

void describe(std::uint32_t id, std::ostream& out) {
  for (std::uint32_t number = 0; number < 7; ++number) {
    qz_LOG_LogEntry entry(id, 1);
    out << " mask " << entry.GetPropertyMask();
    if (number != 6) fill(entry, number, out);  // the last one stays empty
    Notes notes(out);
    entry.VisitAttributes(notes);
    note(out, [&] { return entry.FormatMessage(true); });
    for (unsigned index = 0; index < 7; ++index) {
      note(out, [&] { return entry.FormatMessage(false, index); });
    }
    out << '\n';
  }
}

/// Everything that callers can see of the definitions that are loaded.
std::string describe_all(bool icu) {
  qz_LOG_LogConfig::SetICUEnabled(icu);
  std::ostringstream out;
  for (std::uint32_t id = 1; id <= kIds; ++id) {
    out << "entry " << id;
    note(out, [&] {
      describe(id, out);
      return std::string();
    });
    out << '\n';
  }
  qz_LOG_LogConfig::SetICUEnabled(true);
  return out.str();
}

TEST(MergeModelsAtRandom, OneFile_ServesCallersLikeTheTwo) {
  const qz_test::TempDir folder;
  qz_test::SeededRandom random;
  ModelMaker maker(random);
  int extended = 0;
  for (int round = 0; round < qz_test::rounds(64); ++round) {
    const DefinitionModel standard = maker.make("1.0");
    DefinitionModel aux = maker.make("1.0");
    keep_what_extends(aux, standard);
    extended += static_cast<int>(std::count_if(aux.entries.begin(), aux.entries.end(), [&](const auto& entry) {
      return ModelIndex(standard).find_entry(entry.id) != nullptr;
    }));
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetDefinitionPath(folder.write("std.ldf", write_ldf(standard)).c_str());
    qz_LOG_LogConfig::SetAuxDefinitionPath(folder.write("aux.ldf", write_ldf(aux)).c_str());
    const std::string two_icu = describe_all(true);
    const std::string two_narrow = describe_all(false);
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetDefinitionPath(folder.write("all.ldf", write_ldf(merge_models(standard, aux))).c_str());
    ASSERT_EQ(describe_all(true), two_icu) << "round " << round;
    ASSERT_EQ(describe_all(false), two_narrow) << "round " << round;
  }
  EXPECT_GT(extended, qz_test::rounds(15));
  qz_LOG_LogConfig::ClearDefinitions();
}

}  // namespace
}  // namespace qzlog_compiler
