// Where the current record of a view is: on a position, before the first one or behind the last
// one.
//
//   ado::CurrentRecord current;     // the first row
//   current = current.next(count);  // the second row, or behind the last one
//   if (!current.eof(count)) show(current.position());
//
// A plain value; any thread. Rows may be added meanwhile, so each step takes their number.
#pragma once

#include <cstdint>

namespace ado {

class CurrentRecord {
public:
    /// Position 0. Without rows, the first one to arrive becomes current.
    CurrentRecord() = default;

    static CurrentRecord before() { return {Place::Before, 0}; }
    static CurrentRecord behind() { return {Place::Behind, 0}; }

    /// On `position` if it is one of `count`, else behind the last one.
    static CurrentRecord at(std::uint32_t position, std::uint32_t count) {
        return position < count ? CurrentRecord{Place::On, position} : behind();
    }

    bool bof(std::uint32_t count) const { return count == 0 || place_ == Place::Before; }
    bool eof(std::uint32_t count) const { return count == 0 || place_ == Place::Behind; }

    /// From 0. Requires: neither bof() nor eof().
    std::uint32_t position() const { return position_; }

    /// From 1; adPosBOF, adPosEOF, or adPosUnknown if there is no row.
    int absolutePosition(std::uint32_t count) const;

    /// These throw Error{3021} if there is no row, or if it is beyond that end already.
    static CurrentRecord first(std::uint32_t count);
    static CurrentRecord last(std::uint32_t count);
    CurrentRecord next(std::uint32_t count) const;
    CurrentRecord previous(std::uint32_t count) const;

    /// Throws Error{3021} unless it is on a row.
    void requireRow(std::uint32_t count) const;

    friend bool operator==(const CurrentRecord&, const CurrentRecord&) = default;

private:
    enum class Place { Before, On, Behind };

    CurrentRecord(Place place, std::uint32_t position) : place_{place}, position_{position} {}

    Place place_ = Place::On;
    std::uint32_t position_ = 0;  ///< 0 unless it is On
};

}  // namespace ado
