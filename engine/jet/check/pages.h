// Checks of single pages, whatever their content.
//
//   const auto page = takePage(context, pages, number, {OwnerKind::Rows, table}, {PageType::Data});
//   if (page) checkDataPage(context, *page, number);
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"
#include "engine/jet/format/page.h"

#include <initializer_list>

namespace jet::checking {

using format::PageType;

/// Constants of the header page.
void checkHeaderPage(Context& context);

/// Claims the page for `owner` and returns its bytes; nothing, and a finding, if it is outside the
/// file, has another owner or has none of the `types`.
std::optional<Bytes> takePage(Context& context, PageReader& pages, PageNumber number,
                              const Owner& owner, std::initializer_list<PageType> types);

/// Checks the slots of a data page; returns whether they are sound.
bool checkDataPage(Context& context, Bytes page, PageNumber number);

/// Whether the page of rows names `owner`: a table's number, or as
/// format/data_page.h and format/usage_map.h say.
bool checkPageOwner(Context& context, Bytes page, PageNumber number, std::uint32_t owner);

}  // namespace jet::checking
