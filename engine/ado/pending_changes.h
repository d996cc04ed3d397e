// The connections of this process with uncommitted changes. Their files cannot be opened by others,
// so code that opens a file in this process commits such changes first.
//
//   ado::PendingChanges::add(connection);
//   ado::PendingChanges::commit(path);  // before a file is opened
//
// Any thread may call; connections of other threads are left alone.
#pragma once

#include <filesystem>

namespace ado {

class Connection;

class PendingChanges {
public:
    /// Registers the connection, which belongs to the calling thread; a second time has no effect.
    static void add(Connection& connection);
    static void remove(const Connection& connection);

    /// Commits on the calling thread's connections to the file at `path`. Each connection stores a
    /// failure and reports it later.
    static void commit(const std::filesystem::path& path);
};

}  // namespace ado
