#ifndef QZLOG_TOOLS_CATALOG_PO_COMPARISON_H
#define QZLOG_TOOLS_CATALOG_PO_COMPARISON_H

#include "tools/catalog/po_file.h"

namespace qzlog_catalog {

/// Whether one is what libgettextpo makes of the other by writing and reading it: the same messages in the same order,
/// but comments may have lost blanks, and references too, for a file name with a blank is read as two names.
bool say_the_same(const PoFile& a, const PoFile& b);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_PO_COMPARISON_H
