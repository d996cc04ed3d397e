#include "engine/ado/current_record.h"

#include "engine/ado/constants.h"
#include "engine/ado/error.h"

namespace ado {
namespace {

void requireRows(std::uint32_t count) {
    if (count == 0) throwNoCurrentRecord();
}

}  // namespace

int CurrentRecord::absolutePosition(std::uint32_t count) const {
    if (count == 0) return adPosUnknown;
    if (place_ == Place::Before) return adPosBOF;
    return place_ == Place::Behind ? adPosEOF : static_cast<int>(position_) + 1;
}

CurrentRecord CurrentRecord::first(std::uint32_t count) {
    requireRows(count);
    return at(0, count);
}

CurrentRecord CurrentRecord::last(std::uint32_t count) {
    requireRows(count);
    return at(count - 1, count);
}

CurrentRecord CurrentRecord::next(std::uint32_t count) const {
    if (eof(count)) throwNoCurrentRecord();
    return at(place_ == Place::Before ? 0 : position_ + 1, count);
}

CurrentRecord CurrentRecord::previous(std::uint32_t count) const {
    if (bof(count)) throwNoCurrentRecord();
    const std::uint32_t here = place_ == Place::Behind ? count : position_;
    return here > 0 ? at(here - 1, count) : before();
}

void CurrentRecord::requireRow(std::uint32_t count) const {
    if (bof(count) || eof(count)) throwNoCurrentRecord();
}

}  // namespace ado
