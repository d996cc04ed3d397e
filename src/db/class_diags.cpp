#include "src/db/class_diags.h"

#include "src/i18n/mod_localize.h"
#include "src/text/text.h"

using modLocalize::myLoadResString;

namespace {

/// The status bar is rewritten once in so many rows, so that it does not slow the load.
constexpr std::uint32_t kProgressStep = 1000;

}  // namespace

classDiags::classDiags(std::shared_ptr<ado::Scheduler> scheduler, LoadingDisplay& display)
    : display_{display}, rsDiags_{std::make_unique<ado::Recordset>(std::move(scheduler))} {
    rsDiags_->setSort(u"");
    rsDiags_->fetchProgress = [this](std::uint32_t progress, std::uint32_t /*maxProgress*/,
                                     int /*status*/) { rsDiags_FetchProgress(progress); };
    rsDiags_->fetchComplete = [this](const ado::Error* /*error*/, int /*status*/) {
        rsDiags_FetchComplete();
    };
}

std::u16string classDiags::positionText() const {
    return myLoadResString(1000) + toText(rsDiags_->absolutePosition()) + myLoadResString(1005) +
           toText(display_.gridRowCount()) + u"  ";
}

void classDiags::rsDiags_FetchProgress(std::uint32_t progress) {
    display_.rowsArrived();
    if (progress % kProgressStep != 0) return;
    display_.setMousePointer(MousePointer::ArrowHourglass);
    display_.setPosition(positionText());
}

/// A fetch that failed or was broken off ends like a complete one: what arrived is there to use.
void classDiags::rsDiags_FetchComplete() {
    display_.rowsArrived();
    display_.setPosition(positionText());
    display_.setNotice(u"");
    display_.setMousePointer(MousePointer::Hourglass);
    display_.sortByDate();
    display_.setMousePointer(MousePointer::Default);
}

std::unique_ptr<classDiags>& diags() {
    static std::unique_ptr<classDiags> instance;
    return instance;
}
