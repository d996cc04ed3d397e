#include "toolkit/forms/window.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <stdexcept>
#include <system_error>

using namespace forms_test;

namespace {

constexpr UINT kAsk = WM_APP + 10;
constexpr UINT kFail = WM_APP + 11;

class OwnWindow : public forms::Window {
public:
    void create(const wchar_t* className = L"forms_test.Own") {
        Creation creation;
        creation.className = className;
        creation.style = WS_OVERLAPPED;
        creation.bounds = {0, 0, 50, 50};
        createOwn(creation);
    }
    using Window::send;

    bool failsToPaint = false;
    int paints = 0;

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == kAsk) return static_cast<LRESULT>(wParam) * 2;
        if (message == kFail) throw std::runtime_error("failed in a message");
        if (message == WM_PAINT && failsToPaint) {
            ++paints;
            throw std::runtime_error("failed to paint");
        }
        return Window::handleMessage(message, wParam, lParam);
    }
};

class StandardWindow : public forms::Window {
public:
    void create(const wchar_t* className, const forms::Window& parent) {
        Creation creation;
        creation.className = className;
        creation.text = L"text";
        creation.style = WS_CHILD | ES_AUTOHSCROLL;
        creation.bounds = {0, 0, 100, 20};
        creation.parent = parent.hwnd();
        createStandard(creation);
    }
    using Window::send;
    int characters = 0;

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_CHAR) ++characters;
        return Window::handleMessage(message, wParam, lParam);
    }
};

class WindowTest : public FormsTest {};

TEST_F(WindowTest, RoutesMessagesToTheVirtualMember) {
    OwnWindow window;
    window.create();
    EXPECT_EQ(window.send(kAsk, 21), 42);
    EXPECT_EQ(forms::Window::from(window.hwnd()), &window);
}

TEST_F(WindowTest, SeesTheMessagesOfAStandardControlFirst) {
    OwnWindow parent;
    parent.create();
    StandardWindow edit;
    edit.create(L"EDIT", parent);
    edit.send(WM_CHAR, L'x');
    EXPECT_EQ(edit.characters, 1);
    EXPECT_EQ(forms::windowText(edit.hwnd()), L"xtext");
}

TEST_F(WindowTest, AnExceptionStaysInsideTheWindowProcedure) {
    OwnWindow window;
    window.create();
    EXPECT_EQ(window.send(kFail), 0);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], "failed in a message");
    EXPECT_EQ(window.send(kAsk, 1), 2);
}

TEST_F(WindowTest, AWindowThatFailsToPaintIsNotAskedForEver) {
    OwnWindow window;
    window.create();
    window.failsToPaint = true;
    ::ShowWindow(window.hwnd(), SW_SHOW);
    ::UpdateWindow(window.hwnd());
    forms::doEvents();
    forms::doEvents();
    EXPECT_GE(window.paints, 1);
    EXPECT_LE(window.paints, 3);
    EXPECT_FALSE(::GetUpdateRect(window.hwnd(), nullptr, FALSE));
}

TEST_F(WindowTest, AFailingErrorHandlerIsContainedToo) {
    const auto previous = forms::setUnexpectedErrorHandler([](std::exception_ptr) { throw 1; });
    OwnWindow window;
    window.create();
    EXPECT_EQ(window.send(kFail), 0);
    forms::setUnexpectedErrorHandler(previous);
}

TEST_F(WindowTest, ForgetsTheHandleWhenTheWindowIsDestroyed) {
    OwnWindow window;
    window.create();
    const HWND handle = window.hwnd();
    ::DestroyWindow(handle);
    EXPECT_FALSE(window.isCreated());
    EXPECT_EQ(forms::Window::from(handle), nullptr);
    window.create();
    EXPECT_TRUE(window.isCreated());
}

TEST_F(WindowTest, DestroysItsWindowWithItself) {
    OwnWindow parent;
    parent.create();
    HWND handle = nullptr;
    {
        StandardWindow edit;
        edit.create(L"EDIT", parent);
        handle = edit.hwnd();
        EXPECT_TRUE(::IsWindow(handle));
    }
    EXPECT_FALSE(::IsWindow(handle));
}

TEST_F(WindowTest, RefusesAnUnknownClassWithTheSystemsError) {
    OwnWindow parent;
    parent.create();
    StandardWindow window;
    EXPECT_THROW(window.create(L"no such class", parent), std::system_error);
    EXPECT_FALSE(window.isCreated());
}

TEST_F(WindowTest, ReadsTextOfAnyLength) {
    OwnWindow parent;
    parent.create();
    StandardWindow edit;
    edit.create(L"EDIT", parent);
    const std::wstring text(100000, L'\x00E4');
    ::SetWindowTextW(edit.hwnd(), text.c_str());
    EXPECT_EQ(forms::windowText(edit.hwnd()), text);
}

}  // namespace
