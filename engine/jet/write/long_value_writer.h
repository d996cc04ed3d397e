// Writes Memo and Ole values of one column: inline, in a row of a shared page, or as a chain of
// rows on pages of their own.
//
//   jet::LongValueWriter memos{pager, allocator, column};
//   memos.store(content, true, field);
//   memos.finish();
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"
#include "engine/jet/write/page_allocator.h"
#include "engine/jet/write/usage_map_writer.h"

#include <optional>

namespace jet {

class LongValueWriter {
public:
    LongValueWriter(Pager& pager, PageAllocator& allocator, const Column& column)
        : pager_{pager}, allocator_{allocator}, column_{column} {}

    /// Replaces `field` by what the record stores: the head and, for a short value that may
    /// be `inRecord`, the content. Throws Error: FileFull, Damaged; as Pager::edit.
    void store(Bytes content, bool inRecord, Binary& field);

    /// Removes the rows of the value whose field in the record is `field`; of a damaged value,
    /// those that can be found. Throws as store.
    void remove(Bytes field);

    /// Writes the maps.
    void finish();

private:
    struct Maps {
        UsageMapWriter owned;
        UsageMapWriter free;
    };

    Maps& maps();
    RowId storeRow(Bytes row);
    RowId storeChain(Bytes content);
    PageNumber addPage();
    void removeRow(RowId row);

    Pager& pager_;
    PageAllocator& allocator_;
    Column column_;
    std::optional<Maps> maps_;      ///< read when first needed
    PageNumber current_ = kNoPage;  ///< where the last short value went
};

}  // namespace jet
