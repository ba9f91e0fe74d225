// Whoever is asked about a template, and whatever the command is that asks: the answer is what the library does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/catalog/source_messages.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

struct AgreementCase {
  const char* name;
  const char* stored;  ///< refers to Name once, as text
  bool renders;
};

class TemplateAgreement : public qzlog_test::CommandFixture, public testing::WithParamInterface<AgreementCase> {
 protected:
  TemplateAgreement() {
    write_source("std.yaml", GetParam().stored);
    write_source("good.yaml", kGood);
    write("entries.jsonl", "{\"id\":1,\"attributes\":{\"Name\":\"vol1\"}}\n");
    write("de.po", qzlog_catalog::po_header("de") + qzlog_catalog::po_message("DISK", kGood, GetParam().stored));
    EXPECT_EQ(run("$QZLOG compile std.yaml -o std.ldf --path icu").status, 0);
  }

  void write_source(const std::string& name, const std::string& stored) const {
    write(name, "version: \"1.0\"\nentries:\n  - {id: 1, name: DISK, raw: " + qzlog_catalog::yaml_text(stored) +
                    ", attributes: [{name: Name, type: Char32}]}\n");
  }
  static bool says(const CommandResult& result, const std::string& text) {
    return (result.out + result.err).find(text) != std::string::npos;
  }

  static constexpr const char* kGood = "Disk %s%Name% is full%_%TIMESTAMP%";
};

TEST_P(TemplateAgreement, TheLibrary) {
  EXPECT_EQ(run("$QZLOG render --definitions std.ldf entries.jsonl").status == 0, GetParam().renders);
}

TEST_P(TemplateAgreement, Compile) {
  EXPECT_EQ(says(run("$QZLOG compile std.yaml -o out.ldf --path icu"), "[broken-template]"), !GetParam().renders);
}

TEST_P(TemplateAgreement, Check) {
  EXPECT_EQ(run("$QZLOG check std.ldf --path icu").status, GetParam().renders ? 0 : 1);
}

TEST_P(TemplateAgreement, Explain) {
  EXPECT_EQ(says(run("$QZLOG explain 1 --definitions std.ldf --json"), "\"failure\""), !GetParam().renders);
}

TEST_P(TemplateAgreement, CatalogBuild) {
  const CommandResult result = run("$QZLOG catalog build good.yaml --po de.po -o messages");
  EXPECT_EQ(result.status, GetParam().renders ? 0 : 1) << result.err;
}

TEST_P(TemplateAgreement, CatalogStatus) {
  const CommandResult result = run("$QZLOG catalog status good.yaml --po de.po");
  EXPECT_EQ(says(result, "error: "), !GetParam().renders) << result.err;
}

INSTANTIATE_TEST_SUITE_P(
    Templates, TemplateAgreement,
    testing::Values(AgreementCase{"Plain", "Laufwerk %s%Name% ist voll%_%TIMESTAMP%", true},
                    AgreementCase{"NumberOfAText", "Laufwerk %s%Name% {0,number}%_%TIMESTAMP%", false},
                    AgreementCase{"ChoiceOfAText", "Laufwerk %s%Name% {0,choice,0#a|1#b}%_%TIMESTAMP%", false},
                    AgreementCase{"SelectOfAText", "Laufwerk %s%Name% {0,select,a{b}other{c}}%_%TIMESTAMP%", true},
                    AgreementCase{"NamedNumberOfAText", "Laufwerk {x,number} %s%Name%", false},
                    AgreementCase{"Named", "Laufwerk {x} %s%Name%", true},
                    AgreementCase{"ArgumentThatNobodyGives", "Laufwerk {7} %s%Name%", true},
                    AgreementCase{"UnknownArgumentType", "Laufwerk {0,nonsense} %s%Name%", false},
                    AgreementCase{"BadNumberStyle", "Laufwerk {0,number,0.0.0} %s%Name%", false},
                    AgreementCase{"OpenBrace", "Laufwerk { %s%Name%", false},
                    AgreementCase{"Nested", "{0,select,other{%s%Name%}}%_%TIMESTAMP%", true}),
    [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
