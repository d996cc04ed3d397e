// The connections of this process whose changes are not durable yet. Nobody else can open their
// files, so whoever opens one in this process asks for the changes to be made durable first.
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
    /// Enters the connection, which belongs to the calling thread, once.
    static void add(Connection& connection);
    static void remove(const Connection& connection);

    /// Has the connections to the file at `path` make their changes durable. They keep a failure to
    /// themselves.
    static void commit(const std::filesystem::path& path);
};

}  // namespace ado
