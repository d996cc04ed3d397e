#include "tests/toolkit/forms/forms_fixture.h"

#include <chrono>

namespace forms_test {

bool waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        MSG message{};
        if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            forms::dispatchMessage(message);
        } else {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
    }
    return true;
}

void pressKey(int key) {
    MSG message{};
    message.hwnd = GetFocus();
    message.message = WM_KEYDOWN;
    message.wParam = static_cast<WPARAM>(key);
    message.lParam = 1;
    forms::dispatchMessage(message);
    message.message = WM_KEYUP;
    message.lParam = static_cast<LPARAM>(0xC0000001);
    message.hwnd = GetFocus();
    forms::dispatchMessage(message);
    forms::doEvents();
}

HeldKeys::HeldKeys(const std::vector<int>& keys) {
    // The first question brings the thread's key state up to date; what is set before is lost.
    GetKeyState(VK_SHIFT);
    GetKeyboardState(before_);
    BYTE held[256];
    std::copy(std::begin(before_), std::end(before_), held);
    for (const int key : keys) held[key] = 0x80;
    SetKeyboardState(held);
}

HeldKeys::~HeldKeys() { SetKeyboardState(before_); }

FormsTest::FormsTest() {
    previous_ = forms::setUnexpectedErrorHandler([this](std::exception_ptr error) {
        try {
            std::rethrow_exception(error);
        } catch (const std::exception& e) {
            errors.emplace_back(e.what());
        } catch (...) {
            errors.emplace_back("?");
        }
    });
}

FormsTest::~FormsTest() { forms::setUnexpectedErrorHandler(previous_); }

}  // namespace forms_test
