// Shows the loading of a database in the main window. The user-interface thread.
#pragma once

#include "src/db/loading_display.h"
#include "src/ui/main/frm_main.h"

class MainDisplay : public LoadingDisplay {
public:
    /// `form` must outlive the object.
    explicit MainDisplay(frmMain& form) : form_{form} {}

    void displayStatus(const std::u16string& text, bool showProgress) override;
    void hideStatus() override;
    void setNotice(const std::u16string& text) override;
    void setPosition(const std::u16string& text) override;
    void setMousePointer(MousePointer pointer) override;
    void rowsArrived() override;
    std::int64_t gridRowCount() override;
    void runWhilePainting(const std::function<void()>& work) override;
    void sortByDate() override;

private:
    frmMain& form_;
};
