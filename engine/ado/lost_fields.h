// The fields that could not be read when they were wanted: painted, searched, exported.
//
//   ado::LostFields lost{table};
//   lost.add(rowId, column, "a long value is missing");
//   show(lost.losses().summary());
//
// Any thread may call.
#pragma once

#include "engine/jet/table.h"

#include <memory>
#include <mutex>
#include <unordered_set>

namespace ado {

class LostFields {
public:
    /// Later fields are not told apart any more, and not counted.
    static constexpr std::size_t kMaxFields = 100'000;

    explicit LostFields(std::shared_ptr<const jet::Table> table) : table_{std::move(table)} {}

    /// Counts the field, once however often it is met. A column that is unreadable as a whole counts
    /// with its table's definition, not here.
    void add(jet::RowId row, const jet::Column& column, const std::string& why);

    jet::Losses losses() const;

private:
    const std::shared_ptr<const jet::Table> table_;
    mutable std::mutex mutex_;
    std::unordered_set<std::uint64_t> seen_;  ///< row ids and column ids; under mutex_
    jet::Losses losses_;                      ///< under mutex_
};

}  // namespace ado
