#include "tools/shown/presentation.h"

namespace qzlog_tool {

Presentation::~Presentation() = default;

void Presentation::append_heading(std::string& /*out*/) {}

}  // namespace qzlog_tool
