// What every part of a statement that writes works with.
//
//   database->write([&](jet::WriteContext& context) {
//       jet::TableWriter people{context, database->table(u"People")->definition()};
//       people.insert({std::u16string{u"Ada"}});
//       people.finish();
//   });
//
// Lives as long as the statement, on its thread.
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
