#include "tests/program/hands.h"

#include "tests/program/running_viewer.h"
#include "tests/windowprobe/remote_window.h"

#include <array>
#include <cwchar>

namespace hands {
namespace {

void send(std::vector<INPUT>& input) {
    SendInput(static_cast<UINT>(input.size()), input.data(), sizeof(INPUT));
}

INPUT keyInput(WORD key, WORD unit, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = unit;
    input.ki.dwFlags = flags;
    return input;
}

INPUT mouseInput(DWORD flags) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    return input;
}

struct ChildSearch {
    const wchar_t* className;
    const wchar_t* text;
    HWND found;
};

BOOL CALLBACK compareChild(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<ChildSearch*>(parameter);
    std::array<wchar_t, 128> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (_wcsicmp(name.data(), search.className) != 0) return TRUE;
    if (search.text != nullptr && textOf(window) != search.text) return TRUE;
    search.found = window;
    return FALSE;
}

/// Of the item's text; with the part that `wholeLine` asks for.
RECT areaOf(HWND tree, HTREEITEM item) {
    ask(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    RECT area{};
    RemoteMemory memory{tree, sizeof area};
    memory.put(&item, sizeof item);
    memory.fetch(tree, TVM_GETITEMRECT, TRUE, &area);
    return area;
}

HTREEITEM next(HWND tree, WPARAM which, HTREEITEM item) {
    const auto answer = ask(tree, TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(item));
    return reinterpret_cast<HTREEITEM>(answer.value_or(0));
}

std::vector<TreeItem> siblings(HWND tree, HTREEITEM first) {
    std::vector<TreeItem> items;
    for (HTREEITEM item = first; item != nullptr; item = next(tree, TVGN_NEXT, item)) {
        items.push_back(lookAt(tree, item));
    }
    return items;
}

}  // namespace

bool front(HWND window) {
    return eventually([&] {
        SetForegroundWindow(window);
        return GetForegroundWindow() == window;
    });
}

void press(int key, std::initializer_list<int> held) {
    std::vector<INPUT> input;
    for (const int other : held) input.push_back(keyInput(static_cast<WORD>(other), 0, 0));
    input.push_back(keyInput(static_cast<WORD>(key), 0, 0));
    input.push_back(keyInput(static_cast<WORD>(key), 0, KEYEVENTF_KEYUP));
    for (const int other : held) {
        input.push_back(keyInput(static_cast<WORD>(other), 0, KEYEVENTF_KEYUP));
    }
    send(input);
}

void type(const std::wstring& text) {
    std::vector<INPUT> input;
    for (const wchar_t unit : text) {
        input.push_back(keyInput(0, unit, KEYEVENTF_UNICODE));
        input.push_back(keyInput(0, unit, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
    }
    send(input);
}

void click(HWND window, POINT place) {
    ClientToScreen(window, &place);
    SetCursorPos(place.x, place.y);
    std::vector<INPUT> input{mouseInput(MOUSEEVENTF_LEFTDOWN), mouseInput(MOUSEEVENTF_LEFTUP)};
    send(input);
}

void click(HWND window) {
    RECT area{};
    GetClientRect(window, &area);
    click(window, {area.right / 2, area.bottom / 2});
}

void drag(POINT from, POINT to) {
    constexpr int kSteps = 8;
    constexpr DWORD kPause = 20;
    const auto put = [](POINT at, DWORD flags) {
        SetCursorPos(at.x, at.y);
        std::vector<INPUT> input{mouseInput(flags)};
        send(input);
        Sleep(kPause);
    };
    put(from, MOUSEEVENTF_LEFTDOWN);
    for (int step = 1; step <= kSteps; ++step) {
        put({from.x + (to.x - from.x) * step / kSteps, from.y + (to.y - from.y) * step / kSteps},
            MOUSEEVENTF_MOVE);
    }
    put(to, MOUSEEVENTF_LEFTUP);
}

HWND child(HWND window, const wchar_t* className, const wchar_t* text) {
    ChildSearch search{className, text, nullptr};
    EnumChildWindows(window, compareChild, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::wstring panel(HWND window, int number) {
    return panelText(child(window, STATUSCLASSNAMEW), static_cast<WPARAM>(number - 1))
        .value_or(L"no answer");
}

std::vector<TreeItem> roots(HWND tree) { return siblings(tree, next(tree, TVGN_ROOT, nullptr)); }

std::vector<TreeItem> children(HWND tree, HTREEITEM item) {
    return siblings(tree, next(tree, TVGN_CHILD, item));
}

TreeItem lookAt(HWND tree, HTREEITEM item) {
    struct Buffer {
        TVITEMW item;
        std::array<wchar_t, 512> text;
    } buffer{};
    RemoteMemory memory{tree, sizeof buffer};
    buffer.item.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_STATE;
    buffer.item.hItem = item;
    buffer.item.stateMask = TVIS_STATEIMAGEMASK;
    buffer.item.pszText =
        reinterpret_cast<wchar_t*>(static_cast<char*>(memory.address()) + offsetof(Buffer, text));
    buffer.item.cchTextMax = static_cast<int>(buffer.text.size());
    memory.put(&buffer, sizeof buffer);
    memory.fetch(tree, TVM_GETITEMW, 0, &buffer);
    constexpr UINT kTicked = 2;
    return {item, buffer.text.data(), (buffer.item.state >> 12) == kTicked};
}

/// The box stands left of the text.
void clickBox(HWND tree, HTREEITEM item) {
    const RECT area = areaOf(tree, item);
    click(tree, {area.left - 10, (area.top + area.bottom) / 2});
}

void clickText(HWND tree, HTREEITEM item) {
    const RECT area = areaOf(tree, item);
    click(tree, {area.left + 5, (area.top + area.bottom) / 2});
}

}  // namespace hands
