#ifndef QZLOG_TESTS_TOOLS_COMPILER_EXAMPLE_MODEL_H
#define QZLOG_TESTS_TOOLS_COMPILER_EXAMPLE_MODEL_H

#include <string>
#include <string_view>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

using namespace std::string_view_literals;

/// A model with something in every field of the compiled file, its entries not in the order of their IDs.
inline DefinitionModel example_model() {
  DefinitionModel model;
  model.version = "2.5";
  model.globals = {{"HOST", TypeMBChar64, "", {}}};
  EntryDefinition plain;
  plain.id = 0x01020304;
  EntryDefinition full;
  full.id = 7;
  full.word = 9;
  full.mask = 5;
  full.message_id = "m";
  full.message.stored = "%d%R%";
  full.attributes = {{"R", TypeUInt2, "r", {}}};
  full.selector.attribute = "R";
  full.selector.messages.resize(1);
  full.selector.messages[0].index = 1;
  full.selector.messages[0].value = 0x10;
  full.selector.messages[0].id = "s";
  full.selector.messages[0].message.stored = "é";
  model.entries = {plain, full};
  return model;
}

/// Its compiled file, byte for byte.
inline std::string example_bytes() {
  const std::string_view header =
      ".LDF\0\0\0\0"
      "\0\0\0\0\0\0\0\0"
      "2.5\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
      "\0\0\0\x01\0\0\0\x80"
      "\0\0\0\x02\0\0\0\0"
      "\0\0\0\x91"sv;
  const std::string_view regions =
      // 0x80: one global attribute
      "\0\0\0\x05HOST\0"
      "\0\0\0\x10"
      "\0\0\0\0"
      // 0x91: two pairs, by ID
      "\0\0\0\x07\0\0\0\xA1"
      "\x01\x02\x03\x04\0\0\0\xF0"
      // 0xA1: entry 7
      "\0\0\0\x07\0\0\0\x09\0\0\0\x05"
      "\0\0\0\x02m\0"
      "\0\0\0\x06%d%R%\0"
      "\0\0\0\x02R\0"
      "\0\0\0\x01"
      "\0\0\0\x02R\0\0\0\0\x04\0\0\0\x02r\0"
      "\0\0\0\x01"
      "\0\0\0\x01\0\0\0\x10"
      "\0\0\0\x02s\0"
      "\0\0\0\x03\xC3\xA9\0"
      // 0xF0: entry 0x01020304, with nothing in it
      "\x01\x02\x03\x04\0\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\0\0\0\0"
      "\0\0\0\0"
      "\0\0\0\0"sv;
  std::string bytes(header);
  bytes.resize(128, '\0');
  return bytes.append(regions);
}

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_COMPILER_EXAMPLE_MODEL_H
