// Picture: an icon of the program's resources on a form, in the control's size.
//
//   forms::Picture pictureProgram;
//   pictureProgram.setIcon(IDI_VIEWER);
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

class Picture : public Control {
public:
    /// The number of an icon in the program's resources. Without such an icon the control is empty.
    void setIcon(int resource);

protected:
    Kind kind() const override;
    void created() override { showIcon(); }
    void dpiChanged() override { showIcon(); }

private:
    void showIcon();

    int resource_ = 0;
};

}  // namespace forms
