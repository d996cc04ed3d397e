// Every type of value into every type of column.
#include "engine/sql/run/assignment.h"

#include "tests/engine/sql/people.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using jet::ColumnType;
using jet::Value;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

jet::Column columnOf(ColumnType type) {
    jet::Column column;
    column.name = u"c";
    column.type = type;
    column.size = 20;
    column.precision = 6;
    column.scale = 2;
    return column;
}

Value stored(Value value, ColumnType type) {
    return sql::toColumnValue(std::move(value), columnOf(type));
}

/// What the value is stored as: its text, or the name of the failure.
std::string into(ColumnType type, Value value) {
    try {
        return sqltest::show(stored(std::move(value), type));
    } catch (const sql::Error& error) {
        EXPECT_NE(std::string{error.what()}.find("column 'c'"), std::string::npos);
        return error.fault() == sql::Fault::Conversion ? "conversion" : "mismatch";
    }
}

Value text(const char16_t* content) { return std::u16string{content}; }

jet::Numeric numeric(std::uint32_t magnitude, std::uint8_t scale, bool negative = false) {
    return {negative, scale, {0, 0, 0, magnitude}};
}

TEST(Assignment, KeepsValuesOfTheSameType) {
    const jet::Guid guid{{1, 2, 3}};
    for (const auto& [type, value] : std::vector<std::pair<ColumnType, Value>>{
             {ColumnType::Boolean, true},
             {ColumnType::Byte, std::uint8_t{255}},
             {ColumnType::Integer, std::int16_t{-32768}},
             {ColumnType::Long, std::int32_t{-2147483647}},
             {ColumnType::Currency, jet::Currency{INT64_MIN}},
             {ColumnType::Single, 1.5f},
             {ColumnType::Double, 1e300},
             {ColumnType::Date, jet::Date{1e9}},  // whatever a file holds can be copied
             {ColumnType::Binary, jet::Binary{1, 2}},
             {ColumnType::Text, std::u16string{u"ten letter"}},
             {ColumnType::Ole, jet::Binary{1, 2}},
             {ColumnType::Memo, std::u16string(5000, u'x')},
             {ColumnType::Guid, guid},
             {ColumnType::Numeric, numeric(123456, 2, true)}}) {
        EXPECT_EQ(stored(value, type), value) << static_cast<int>(type);
    }
}

TEST(Assignment, NullStaysNullButForBooleans) {
    for (const ColumnType type :
         {ColumnType::Byte, ColumnType::Integer, ColumnType::Long, ColumnType::Currency,
          ColumnType::Single, ColumnType::Double, ColumnType::Date, ColumnType::Binary,
          ColumnType::Text, ColumnType::Ole, ColumnType::Memo, ColumnType::Guid,
          ColumnType::Numeric}) {
        EXPECT_EQ(stored({}, type), Value{}) << static_cast<int>(type);
    }
    EXPECT_EQ(stored({}, ColumnType::Boolean), Value{false});
}

TEST(Assignment, ToBoolean) {
    EXPECT_EQ(into(ColumnType::Boolean, std::int32_t{0}), "False");
    EXPECT_EQ(into(ColumnType::Boolean, std::int32_t{7}), "True");
    EXPECT_EQ(into(ColumnType::Boolean, 0.25), "True");
    EXPECT_EQ(into(ColumnType::Boolean, numeric(0, 2)), "False");
    EXPECT_EQ(into(ColumnType::Boolean, jet::Currency{1}), "True");
    EXPECT_EQ(into(ColumnType::Boolean, jet::Date{0}), "False");
    EXPECT_EQ(into(ColumnType::Boolean, text(u"tRUE")), "True");
    EXPECT_EQ(into(ColumnType::Boolean, text(u"False")), "False");
    EXPECT_EQ(into(ColumnType::Boolean, text(u"-1")), "True");
    EXPECT_EQ(into(ColumnType::Boolean, text(u"0")), "False");
    EXPECT_EQ(into(ColumnType::Boolean, text(u"maybe")), "conversion");
    EXPECT_EQ(into(ColumnType::Boolean, jet::Binary{1}), "mismatch");
    EXPECT_EQ(into(ColumnType::Boolean, jet::Guid{}), "mismatch");
}

TEST(Assignment, ToWholeNumbers) {
    EXPECT_EQ(stored(std::int32_t{200}, ColumnType::Byte), Value{std::uint8_t{200}});
    EXPECT_EQ(into(ColumnType::Byte, std::int32_t{256}), "conversion");
    EXPECT_EQ(into(ColumnType::Byte, std::int32_t{-1}), "conversion");
    EXPECT_EQ(into(ColumnType::Byte, true), "255");
    EXPECT_EQ(into(ColumnType::Byte, false), "0");
    EXPECT_EQ(stored(std::int32_t{-32768}, ColumnType::Integer), Value{std::int16_t{-32768}});
    EXPECT_EQ(into(ColumnType::Integer, std::int32_t{32768}), "conversion");
    EXPECT_EQ(into(ColumnType::Integer, std::int32_t{-32769}), "conversion");
    EXPECT_EQ(into(ColumnType::Integer, 32767.4), "32767");
    EXPECT_EQ(into(ColumnType::Integer, 32767.5), "conversion");
    EXPECT_EQ(into(ColumnType::Integer, true), "-1");
    EXPECT_EQ(stored(std::uint8_t{7}, ColumnType::Long), Value{std::int32_t{7}});
    EXPECT_EQ(into(ColumnType::Long, -2147483648.0), "-2147483648");
    EXPECT_EQ(into(ColumnType::Long, 2147483648.0), "conversion");
    EXPECT_EQ(into(ColumnType::Long, std::nan("")), "conversion");
    EXPECT_EQ(into(ColumnType::Long, kInfinity), "conversion");
    EXPECT_EQ(into(ColumnType::Long, 0.5), "0");
    EXPECT_EQ(into(ColumnType::Long, 1.5), "2");
    EXPECT_EQ(into(ColumnType::Long, 2.5), "2");
    EXPECT_EQ(into(ColumnType::Long, -2.5), "-2");
    EXPECT_EQ(into(ColumnType::Long, 1.5f), "2");
    EXPECT_EQ(into(ColumnType::Long, jet::Currency{25000}), "2");
    EXPECT_EQ(into(ColumnType::Long, numeric(1250, 2, true)), "-12");
    EXPECT_EQ(into(ColumnType::Long, jet::Date{38840.25}), "38840");
    EXPECT_EQ(into(ColumnType::Long, text(u" 42 ")), "42");
    EXPECT_EQ(into(ColumnType::Long, text(u"-1.25e2")), "-125");
    EXPECT_EQ(into(ColumnType::Long, text(u"1e10")), "conversion");
    EXPECT_EQ(into(ColumnType::Long, text(u"")), "conversion");
    EXPECT_EQ(into(ColumnType::Long, text(u"4 2")), "conversion");
    EXPECT_EQ(into(ColumnType::Long, text(u"1,5")), "conversion");
    EXPECT_EQ(into(ColumnType::Long, jet::Binary{1}), "mismatch");
    EXPECT_EQ(into(ColumnType::Long, jet::Guid{}), "mismatch");
}

TEST(Assignment, ToCurrency) {
    EXPECT_EQ(stored(std::int32_t{-3}, ColumnType::Currency), Value{jet::Currency{-30000}});
    EXPECT_EQ(stored(true, ColumnType::Currency), Value{jet::Currency{-10000}});
    EXPECT_EQ(stored(0.12345, ColumnType::Currency), Value{jet::Currency{1234}});
    EXPECT_EQ(stored(0.12355, ColumnType::Currency), Value{jet::Currency{1236}});
    EXPECT_EQ(stored(numeric(1999, 2), ColumnType::Currency), Value{jet::Currency{199900}});
    EXPECT_EQ(stored(jet::Date{1.5}, ColumnType::Currency), Value{jet::Currency{15000}});
    EXPECT_EQ(stored(text(u"922337203685477.5807"), ColumnType::Currency),
              Value{jet::Currency{INT64_MAX}});
    EXPECT_EQ(stored(text(u"-922337203685477.5808"), ColumnType::Currency),
              Value{jet::Currency{INT64_MIN}});
    EXPECT_EQ(into(ColumnType::Currency, text(u"922337203685477.5808")), "conversion");
    EXPECT_EQ(into(ColumnType::Currency, 1e15), "conversion");
    EXPECT_EQ(into(ColumnType::Currency, 1e300), "conversion");
    EXPECT_EQ(into(ColumnType::Currency, kInfinity), "conversion");
    EXPECT_EQ(into(ColumnType::Currency, text(u"ten")), "conversion");
    EXPECT_EQ(into(ColumnType::Currency, jet::Binary{1}), "mismatch");
}

TEST(Assignment, ToFloatingPoint) {
    EXPECT_EQ(stored(std::int16_t{-3}, ColumnType::Double), Value{-3.0});
    EXPECT_EQ(stored(true, ColumnType::Double), Value{-1.0});
    EXPECT_EQ(stored(jet::Currency{12345}, ColumnType::Double), Value{1.2345});
    EXPECT_EQ(stored(numeric(125, 2), ColumnType::Double), Value{1.25});
    EXPECT_EQ(stored(jet::Date{38840.5}, ColumnType::Double), Value{38840.5});
    EXPECT_EQ(stored(text(u"+1.5E-3"), ColumnType::Double), Value{0.0015});
    EXPECT_EQ(stored(text(u"0.1"), ColumnType::Double), Value{0.1});
    EXPECT_EQ(stored(text(u"1e-400"), ColumnType::Double), Value{0.0});
    EXPECT_EQ(into(ColumnType::Double, text(u"1e309")), "conversion");
    EXPECT_EQ(into(ColumnType::Double, text(u"inf")), "conversion");
    EXPECT_EQ(into(ColumnType::Double, kInfinity), "conversion");
    EXPECT_EQ(into(ColumnType::Double, jet::Binary{1}), "mismatch");
    EXPECT_EQ(stored(0.1, ColumnType::Single), Value{0.1f});
    EXPECT_EQ(stored(std::int32_t{5}, ColumnType::Single), Value{5.0f});
    EXPECT_EQ(stored(1e-60, ColumnType::Single), Value{0.0f});
    EXPECT_EQ(into(ColumnType::Single, 1e39), "conversion");
    EXPECT_EQ(into(ColumnType::Single, -1e39), "conversion");
    EXPECT_EQ(into(ColumnType::Single, std::nan("")), "conversion");
}

TEST(Assignment, ToDate) {
    EXPECT_EQ(stored(38840.5, ColumnType::Date), Value{jet::Date{38840.5}});
    EXPECT_EQ(stored(std::int32_t{-657434}, ColumnType::Date), Value{jet::Date{-657434}});
    EXPECT_EQ(into(ColumnType::Date, std::int32_t{-657436}), "conversion");
    EXPECT_EQ(into(ColumnType::Date, std::int32_t{2958466}), "conversion");
    EXPECT_EQ(into(ColumnType::Date, kInfinity), "conversion");
    EXPECT_EQ(stored(text(u"2006-05-03 12:00:00"), ColumnType::Date), Value{jet::Date{38840.5}});
    EXPECT_EQ(stored(text(u"5/3/2006"), ColumnType::Date), Value{jet::Date{38840}});
    EXPECT_EQ(stored(text(u"6:00 PM"), ColumnType::Date), Value{jet::Date{0.75}});
    EXPECT_EQ(into(ColumnType::Date, text(u"13/32/2006")), "conversion");
    EXPECT_EQ(into(ColumnType::Date, text(u"38840")), "conversion");
    EXPECT_EQ(into(ColumnType::Date, jet::Guid{}), "mismatch");
}

TEST(Assignment, ToText) {
    for (const ColumnType type : {ColumnType::Text, ColumnType::Memo}) {
        EXPECT_EQ(stored(std::uint8_t{7}, type), text(u"7"));
        EXPECT_EQ(stored(std::int16_t{-7}, type), text(u"-7"));
        EXPECT_EQ(stored(std::int32_t{70000}, type), text(u"70000"));
        EXPECT_EQ(stored(true, type), text(u"-1"));
        EXPECT_EQ(stored(1.5, type), text(u"1.5"));
        EXPECT_EQ(stored(0.1f, type), text(u"0.1"));
        EXPECT_EQ(stored(jet::Currency{-12500}, type), text(u"-1.25"));
        EXPECT_EQ(stored(numeric(1250, 2), type), text(u"12.50"));
        EXPECT_EQ(stored(jet::Date{38840}, type), text(u"2006-05-03"));
        EXPECT_EQ(stored(text(u""), type), text(u""));
        EXPECT_EQ(into(type, jet::Binary{1}), "mismatch");
    }
    EXPECT_EQ(into(ColumnType::Text, text(u"eleven lett")), "conversion");
    EXPECT_EQ(into(ColumnType::Text, jet::Date{38840.5}), "conversion");  // 19 characters
    EXPECT_EQ(stored(jet::Date{38840.5}, ColumnType::Memo), text(u"2006-05-03 12:00:00"));
    EXPECT_EQ(stored(jet::Guid{}, ColumnType::Memo),
              text(u"{00000000-0000-0000-0000-000000000000}"));
}

TEST(Assignment, ToNumeric) {
    EXPECT_EQ(stored(std::int32_t{12}, ColumnType::Numeric), Value{numeric(1200, 2)});
    EXPECT_EQ(stored(true, ColumnType::Numeric), Value{numeric(100, 2, true)});
    EXPECT_EQ(stored(-1.255, ColumnType::Numeric), Value{numeric(126, 2, true)});
    EXPECT_EQ(stored(-0.001, ColumnType::Numeric), Value{numeric(0, 2)});
    EXPECT_EQ(stored(jet::Currency{12345}, ColumnType::Numeric), Value{numeric(123, 2)});
    EXPECT_EQ(stored(numeric(12345, 3), ColumnType::Numeric), Value{numeric(1234, 2)});
    EXPECT_EQ(stored(text(u"9999.99"), ColumnType::Numeric), Value{numeric(999999, 2)});
    EXPECT_EQ(into(ColumnType::Numeric, text(u"9999.995")), "conversion");
    EXPECT_EQ(into(ColumnType::Numeric, std::int32_t{10000}), "conversion");
    EXPECT_EQ(into(ColumnType::Numeric, 1e300), "conversion");
    EXPECT_EQ(into(ColumnType::Numeric, jet::Binary{}), "mismatch");

    jet::Column wide = columnOf(ColumnType::Numeric);
    wide.precision = 28;
    wide.scale = 0;
    const Value large = sql::toColumnValue(text(u"9999999999999999999999999999"), wide);
    EXPECT_EQ(sqltest::show(large), "9999999999999999999999999999");
}

TEST(Assignment, ToGuidAndBinary) {
    const jet::Guid guid{{4, 3, 2, 1, 6, 5, 8, 7, 9, 10, 11, 12, 13, 14, 15, 255}};
    EXPECT_EQ(stored(text(u"{01020304-0506-0708-090A-0B0C0D0E0FFF}"), ColumnType::Guid),
              Value{guid});
    EXPECT_EQ(stored(text(u"01020304-0506-0708-090a-0b0c0d0e0fff"), ColumnType::Guid), Value{guid});
    for (const auto wrong :
         {u"", u"{}", u"{01020304-0506-0708-090A-0B0C0D0E0FF}",
          u"{01020304-0506-0708-090A-0B0C0D0E0FFF)", u"{01020304-0506-0708-090A-0B0C0D0E0FFG}",
          u"{01020304-0506-0708-090A+0B0C0D0E0FFF}",
          u"{01020304-0506-0708-090A-0B0C0D0E0F\u0661F}"}) {
        EXPECT_EQ(into(ColumnType::Guid, text(wrong)), "conversion");
    }
    EXPECT_EQ(into(ColumnType::Guid, std::int32_t{1}), "mismatch");
    for (const ColumnType type : {ColumnType::Binary, ColumnType::Ole}) {
        EXPECT_EQ(into(type, text(u"x")), "mismatch");
        EXPECT_EQ(into(type, std::int32_t{1}), "mismatch");
        EXPECT_EQ(into(type, guid), "mismatch");
    }
}

}  // namespace
