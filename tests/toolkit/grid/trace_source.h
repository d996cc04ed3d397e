// TraceSource: rows made up on the spot, as many as a test asks for.
//
//   TraceSource source(1'000'000);
//   grid.setDataSource(&source);
//
// It counts what it is asked, so that a test can tell how much a paint costs.
#pragma once

#include "toolkit/grid/model/data_source.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace grid {

class TraceSource : public DataSource {
public:
    explicit TraceSource(std::int64_t rows) : rows_(rows) { current_ = rows > 0 ? 0 : -1; }

    int columnCount() const override { return static_cast<int>(fields().size()); }
    std::wstring fieldName(int column) const override {
        return fields()[static_cast<std::size_t>(column)];
    }
    Alignment alignment(int column) const override {
        return column == kNumber || column == kLevel ? Alignment::right : Alignment::left;
    }
    std::int64_t rowCount() const override { return rows_; }

    void cellText(std::int64_t row, int column, std::wstring& text) const override {
        ++asked_;
        if (onAsked) onAsked();
        firstAsked_ = firstAsked_ < 0 ? row : std::min(firstAsked_, row);
        lastAsked_ = std::max(lastAsked_, row);
        if (row >= rows_) return;
        for (const auto& [cell, special] : specials_) {
            if (cell == std::pair(row, column)) {
                text = special;
                return;
            }
        }
        text = made(row, column);
    }

    std::int64_t currentRow() const override { return current_; }
    void setCurrentRow(std::int64_t row) override {
        if (!refuses) current_ = row;
    }

    // What the owner of a source does.
    void setRowCount(std::int64_t rows) { rows_ = rows; }
    void put(std::int64_t row, int column, const std::wstring& text) {
        specials_.push_back({{row, column}, text});
    }
    void forget() { specials_.clear(); }
    bool refuses = false;
    std::function<void()> onAsked;  // for every text

    // What was asked since the last reset.
    std::int64_t asked() const { return asked_; }
    std::int64_t firstAsked() const { return firstAsked_; }
    std::int64_t lastAsked() const { return lastAsked_; }
    void resetCounts() {
        asked_ = 0;
        firstAsked_ = -1;
        lastAsked_ = -1;
    }

    enum : int { kDate, kProcess, kSource, kNumber, kComponent, kLevel, kTrace };

private:
    static const std::vector<std::wstring>& fields() {
        static const std::vector<std::wstring> names = {
            L"Date", L"Process", L"Source", L"TraceNumber", L"Component", L"TraceLevel", L"Trace"};
        return names;
    }

    static std::wstring twoDigits(std::int64_t value) {
        std::wstring text = std::to_wstring(value % 60);
        return text.size() < 2 ? L"0" + text : text;
    }

    static std::wstring made(std::int64_t row, int column) {
        static const wchar_t* const processes[] = {L"CallServer", L"Router", L"NodeMgr"};
        static const wchar_t* const components[] = {L"Session", L"Dialer", L"Queue", L"Store"};
        const auto pick = static_cast<std::size_t>(row);
        switch (column) {
            case kDate:
                return L"2023-03-15 14:" + twoDigits(row / 60) + L":" + twoDigits(row);
            case kProcess:
                return processes[pick % 3];
            case kSource:
                return L"source" + std::to_wstring(row % 7) + L".cpp";
            case kNumber:
                return std::to_wstring(1000 + row % 977);
            case kComponent:
                return components[pick % 4];
            case kLevel:
                return std::to_wstring(row % 5);
            default:
                return L"Trace " + std::to_wstring(row) +
                       L": the call was routed to agent group 17 after 3 attempts; the caller"
                       L" waited 42 seconds in the queue before the connection was established";
        }
    }

    std::int64_t rows_;
    std::int64_t current_;
    std::vector<std::pair<std::pair<std::int64_t, int>, std::wstring>> specials_;
    mutable std::int64_t asked_ = 0;
    mutable std::int64_t firstAsked_ = -1;
    mutable std::int64_t lastAsked_ = -1;
};

}  // namespace grid
