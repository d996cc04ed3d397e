// Keys and mouse as a user's hands give them, to whatever window has the focus.
//
//   UserInput hands{viewer.waitForWindow()};
//   hands.press(VK_END, {VK_CONTROL});
//   hands.drag(from, to);
//
// Screen pixels.
#pragma once

#include <windows.h>

#include <initializer_list>

class UserInput {
public:
    /// Brings the window to the front first.
    explicit UserInput(HWND window);

    /// A key, with others held down meanwhile.
    void press(WORD key, std::initializer_list<WORD> held = {}) const;
    void click(POINT at) const;
    void doubleClick(POINT at) const;
    /// In some steps, as a hand moves.
    void drag(POINT from, POINT to) const;

private:
    void moveTo(POINT at) const;
    void button(DWORD flag) const;
};

/// The middle of a rectangle.
POINT middleOf(const RECT& rect);
