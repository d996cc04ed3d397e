#include "src/search/export.h"

#include <string>
#include <utility>

namespace {

constexpr int kBlockRows = 100;
constexpr std::u16string_view kTab = u"\t";
constexpr std::u16string_view kLineEnd = u"\r\n";

}  // namespace

TraceExport::TraceExport(ado::Recordset& rows, ExportTarget& target)
    : rows_{rows}, target_{target} {
    rows_.orderChanged = [this] { reordered_ = true; };
}

TraceExport::~TraceExport() { rows_.orderChanged = nullptr; }

bool TraceExport::writeBlock() {
    // What is written stands in an order that holds no longer: with the new one it begins anew.
    if (!started_ || std::exchange(reordered_, false)) start();
    if (rows_.eof()) return false;
    std::u16string block = rows_.getString(ado::adClipString, kBlockRows, kTab, kLineEnd);
    block.append(kLineEnd);
    target_.write(block);
    return true;
}

void TraceExport::start() {
    if (started_) target_.restart();
    started_ = true;
    if (rows_.recordCount() > 0) rows_.moveFirst();
    writeHeading();
}

void TraceExport::writeHeading() {
    const ado::Fields fields = rows_.fields();
    std::u16string heading;
    for (std::size_t i = 0; i < fields.count(); ++i) {
        if (i > 0) heading.append(kTab);
        heading.append(fields[i].name());
    }
    target_.write(heading.append(kLineEnd));
}
