#include "engine/ado/field_reader.h"

#include "engine/jet/database.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <utility>

namespace ado {
namespace {

/// 256 KiB, as scans read.
constexpr std::uint32_t kBlockPages = 64;

/// Two reads so close together are taken for a walk through the file.
constexpr std::uint32_t kNear = 8;

}  // namespace

FieldReader::FieldReader(std::shared_ptr<const jet::Table> table, Reading reading)
    : table_{std::move(table)},
      reading_{reading},
      records_{table_->pageReader()},
      longValuePages_{table_->pageReader()},
      longValues_{longValuePages_},
      moved_{table_->pageReader()} {
    longValuePages_.borrowBlock(&records_);
}

/// What a damaged field gives: nothing. Other failures are the storage's.
template <typename Read>
auto FieldReader::unlessDamaged(Read read) -> decltype(read()) {
    if (damage_) damage_.reset();
    try {
        auto result = read();
        if (longValuePages_.hasDoubts()) {
            table_->database().noteDoubts(longValuePages_.takeDoubts());
        }
        return result;
    } catch (const jet::Error& error) {
        if (!jet::isDamage(error)) throw;
        damage_ = error.what();
        return {};
    }
}

bool FieldReader::read(jet::RowId row, const jet::Column& column, jet::StoredField& field) {
    return unlessDamaged([&] {
        const bool found = find(row);
        if (found) field = record_.field(column);
        return found;
    });
}

std::optional<jet::Bytes> FieldReader::storedText(jet::RowId row, const jet::Column& column) {
    return unlessDamaged([&]() -> std::optional<jet::Bytes> {
        if (!find(row)) return std::nullopt;
        const jet::StoredField field = record_.field(column);
        if (field.null) return std::nullopt;
        if (!column.isLongValue()) return field.bytes;
        return longValues_.read(field.bytes, record_.page(), scratch_);
    });
}

bool FieldReader::find(jet::RowId row) {
    return reading_ == Reading::InOrder ? findInOrder(row) : table_->find(records_, row, record_);
}

/// What Table::find does, with the page looked up once for all its rows that follow each other.
bool FieldReader::findInOrder(jet::RowId row) {
    if ((!page_ || page_->number() != row.page()) && !turnTo(row.page())) return false;
    if (const jet::Bytes bytes = page_->plainRow(row.slot()); !bytes.empty()) {
        record_ = jet::Record{bytes, row.page()};
        return true;
    }
    const auto slot = page_->slot(row.slot());
    if (!slot || slot->deleted) return false;
    record_ = jet::Record{
        slot->pointer ? followPointer(moved_, slot->bytes, page_->owner()) : slot->bytes,
        row.page()};
    return true;
}

/// False if the page is none of the table.
bool FieldReader::turnTo(jet::PageNumber number) {
    page_.reset();
    loadAround(number);
    const jet::DataPage page{records_.page(number), number};
    if (page.owner() != raw(table_->definition().page)) return false;
    page_ = page;
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
    longValues_.forgetPage();
    records_.loadBlock(jet::PageNumber{first}, count);
    blockFirst_ = first;
    blockCount_ = count;
}

jet::Value FieldReader::value(const jet::StoredField& field, const jet::Column& column) {
    longValues_.forgetPage();
    jet::Value value = unlessDamaged(
        [&] { return jet::decodeField(longValuePages_, column, field, record_.page()); });
    if (damage_) return jet::Unreadable{*damage_};
    return value;
}

bool FieldReader::appendText(const jet::StoredField& field, const jet::Column& column,
                             std::u16string& out) {
    if (field.null) return true;
    return unlessDamaged([&] {
        jet::appendUtf16(column.isLongValue()
                             ? longValues_.read(field.bytes, record_.page(), scratch_)
                             : field.bytes,
                         out);
        return true;
    });
}

}  // namespace ado
