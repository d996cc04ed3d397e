#include "src/ui/main/main_display.h"

#include "src/text/text.h"
#include "toolkit/forms/application.h"

void MainDisplay::displayStatus(const std::u16string& text, bool showProgress) {
    form_.displayStatus(text, showProgress);
}

void MainDisplay::hideStatus() { form_.hideStatus(); }

void MainDisplay::setNotice(const std::u16string& text) {
    form_.load();
    form_.statusbarMain.panel(1).setText(toWide(text));
}

void MainDisplay::setPosition(const std::u16string& text) {
    form_.load();
    form_.statusbarMain.panel(3).setText(toWide(text));
}

void MainDisplay::setMousePointer(MousePointer pointer) {
    form_.setMousePointer(static_cast<forms::MousePointer>(pointer));
}

void MainDisplay::rowsArrived() { form_.tdbgridData.rowCountChanged(); }

std::int64_t MainDisplay::gridRowCount() { return form_.tdbgridData.approxCount(); }

void MainDisplay::runWhilePainting(const std::function<void()>& work) {
    forms::runWhilePainting(work);
}

void MainDisplay::sortByDate() {
    form_.tdbgridData_HeadClick(form_.tdbgridData.columnIndex(L"Date"));
}
