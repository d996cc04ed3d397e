// A user's hands and eyes on the viewer's windows: keys and mouse go through the system's queue of
// input, and what is seen is what controls of another process tell.
//
//   hands::front(window);
//   hands::press('F', {VK_CONTROL});
//   hands::type(L"timeout");
//   hands::click(hands::child(window, L"Button", L"Apply Filter"));
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace hands {

/// Brings the window to the front, so that keys go to it. False if it does not come.
bool front(HWND window);

/// Presses and releases a key while others are held down.
void press(int key, std::initializer_list<int> held = {});

/// Types characters, whatever keyboard there is.
void type(const std::wstring& text);

/// Clicks at a place in the window's client area, and in its middle.
void click(HWND window, POINT place);
void click(HWND window);

/// Presses the left button at one place of the screen and lets it go at another, with a few steps
/// between as a hand makes them.
void drag(POINT from, POINT to);

/// A child of a class, at any depth, whose text is the one given, if one is; null if there is none.
HWND child(HWND window, const wchar_t* className, const wchar_t* text = nullptr);

/// Text of a panel of the window's status bar.
std::wstring panel(HWND window, int number);

// ---- Trees ----

struct TreeItem {
    HTREEITEM handle = nullptr;
    std::wstring text;
    bool ticked = false;
};

std::vector<TreeItem> roots(HWND tree);
std::vector<TreeItem> children(HWND tree, HTREEITEM item);
TreeItem lookAt(HWND tree, HTREEITEM item);

/// Scrolls to the item and clicks into its check box.
void clickBox(HWND tree, HTREEITEM item);

/// Scrolls to the item and clicks on its text.
void clickText(HWND tree, HTREEITEM item);

}  // namespace hands
