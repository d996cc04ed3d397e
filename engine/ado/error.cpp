#include "engine/ado/error.h"

#include "engine/ado/constants.h"
#include "engine/jet/text.h"

namespace ado {
namespace {

std::string toUtf8(const std::filesystem::path& path) {
    try {
        return jet::toUtf8(path.u16string());
    } catch (const std::exception&) {
        return path.string();  // bytes that are no text, as a POSIX file may be called
    }
}

std::string sentence(jet::Fault fault, const std::string& path) {
    switch (fault) {
        case jet::Fault::FileNotFound:
            return "Could not find file '" + path + "'.";
        case jet::Fault::AccessDenied:
            return "Could not open file '" + path + "': permission denied.";
        case jet::Fault::InUse:
            return "Could not use '" + path + "'; file already in use.";
        case jet::Fault::ReadFailed:
            return "Disk or network error.";
        case jet::Fault::NotADatabase:
        case jet::Fault::OlderFormat:
        case jet::Fault::NewerFormat:
        case jet::Fault::Encrypted:
            return "Unrecognized database format '" + path + "'.";
        case jet::Fault::PasswordProtected:
            return "Not a valid password.";
        case jet::Fault::Truncated:
        case jet::Fault::Damaged:
            return "The database '" + path + "' is damaged.";
        case jet::Fault::ReadOnly:
        case jet::Fault::JournalInTheWay:
        case jet::Fault::DamagedFile:
            return "Cannot update. Database or object is read-only.";
        case jet::Fault::WriteFailed:
            return "Could not write to '" + path + "': disk or network error.";
        case jet::Fault::DiskFull:
            return "Could not write to '" + path + "': there is not enough space on the disk.";
        case jet::Fault::FileFull:
            return "The database '" + path + "' cannot become larger.";
        default:
            return {};  // failures of a statement, which the reason describes
    }
}

std::int32_t numberOf(jet::Fault fault) {
    switch (fault) {
        case jet::Fault::NoSuchTable:
            return kErrorNoSuchTable;
        case jet::Fault::NoSuchColumn:
            return kErrorParameter;
        case jet::Fault::AlreadyExists:
            return kErrorAlreadyExists;
        case jet::Fault::ReadOnly:
        case jet::Fault::JournalInTheWay:
        case jet::Fault::DamagedFile:
            return kErrorReadOnly;
        case jet::Fault::TableExists:
        case jet::Fault::TooMany:
        case jet::Fault::ValueTooLarge:
        case jet::Fault::WrongType:
        case jet::Fault::DuplicateKey:
        case jet::Fault::NullKey:
        case jet::Fault::IndexNotWritable:
            return kErrorStatement;
        default:
            return kErrorFile;
    }
}

std::string joined(const std::string& first, const std::string& reason) {
    if (first.empty() || reason.empty()) return first + reason;
    return first + " " + reason;
}

}  // namespace

std::u16string Error::description() const { return jet::toUtf16(what()); }

Error toError(const jet::Error& error, const std::filesystem::path& path) {
    return {numberOf(error.fault()), joined(sentence(error.fault(), toUtf8(path)), error.what())};
}

Error toError(const sql::Error& error) {
    switch (error.fault()) {
        case sql::Fault::NoSuchTable:
            return {kErrorNoSuchTable, error.what()};
        case sql::Fault::UnknownColumn:
            return {kErrorParameter,
                    joined("No value given for one or more required parameters.", error.what())};
        default:
            return {kErrorStatement, error.what()};
    }
}

void throwInvalidArgument(const std::string& what) {
    throw Error{adErrInvalidArgument, "An argument is of the wrong kind or out of range: " + what};
}

void throwNoCurrentRecord() {
    throw Error{adErrNoCurrentRecord,
                "There is no current record: the position is before the "
                "first or behind the last one."};
}

void throwItemNotFound(std::u16string_view name) {
    throw Error{adErrItemNotFound,
                "The collection has no item of the name or number '" + jet::toUtf8(name) + "'."};
}

void throwClosed() {
    throw Error{adErrObjectClosed, "The operation is not allowed when the object is closed."};
}

void throwOpen() {
    throw Error{adErrObjectOpen, "The operation is not allowed when the object is open."};
}

void throwCancelled() {
    throw Error{adErrOperationCancelled, "The user has cancelled the operation."};
}

}  // namespace ado
