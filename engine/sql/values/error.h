// Failures of a statement, beside those of the file (jet::Error).
//
//   try {
//       sql::execute(*database, text);
//   } catch (const sql::Error& error) {
//       report(error.fault(), error.what());
//   }
//
// Any thread; an error is a plain value.
#pragma once

#include <stdexcept>
#include <string>

namespace sql {

enum class Fault {
    Syntax,         ///< the text is not a statement of the dialect
    NoSuchTable,    ///< a table or query of that name does not exist
    UnknownColumn,  ///< a name is not a column, so it is a parameter without a value
    TypeMismatch,   ///< an operator or comparison does not accept its operands
    Conversion,     ///< a value does not fit its column: too large, too long, not a number
};

/// what() is one UTF-8 sentence for a person.
class Error : public std::runtime_error {
public:
    Error(Fault fault, const std::string& message) : std::runtime_error{message}, fault_{fault} {}

    Fault fault() const { return fault_; }

private:
    Fault fault_;
};

}  // namespace sql
