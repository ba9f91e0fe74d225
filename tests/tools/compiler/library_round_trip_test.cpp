/// Random models, compiled and loaded by the library: it has to know the definitions that the author wrote, and to show
/// every message as written wherever the compiler had nothing to say against it.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_locale.h"
#include "tests/support/rounds.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_test.h"
#include "tests/tools/compiler/model_text.h"
#include "tests/tools/compiler/random_model.h"
#include "tests/tools/compiler/source_fixture.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

using random_model::MessagePieces;
using random_model::RandomModel;

constexpr const char* kText = "v'1{0}%s%A%''";  // all that means something in a template or a pattern

void set_attribute(qz_LOG_LogEntry& entry, const AttributeDefinition& attribute) {
  const char* const name = attribute.name.c_str();
  switch (attribute.type) {
    case TypeBool:
      return entry.AddAttribBool(name, true);
    case TypeUInt1:
      return entry.AddAttrib1u(name, 201);
    case TypeSInt1:
      return entry.AddAttrib1(name, -7);
    case TypeUInt2:
      return entry.AddAttrib2u(name, 54321);
    case TypeSInt2:
      return entry.AddAttrib2(name, -4321);
    case TypeUInt4:
      return entry.AddAttrib4u(name, 1234567);
    case TypeSInt4:
      return entry.AddAttrib4(name, -7654321);
    case TypeFloat:
      return entry.AddAttribFloat8(name, 1234.5);
    case TypeDate:
    case TypeTime:
    case TypeTimestamp:
      return entry.AddAttribTime(name, qz_Time());
    case TypeGUID:
      return;  // cannot be set
    default:
      break;
  }
  if (attribute.type >= TypeMBChar32) return entry.AddAttribMBStr(name, kText);
  entry.AddAttribStr(name, kText);
}

/// An entry with every attribute of its definition, and the time 0.
qz_LOG_LogEntry full_entry(const DefinitionModel& model, const EntryDefinition& definition) {
  qz_LOG_LogEntry entry(definition.id, 3);
  entry.ClearAttribs();
  for (const AttributeDefinition& attribute : definition.attributes) set_attribute(entry, attribute);
  for (const AttributeDefinition& global : model.globals) set_attribute(entry, global);
  return entry;
}

using NamesAndTypes = std::vector<std::pair<std::string, qz_AttributeType>>;

class AttributeLister : public qz_LOG_AttributeVisitor {
 public:
  NamesAndTypes listed;

 private:
  void VisitBool(const char* name, qz_AttributeType type, bool) override { listed.emplace_back(name, type); }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned) override { listed.emplace_back(name, type); }
  void VisitSigned(const char* name, qz_AttributeType type, int) override { listed.emplace_back(name, type); }
  void VisitFloat(const char* name, qz_AttributeType type, double) override { listed.emplace_back(name, type); }
  void VisitText(const char* name, qz_AttributeType type, const char*, unsigned) override {
    listed.emplace_back(name, type);
  }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time&) override { listed.emplace_back(name, type); }
};

NamesAndTypes attributes_that_can_be_set(const DefinitionModel& model, const EntryDefinition& entry) {
  NamesAndTypes result;
  for (const auto* const list : {&entry.attributes, &model.globals}) {
    for (const AttributeDefinition& attribute : *list) {
      if (attribute.type != TypeGUID) result.emplace_back(attribute.name, attribute.type);
    }
  }
  return result;
}

class LibraryRoundTrip : public qz_test::SettingsTest {
 protected:
  LibraryRoundTrip() {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    qz_Locale german = QZ_LOCALE_PROCESS;
    EXPECT_TRUE(qz_I18N_find_locale("de_DE", german));
    qz_LOG_LogConfig::SetLocale(german);
  }

  CompileResult compile(const std::string& source) const {
    CompileOptions options;
    options.path = path_;
    return compile_source(source, "random.yaml", options);
  }

  void load(const std::string& bytes) const {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("random.ldf", bytes).c_str());
  }

  void use_path(RenderingPaths path) {
    path_ = path;
    show_through(path);
  }

  /// Rendering goes through ICU or not; what references then show is asked of the library, one by one.
  void show_through(RenderingPaths path) {
    qz_LOG_LogConfig::SetICUEnabled(path == RenderingPaths::kIcu);
    values_.clear();
    std::string source = "version: '1.0'\nentries:\n";
    for (int type = TypeBool; type < TypeGUID; ++type) add_probes(static_cast<qz_AttributeType>(type), "A", source);
    add_probes(TypeTimestamp, "TIMESTAMP", source);
    const CompileResult probes = compile(source);
    ASSERT_TRUE(probes.ok()) << printed(probes.diagnostics);
    load(probes.bytes);
    for (const EntryDefinition& probe : probes.model.entries) {
      values_[probe.summary] = full_entry(probes.model, probe).FormatMessage();
    }
  }

  std::string value(qz_AttributeType type, const std::string& name, char format) const {
    const std::string_view formats = default_formats(type);
    if (format == '\0' && formats == "DT") return value(type, name, 'D') + ' ' + value(type, name, 'T');
    return values_.at(probe_key(type, name, format == '\0' ? formats.front() : format));
  }

  std::string expected(const DefinitionModel& model, const EntryDefinition& entry, const MessagePieces& pieces) const {
    return random_model::shown(pieces, [&](const std::string& name, char format) {
      for (const random_model::Referable& referable : random_model::referables(model, entry)) {
        if (referable.name == name) return value(referable.type, name, format);
      }
      return std::string("nothing is called " + name);
    });
  }

  RenderingPaths path_ = RenderingPaths::kIcu;

 private:
  qz_test::CLocale locale_{"C.UTF-8"};  // ICU reads templates in the character set of the process

  /// All values of a type are the same, whatever the attribute is called; only the entry's own time differs.
  static std::string probe_key(qz_AttributeType type, const std::string& name, char format) {
    return (name == "TIMESTAMP" ? name : std::string(short_type_name(type))) + ":" + format;
  }

  static void add_probes(qz_AttributeType type, const std::string& name, std::string& source) {
    static int number = 0;
    for (const char format : accepted_formats(type)) {
      const std::string id = std::to_string(++number);
      source += "  - {id: " + id + ", name: P" + id + ", summary: '" + probe_key(type, name, format) + "', raw: '%";
      source += format + ("%" + name + "%'");
      if (name != "TIMESTAMP") source += ", attributes: [{name: A, type: " + std::string(short_type_name(type)) + "}]";
      source += "}\n";
    }
  }

  std::map<std::string, std::string> values_;
};

/// The entries that a diagnostic is about: those with a message on its line.
std::set<std::uint32_t> diagnosed_entries(const CompileResult& result) {
  std::set<std::uint64_t> lines;
  for (const Finding& diagnostic : result.diagnostics) lines.insert(diagnostic.place.line);
  std::set<std::uint32_t> ids;
  for (const EntryDefinition& entry : result.model.entries) {
    if (lines.count(entry.message.position.line) != 0) ids.insert(entry.id);
    for (const SelectorMessage& message : entry.selector.messages) {
      if (lines.count(message.message.position.line) != 0) ids.insert(entry.id);
    }
  }
  return ids;
}

TEST_F(LibraryRoundTrip, RandomModel_AfterYamlAndCompiledFile_IsTheSame) {
  qz_test::SeededRandom random;
  for (int i = 0; i < qz_test::rounds(50) && !HasFailure(); ++i) {
    RandomModel made = random_model::make_model(random);
    const CompileResult result = compile_source(random_model::to_yaml(made.model, random), "random.yaml", {});
    ASSERT_TRUE(result.ok()) << printed(result.diagnostics);
    ASSERT_EQ(result.model.entries.size(), made.model.entries.size());
    for (std::size_t k = 0; k < made.model.entries.size(); ++k) {
      EntryDefinition& entry = made.model.entries[k];
      const EntryDefinition& compiled = result.model.entries[k];
      EXPECT_EQ(compiled.message.written, entry.message.written);
      EXPECT_EQ(compiled.summary, entry.summary);
      EXPECT_EQ(compiled.name, entry.name);
      entry.message.stored = compiled.message.stored;
      for (std::size_t m = 0; m < entry.selector.messages.size(); ++m) {
        EXPECT_EQ(compiled.selector.messages.at(m).message.written, entry.selector.messages[m].message.written);
        entry.selector.messages[m].message.stored = compiled.selector.messages[m].message.stored;
      }
    }
    EXPECT_EQ(model_text(result.model), model_text(made.model));
    std::sort(made.model.entries.begin(), made.model.entries.end(),
              [](const EntryDefinition& one, const EntryDefinition& other) { return one.id < other.id; });
    const LdfFile file = read_ldf(result.bytes);
    EXPECT_FALSE(file.damage);
    EXPECT_EQ(model_text(file.model), model_text(made.model));
  }
}

TEST_F(LibraryRoundTrip, RandomModel_Loaded_HasTheSameAttributesAndMasks) {
  qz_test::SeededRandom random;
  for (int i = 0; i < qz_test::rounds(20) && !HasFailure(); ++i) {
    const RandomModel made = random_model::make_model(random);
    const CompileResult result = compile_source(random_model::to_yaml(made.model, random), "random.yaml", {});
    ASSERT_TRUE(result.ok()) << printed(result.diagnostics);
    load(result.bytes);
    for (const EntryDefinition& definition : made.model.entries) {
      const qz_LOG_LogEntry entry = full_entry(made.model, definition);
      AttributeLister lister;
      entry.VisitAttributes(lister);
      EXPECT_EQ(lister.listed, attributes_that_can_be_set(made.model, definition));
      EXPECT_EQ(entry.GetPropertyMask(), definition.mask);
      unsigned major = 0;
      unsigned minor = 0;
      qz_LOG_LogEntry::GetLogVersion(major, minor);
      EXPECT_EQ(std::to_string(major) + "." + std::to_string(minor), made.model.version);
    }
  }
}

/// Renders every message of a model without findings, by index and by the value that selects it.
class MessageChecker {
 public:
  using Expected = std::function<std::string(const EntryDefinition&, const MessagePieces&)>;

  MessageChecker(const RandomModel& made, Expected expected) : made_(made), expected_(std::move(expected)) {}

  int checked() const { return checked_; }

  void check(const EntryDefinition& definition) {
    const qz_LOG_LogEntry entry = full_entry(made_.model, definition);
    expect(definition, 0, entry.FormatMessage(true));
    for (const SelectorMessage& message : definition.selector.messages) {
      expect(definition, message.index, entry.FormatMessage(false, message.index));
      expect_selected(definition, message);
    }
  }

 private:
  void expect(const EntryDefinition& definition, std::uint32_t index, const std::string& shown) {
    const auto pieces = made_.messages.find({definition.id, index});
    if (pieces == made_.messages.end()) return;  // a raw template
    ++checked_;
    EXPECT_EQ(shown, expected_(definition, pieces->second)) << random_model::written(pieces->second);
  }

  void expect_selected(const EntryDefinition& definition, const SelectorMessage& message) {
    qz_LOG_LogEntry entry = full_entry(made_.model, definition);
    const char* const name = definition.selector.attribute.c_str();
    switch (selector_attribute(definition)->type) {
      case TypeUInt1:
        entry.AddAttrib1u(name, static_cast<unsigned char>(message.value));
        break;
      case TypeUInt2:
        entry.AddAttrib2u(name, static_cast<unsigned short>(message.value));
        break;
      default:
        entry.AddAttrib4u(name, message.value);
        break;
    }
    EXPECT_EQ(entry.FormatMessage(), entry.FormatMessage(false, message.index));
  }

  const RandomModel& made_;
  Expected expected_;
  int checked_ = 0;
};

TEST_F(LibraryRoundTrip, RandomModel_OnEachPath_ShowsEveryMessageAsWritten) {
  qz_test::SeededRandom random;
  random_model::ModelOptions options;
  options.messages = random_model::MessageKind::kEverywhere;
  for (const RenderingPaths path : {RenderingPaths::kIcu, RenderingPaths::kNarrow}) {
    use_path(path);
    int checked = 0;
    for (int i = 0; i < qz_test::rounds(20) && !HasFailure(); ++i) {
      const RandomModel made = random_model::make_model(random, options);
      const CompileResult result = compile(random_model::to_yaml(made.model, random));
      ASSERT_TRUE(result.ok()) << printed(result.diagnostics);
      load(result.bytes);
      MessageChecker checker(made, [&](const EntryDefinition& entry, const MessagePieces& pieces) {
        return expected(made.model, entry, pieces);
      });
      const std::set<std::uint32_t> diagnosed = diagnosed_entries(result);
      for (const EntryDefinition& definition : made.model.entries) {
        if (diagnosed.count(definition.id) == 0) checker.check(definition);
      }
      checked += checker.checked();
    }
    EXPECT_GT(checked, qz_test::rounds(50)) << "too few messages are without findings";
  }
}

/// What a model is without the entries that the compiler refuses.
RandomModel without(const RandomModel& made, const std::set<std::uint32_t>& ids) {
  RandomModel result = made;
  std::erase_if(result.model.entries, [&](const EntryDefinition& entry) { return ids.count(entry.id) != 0; });
  return result;
}

/// For `--path both` a warning means that one of the paths shows another text; without one, both show it.
TEST_F(LibraryRoundTrip, AnyText_WithoutAWarning_SurvivesOnThePathsAskedFor) {
  qz_test::SeededRandom random;
  random_model::ModelOptions options;
  options.entries = 5000;
  options.messages = random_model::MessageKind::kAnything;
  options.raw_templates = false;
  const RandomModel anything = random_model::make_model(random, options);
  const std::string source = random_model::to_yaml(anything.model, random);
  for (const auto& [asked, shown] : {std::pair(RenderingPaths::kIcu, RenderingPaths::kIcu),
                                     std::pair(RenderingPaths::kNarrow, RenderingPaths::kNarrow),
                                     std::pair(RenderingPaths::kBoth, RenderingPaths::kIcu),
                                     std::pair(RenderingPaths::kBoth, RenderingPaths::kNarrow)}) {
    path_ = asked;
    const RandomModel made = without(anything, diagnosed_entries(compile(source)));
    show_through(shown);
    const CompileResult result = compile(random_model::to_yaml(made.model, random));
    ASSERT_TRUE(result.ok()) << printed(result.diagnostics);
    load(result.bytes);
    MessageChecker checker(made, [&](const EntryDefinition& entry, const MessagePieces& pieces) {
      return expected(made.model, entry, pieces);
    });
    for (const EntryDefinition& definition : made.model.entries) checker.check(definition);
    EXPECT_GT(checker.checked(), qz_test::rounds(200)) << "too few texts are without findings";
  }
}

}  // namespace
}  // namespace qzlog_compiler
