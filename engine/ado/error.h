// The one exception type of this layer: the provider's number and a description for a person.
//
//   try {
//       recordset.open(statement, connection);
//   } catch (const ado::Error& error) {
//       if (error.number() == ado::kErrorNoSuchTable) upgrade();
//   }
//
// Any thread; an error is a plain value.
#pragma once

#include "engine/jet/error.h"
#include "engine/sql/values/error.h"

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace ado {

class Error : public std::runtime_error {
public:
    Error(std::int32_t number, const std::string& description)
        : std::runtime_error{description}, number_{number} {}

    /// One of the numbers in constants.h.
    std::int32_t number() const { return number_; }

    /// The same as what(), as UTF-16.
    std::u16string description() const;

private:
    std::int32_t number_;
};

/// A failure to read or change the database at `path`. The description is the customary sentence
/// for the number, followed by the engine's own reason.
Error toError(const jet::Error& error, const std::filesystem::path& path);

/// A failure of a statement.
Error toError(const sql::Error& error);

[[noreturn]] void throwInvalidArgument(const std::string& what);
[[noreturn]] void throwNoCurrentRecord();
[[noreturn]] void throwItemNotFound(std::u16string_view name);
[[noreturn]] void throwClosed();
[[noreturn]] void throwOpen();
[[noreturn]] void throwCancelled();

/// Runs `action` and translates exceptions of the layers below to Error.
template <typename Action>
decltype(auto) translated(const std::filesystem::path& path, Action action) {
    try {
        return action();
    } catch (const jet::Error& error) {
        throw toError(error, path);
    } catch (const sql::Error& error) {
        throw toError(error);
    }
}

}  // namespace ado
