#include "tests/program/user_input.h"

#include "tests/program/running_viewer.h"

#include <vector>

namespace {

INPUT keyInput(WORD key, bool up) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = up ? KEYEVENTF_KEYUP : 0;
    const bool extended = (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT ||
                          key == VK_DELETE || key == VK_DIVIDE;
    if (extended) input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    return input;
}

void send(std::vector<INPUT> inputs) {
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

/// Long enough for a window to take what came before.
void pause() { Sleep(30); }

}  // namespace

UserInput::UserInput(HWND window) {
    eventually([&] {
        SetForegroundWindow(window);
        return GetForegroundWindow() == window;
    });
}

void UserInput::press(WORD key, std::initializer_list<WORD> held) const {
    std::vector<INPUT> inputs;
    for (const WORD other : held) inputs.push_back(keyInput(other, false));
    inputs.push_back(keyInput(key, false));
    inputs.push_back(keyInput(key, true));
    for (const WORD other : held) inputs.push_back(keyInput(other, true));
    send(std::move(inputs));
    pause();
}

void UserInput::moveTo(POINT at) const {
    SetCursorPos(at.x, at.y);
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = MOUSEEVENTF_MOVE;
    send({input});
    pause();
}

void UserInput::button(DWORD flag) const {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flag;
    send({input});
    pause();
}

void UserInput::click(POINT at) const {
    moveTo(at);
    button(MOUSEEVENTF_LEFTDOWN);
    button(MOUSEEVENTF_LEFTUP);
}

void UserInput::doubleClick(POINT at) const {
    click(at);
    button(MOUSEEVENTF_LEFTDOWN);
    button(MOUSEEVENTF_LEFTUP);
}

void UserInput::drag(POINT from, POINT to) const {
    constexpr int kSteps = 8;
    moveTo(from);
    button(MOUSEEVENTF_LEFTDOWN);
    for (int step = 1; step <= kSteps; ++step) {
        moveTo(
            {from.x + (to.x - from.x) * step / kSteps, from.y + (to.y - from.y) * step / kSteps});
    }
    button(MOUSEEVENTF_LEFTUP);
}

POINT middleOf(const RECT& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}
