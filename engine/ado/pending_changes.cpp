#include "engine/ado/pending_changes.h"

#include "engine/ado/connection.h"
#include "engine/ado/connection_string.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace ado {
namespace {

struct Entry {
    Connection* connection;
    std::thread::id owner;
    std::filesystem::path file;
};

struct Registry {
    std::mutex mutex;
    std::vector<Entry> entries;
};

Registry& registry() {
    static Registry single;
    return single;
}

/// One form for all ways to write a path; of a path that leads nowhere, what can be had.
std::filesystem::path canonicalForm(const std::filesystem::path& path) {
    std::error_code failure;
    auto result = std::filesystem::weakly_canonical(path, failure);
    return failure ? path : result;
}

bool isSameFile(const std::filesystem::path& left, const std::filesystem::path& right) {
#ifdef _WIN32
    return equalsIgnoringCase(left.u16string(), right.u16string());
#else
    return left == right;
#endif
}

}  // namespace

void PendingChanges::add(Connection& connection) {
    auto file = canonicalForm(connection.path());
    const std::lock_guard lock{registry().mutex};
    auto& entries = registry().entries;
    const bool known = std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) {
        return entry.connection == &connection;
    });
    if (!known) entries.push_back({&connection, std::this_thread::get_id(), std::move(file)});
}

void PendingChanges::remove(const Connection& connection) {
    const std::lock_guard lock{registry().mutex};
    std::erase_if(registry().entries,
                  [&](const Entry& entry) { return entry.connection == &connection; });
}

void PendingChanges::commit(const std::filesystem::path& path) {
    const auto file = canonicalForm(path);
    std::vector<Connection*> holders;
    {
        const std::lock_guard lock{registry().mutex};
        for (const Entry& entry : registry().entries) {
            const bool own = entry.owner == std::this_thread::get_id();
            if (own && isSameFile(entry.file, file)) holders.push_back(entry.connection);
        }
    }
    // Those of this thread cannot go away meanwhile.
    for (Connection* holder : holders) holder->commitQuietly();
}

}  // namespace ado
