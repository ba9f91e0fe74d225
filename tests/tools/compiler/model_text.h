#ifndef QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H
#define QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H

#include <string>

#include "tools/compiler/definition_model.h"

/// What a compiled file can hold of a model, as lines of text: two models with the same text have the same records.
std::string model_text(const qzlog_compiler::DefinitionModel& model);

#endif  // QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H
