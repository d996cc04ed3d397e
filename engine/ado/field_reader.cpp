#include "engine/ado/field_reader.h"

#include "engine/jet/database.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ado {
namespace {

/// 256 KiB, as scans read.
constexpr std::uint32_t kBlockPages = 64;

/// Two reads so close together are taken for a walk through the file.
constexpr std::uint32_t kNear = 8;

// Both are made anew in place, over what was there.
static_assert(std::is_trivially_destructible_v<jet::StoredField>);
static_assert(std::is_trivially_destructible_v<jet::Record>);

/// What a damaged field gives: nothing. Other failures are the storage's.
template <typename Read>
auto unlessDamaged(Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const jet::Error& error) {
        if (error.fault() != jet::Fault::Damaged && error.fault() != jet::Fault::Truncated) throw;
        return {};
    }
}

}  // namespace

FieldReader::FieldReader(std::shared_ptr<const jet::Table> table, Reading reading)
    : table_{std::move(table)},
      reading_{reading},
      records_{table_->pageReader()},
      longValues_{table_->pageReader()},
      moved_{table_->pageReader()} {
    longValues_.borrowBlock(&records_);
}

bool FieldReader::read(jet::RowId row, const jet::Column& column, jet::StoredField& field) {
    return unlessDamaged([&] {
        const bool found =
            reading_ == Reading::InOrder ? findInOrder(row) : table_->find(records_, row, record_);
        // Made in place: copying what has just been written in pieces makes the processor wait.
        if (found) new (&field) jet::StoredField(record_.field(column));
        return found;
    });
}

/// What Table::find does, with the page looked up once for all its rows that follow each other.
bool FieldReader::findInOrder(jet::RowId row) {
    if (!page_ || page_->number() != row.page()) {
        page_.reset();
        loadAround(row.page());
        const jet::DataPage page{records_.page(row.page()), row.page()};
        if (page.owner() != raw(table_->definition().page)) return false;
        page_ = page;
    }
    const auto slot = page_->slot(row.slot());
    if (!slot || slot->moved) return false;
    const jet::Bytes bytes =
        slot->pointer ? followPointer(moved_, slot->bytes, page_->owner()) : slot->bytes;
    std::construct_at(&record_, bytes, row.page());
    return true;
}

/// Loads the block that begins with the page, or ends with it on the way back, if the page before
/// was near.
void FieldReader::loadAround(jet::PageNumber page) {
    const std::uint32_t number = raw(page);
    if (number - blockFirst_ < blockCount_) return;
    const std::uint32_t last = std::exchange(lastPage_, number);
    const bool onward = number >= last && number - last <= kNear + blockCount_;
    const bool back = number < last && last - number <= kNear + blockCount_;
    if (!onward && !back) return;
    const std::uint32_t pages = records_.storage().pageCount();
    if (number >= pages) return;
    blockCount_ = 0;
    const std::uint32_t first = back && number >= kBlockPages ? number - kBlockPages + 1 : number;
    const std::uint32_t count = std::min(kBlockPages, pages - first);
    records_.loadBlock(jet::PageNumber{first}, count);
    blockFirst_ = first;
    blockCount_ = count;
}

jet::Value FieldReader::value(const jet::StoredField& field, const jet::Column& column) {
    return unlessDamaged(
        [&] { return jet::decodeField(longValues_, column, field, record_.page()); });
}

std::optional<jet::Bytes> FieldReader::storedText(const jet::StoredField& field,
                                                  const jet::Column& column) {
    if (field.null) return std::nullopt;
    if (!column.isLongValue()) return field.bytes;
    return unlessDamaged([&]() -> std::optional<jet::Bytes> {
        return jet::readLongValue(longValues_, field.bytes, record_.page(), scratch_);
    });
}

bool FieldReader::appendText(const jet::StoredField& field, const jet::Column& column,
                             std::u16string& out) {
    if (field.null) return true;
    const auto bytes = storedText(field, column);
    if (bytes) jet::appendUtf16(*bytes, out);
    return bytes.has_value();
}

}  // namespace ado
