#ifndef QZLOG_TESTS_SHIP_OTLP_RECEIVED_LINES_H
#define QZLOG_TESTS_SHIP_OTLP_RECEIVED_LINES_H

#include <map>
#include <string>

namespace qzlog_test {

using Lines = std::map<std::string, std::string>;  // by identity

/// The lines that the records of a request have, as the receiver got it.
void add_lines_of_json(const std::string& body, Lines& lines);
void add_lines_of_protobuf(const std::string& body, Lines& lines);

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_SHIP_OTLP_RECEIVED_LINES_H
