#include "tools/compiler/model/model_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/compiler/example_model.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

nlohmann::ordered_json parsed(const std::string& text) { return nlohmann::ordered_json::parse(text); }

TEST(ModelJson, CompiledSource_HasEveryDefaultFilledInAndItsLines) {
  const CompileResult result = compile_source(
      "version: 1.0\n"
      "globals: [{name: HOST, type: TypeMBChar64}]\n"
      "entries:\n"
      "  - id: 7\n"
      "    name: FULL\n"
      "    message: 'on {HOST}!'\n",
      "f", {});
  EXPECT_EQ(json_text(to_json(result.model)), R"({
  "version": "1.0",
  "globals": [
    {
      "name": "HOST",
      "type": "MBChar64",
      "redirect": "",
      "sensitive": "keep",
      "line": 2
    }
  ],
  "entries": [
    {
      "id": 7,
      "name": "FULL",
      "summary": "",
      "mask": 1,
      "word": 0,
      "message_id": "FULL",
      "message": {
        "text": "on {HOST}!",
        "raw": false,
        "template": "on %s%HOST%!%_%TIMESTAMP%",
        "line": 6
      },
      "attributes": [],
      "selector": null,
      "line": 4
    }
  ]
}
)");
}

TEST(ModelJson, ModelWithoutASource_HasNoLines) {
  const nlohmann::ordered_json json = to_json(example_model());
  EXPECT_EQ(json["entries"][1], parsed(R"({
    "id": 7, "name": "", "summary": "", "mask": 5, "word": 9, "message_id": "m",
    "message": {"text": "", "raw": false, "template": "%d%R%"},
    "attributes": [{"name": "R", "type": "UInt2", "redirect": "r", "sensitive": "keep"}],
    "selector": {"attribute": "R", "messages": [
      {"index": 1, "value": 16, "message_id": "s", "message": {"text": "", "raw": false, "template": "é"}}]}})"));
}

TEST(ModelJson, SelectorMessagesWithoutAttribute_AreASelector) {
  DefinitionModel model = example_model();
  model.entries[1].selector.attribute.clear();
  const nlohmann::ordered_json selector = to_json(model)["entries"][1]["selector"];
  EXPECT_EQ(selector["attribute"], "");
  EXPECT_EQ(selector["messages"].size(), 1U);
}

TEST(ModelJson, TypeCodeWithoutAName_IsShownAsItsNumber) {
  DefinitionModel model;
  model.globals = {{"G", static_cast<qz_AttributeType>(200), "", {}}};
  EXPECT_EQ(to_json(model)["globals"],
            parsed(R"([{"name": "G", "type": "Unknown", "type_code": 200, "redirect": "", "sensitive": "keep"}])"));
}

TEST(ModelJson, BytesThatAreNotUtf8_AreReplaced) {
  DefinitionModel model;
  model.version =
      "1\xFF"
      "2\xC3";
  EXPECT_EQ(parsed(json_text(to_json(model)))["version"], "1\uFFFD2\uFFFD");
}

TEST(ModelJson, ControlCharactersAndQuotes_AreEscaped) {
  DefinitionModel model;
  model.version = "\"\n\x01\\";
  const std::string text = json_text(to_json(model));
  EXPECT_NE(text.find(R"("\"\n\u0001\\")"), std::string::npos) << text;
}

}  // namespace
}  // namespace qzlog_compiler
