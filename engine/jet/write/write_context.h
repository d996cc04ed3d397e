// The context that all parts of a writing statement share.
//
//   database->write([&](jet::WriteContext& context) {
//       jet::TableWriter people{context, database->table(u"People")->definition()};
//       people.insert(values);
//       people.finish();
//   });
//
// One thread: that of the statement, with which it ends.
#pragma once

#include "engine/jet/pager.h"
#include "engine/jet/value.h"
#include "engine/jet/write/page_allocator.h"

namespace jet {

class Database;

struct WriteContext {
    Database& database;
    Pager& pager;
    PageAllocator allocator;
    Date now;  ///< local time, for the catalog's dates
};

}  // namespace jet
