// What the tests of this layer expect of failures.
#pragma once

#include "engine/jet/error.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>

namespace jet {

inline std::string_view nameOf(Fault fault) {
    switch (fault) {
        case Fault::FileNotFound:
            return "FileNotFound";
        case Fault::AccessDenied:
            return "AccessDenied";
        case Fault::InUse:
            return "InUse";
        case Fault::ReadFailed:
            return "ReadFailed";
        case Fault::NotADatabase:
            return "NotADatabase";
        case Fault::OlderFormat:
            return "OlderFormat";
        case Fault::NewerFormat:
            return "NewerFormat";
        case Fault::Encrypted:
            return "Encrypted";
        case Fault::PasswordProtected:
            return "PasswordProtected";
        case Fault::Truncated:
            return "Truncated";
        case Fault::Damaged:
            return "Damaged";
        case Fault::NoSuchTable:
            return "NoSuchTable";
        case Fault::ReadOnly:
            return "ReadOnly";
        case Fault::JournalInTheWay:
            return "JournalInTheWay";
        case Fault::DamagedFile:
            return "DamagedFile";
        case Fault::WriteFailed:
            return "WriteFailed";
        case Fault::DiskFull:
            return "DiskFull";
        case Fault::FileFull:
            return "FileFull";
        case Fault::TableExists:
            return "TableExists";
        case Fault::AlreadyExists:
            return "AlreadyExists";
        case Fault::NoSuchColumn:
            return "NoSuchColumn";
        case Fault::TooMany:
            return "TooMany";
        case Fault::ValueTooLarge:
            return "ValueTooLarge";
        case Fault::WrongType:
            return "WrongType";
        case Fault::DuplicateKey:
            return "DuplicateKey";
        case Fault::NullKey:
            return "NullKey";
        case Fault::IndexNotWritable:
            return "IndexNotWritable";
        default:
            return "another fault";
    }
}

inline void PrintTo(Fault fault, std::ostream* out) { *out << nameOf(fault); }

/// Where a test called its helper function: std::source_location, which clang 14 cannot offer with
/// g++'s library.
struct CallSite {
    const char* file;
    int line;

    static CallSite here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// Expects that `action` throws an Error of that kind, and returns its message.
template <typename Action>
std::string expectFault(Fault expected, Action action, CallSite where = CallSite::here()) {
    try {
        action();
    } catch (const Error& error) {
        if (error.fault() != expected) {
            ADD_FAILURE_AT(where.file, where.line) << "expected " << nameOf(expected) << ", got "
                                                   << nameOf(error.fault()) << ": " << error.what();
        }
        return error.what();
    }
    ADD_FAILURE_AT(where.file, where.line) << "expected " << nameOf(expected) << ", got nothing";
    return {};
}

}  // namespace jet
