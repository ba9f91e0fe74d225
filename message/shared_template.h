#ifndef QZLOG_MESSAGE_SHARED_TEMPLATE_H
#define QZLOG_MESSAGE_SHARED_TEMPLATE_H

#include <memory>
#include <string_view>

#include "definitions/ldf_def.h"
#include "definitions/prepared_texts.h"

namespace qzlog {

/// The template of a text for a definition: one that was made of the same content before, if it looks for attributes
/// where this definition has them, else what `make` makes, as a std::unique_ptr<const Template>.
template <typename Template, typename Make>
PreparedMessageRef share_template(MessagePath path, std::string_view content, const _qz_LOG_log_definition& definition,
                                  Make&& make) {
  PreparedMessageRef known = PreparedTexts::find(path, content);
  if (known && static_cast<const Template*>(known.get())->pieces().fits(definition)) return known;
  PreparedMessageRef fresh(std::unique_ptr<const Template>(make()).release());
  if (!known) PreparedTexts::keep(path, content, *fresh.get());
  return fresh;
}

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_SHARED_TEMPLATE_H
