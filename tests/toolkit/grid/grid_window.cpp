#include "tests/toolkit/grid/grid_window.h"

namespace grid {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 500;

LPARAM at(Point point) { return MAKELPARAM(point.x, point.y); }

Point middle(const Rect& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

HostWindow::HostWindow(forms::Dpi dpi) : dpi_(dpi) {
    Creation creation;
    creation.className = L"GridTestHost";
    creation.text = L"Grid test";
    creation.style = WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN;
    creation.bounds = {0, 0, kWidth, kHeight};
    createOwn(creation);
}

GridWindow::GridWindow(std::int64_t rows, forms::Dpi dpi) : host(dpi), source(rows) {
    forms::ControlPlace place;
    place.name = L"grid";
    place.width = forms::toTwips(forms::Pixels(kWidth), dpi);
    place.height = forms::toTwips(forms::Pixels(kHeight), dpi);
    grid.create(host, place);
    grid.setRowHeight(2 * grid.rowHeight());
    grid.setDataSource(&source);
    setUpColumns();
    SetForegroundWindow(host.hwnd());
    grid.setFocus();
    pump();
}

GridWindow::~GridWindow() {
    grid.destroy();
    host.destroy();
    pump();
}

void GridWindow::setUpColumns() {
    for (int index = 0; index < TraceSource::kTrace; ++index) {
        grid.column(index).autoSize();
    }
    Column& trace = grid.column(TraceSource::kTrace);
    trace.setWrapText(true);
    trace.setWidth(forms::Twips(3000));
    trace.setFillsRest(true);
}

void GridWindow::pump(const Seen& seen) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        if (seen) seen(message);
        DispatchMessageW(&message);
    }
}

bool GridWindow::waitFor(const std::function<bool()>& condition, const Seen& seen) {
    const DWORD start = GetTickCount();
    pump(seen);
    while (!condition()) {
        if (GetTickCount() - start > 60000) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        pump(seen);
    }
    return true;
}

bool GridWindow::waitForTimer(UINT_PTR timer, int times) {
    const auto count = [&](const MSG& message) {
        const bool wanted = message.hwnd == grid.hwnd() && message.message == WM_TIMER;
        times -= wanted && message.wParam == timer ? 1 : 0;
    };
    return waitFor([&] { return times <= 0; }, count);
}

LRESULT GridWindow::send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return SendMessageW(grid.hwnd(), message, wParam, lParam);
}

void GridWindow::key(int virtualKey) {
    send(WM_KEYDOWN, static_cast<WPARAM>(virtualKey), 1);
    send(WM_KEYUP, static_cast<WPARAM>(virtualKey), 1);
    pump();
}

void GridWindow::press(Point point) { send(WM_LBUTTONDOWN, MK_LBUTTON, at(point)); }
void GridWindow::move(Point point, bool held) {
    send(WM_MOUSEMOVE, held ? MK_LBUTTON : 0, at(point));
}
void GridWindow::release(Point point) {
    send(WM_LBUTTONUP, 0, at(point));
    pump();
}

void GridWindow::click(Point point) {
    press(point);
    release(point);
}

void GridWindow::doubleClick(Point point) {
    click(point);
    send(WM_LBUTTONDBLCLK, MK_LBUTTON, at(point));
    release(point);
}

void GridWindow::hover(Point point) {
    // The real mouse has to be there too, or Windows reports at once that it left.
    POINT screen{point.x, point.y};
    ClientToScreen(grid.hwnd(), &screen);
    SetCursorPos(screen.x, screen.y);
    pump();
    move(point);
    send(WM_MOUSEHOVER, 0, at(point));
}

void GridWindow::wheel(int delta, int keys) {
    send(WM_MOUSEWHEEL,
         static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(keys, static_cast<short>(delta)))),
         at({10, 10}));
    pump();
}

void GridWindow::scrollBar(int bar, int code) {
    send(bar == SB_VERT ? WM_VSCROLL : WM_HSCROLL, static_cast<WPARAM>(code), 0);
    send(bar == SB_VERT ? WM_VSCROLL : WM_HSCROLL, SB_ENDSCROLL, 0);
    pump();
}

void GridWindow::trackThumb(int bar, int position) {
    // Without a mouse on the thumb Windows reports the bar's position as that of the thumb.
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_POS;
    info.nPos = position;
    SetScrollInfo(grid.hwnd(), bar, &info, FALSE);
    WPARAM code = MAKEWPARAM(SB_THUMBTRACK, static_cast<WORD>(position));
    send(bar == SB_VERT ? WM_VSCROLL : WM_HSCROLL, code, 0);
    scrollBar(bar, SB_ENDSCROLL);
}

SCROLLINFO GridWindow::bar(int bar) const {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    GetScrollInfo(grid.hwnd(), bar, &info);
    return info;
}

Point GridWindow::middleOf(Cell cell) const { return middle(grid.geometry().cellRect(cell)); }

Point GridWindow::middleOfHeading(int column) const {
    return middle(grid.geometry().headingRect(column));
}

Point GridWindow::borderOf(int column) const {
    Rect heading = grid.geometry().headingRect(column);
    return {heading.right - 1, middle(heading).y};
}

std::int64_t GridWindow::cellsPaintedBy(const std::function<void()>& action) {
    pump();
    std::int64_t before = grid.paintedCells();
    action();
    pump();
    return grid.paintedCells() - before;
}

bool GridWindow::looksAsPaintedAnew() {
    pump();
    Snapshot now = Snapshot::ofClient(grid.hwnd());
    InvalidateRect(grid.hwnd(), nullptr, FALSE);
    pump();
    return now.differences(Snapshot::ofClient(grid.hwnd())) == 0;
}

}  // namespace grid
