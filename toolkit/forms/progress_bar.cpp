#include "toolkit/forms/progress_bar.h"

#include <commctrl.h>

#include <algorithm>

namespace forms {

Control::Kind ProgressBar::kind() const { return {.className = PROGRESS_CLASSW}; }

void ProgressBar::created() { showRange(); }

void ProgressBar::setMin(std::int32_t min) {
    min_ = min;
    max_ = std::max(max_, min_);
    showRange();
}

void ProgressBar::setMax(std::int32_t max) {
    max_ = max;
    min_ = std::min(min_, max_);
    showRange();
}

void ProgressBar::setValue(std::int32_t value) {
    value_ = std::clamp(value, min_, max_);
    showValue();
}

void ProgressBar::showRange() {
    value_ = std::clamp(value_, min_, max_);
    if (isCreated()) {
        send(PBM_SETRANGE32, static_cast<WPARAM>(min_), max_);
        showValue();
    }
}

void ProgressBar::showValue() {
    if (isCreated()) send(PBM_SETPOS, static_cast<WPARAM>(value_));
}

}  // namespace forms
