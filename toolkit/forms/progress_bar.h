// ProgressBar: how far a long operation has come.
//
//   forms::ProgressBar pbarStatus;
//   pbarStatus.setMax(recordCount);
//   pbarStatus.setValue(position);
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

#include <cstdint>

namespace forms {

class ProgressBar : public Control {
public:
    std::int32_t min() const { return min_; }
    std::int32_t max() const { return max_; }
    std::int32_t value() const { return value_; }

    /// Clamps the value to the new range.
    void setMin(std::int32_t min);
    void setMax(std::int32_t max);
    /// The value is clamped to the range.
    void setValue(std::int32_t value);

protected:
    Kind kind() const override;
    void created() override;

private:
    void showRange();
    void showValue();

    std::int32_t min_ = 0;
    std::int32_t max_ = 100;
    std::int32_t value_ = 0;
};

}  // namespace forms
