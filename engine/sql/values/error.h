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
    UnknownColumn,  ///< a name stands for no column, so it is a parameter without a value
    TypeMismatch,   ///< an operator or comparison does not go with its operands
    Conversion,     ///< a value cannot become one of its column: too large, too long, no number
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
