#include "toolkit/forms/form.h"

#include "tests/toolkit/forms/forms_fixture.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/text_box.h"

#include <cmath>
#include <stdexcept>

using namespace forms_test;
using forms::Dpi;
using forms::Twips;

namespace {

class FormTest : public FormsTest {};

TEST_F(FormTest, LoadsOnceAndShows) {
    PlainForm form;
    EXPECT_FALSE(form.isLoaded());
    form.load();
    form.load();
    EXPECT_EQ(form.loads, 1);
    EXPECT_FALSE(form.visible());
    EXPECT_EQ(form.resizes, 0);
    form.show();
    EXPECT_EQ(form.loads, 1);
    EXPECT_TRUE(form.visible());
    EXPECT_GE(form.resizes, 1);
}

TEST_F(FormTest, HasTheClassItWasGiven) {
    PlainForm form({.className = L"forms_test.Named", .caption = L"Named form"});
    form.load();
    EXPECT_EQ(::FindWindowW(L"forms_test.Named", L"Named form"), form.hwnd());
}

TEST_F(FormTest, CanBeUnloadedAndLoadedAgain) {
    PlainForm form;
    forms::Button button;
    form.onBuild = [&] {
        form.createControls({{button, {L"button", L"One", 0_tw, 0_tw, 900_tw, 300_tw}}});
    };
    form.show();
    EXPECT_TRUE(form.unload());
    EXPECT_FALSE(form.isLoaded());
    EXPECT_FALSE(button.isCreated());
    form.show();
    EXPECT_EQ(form.loads, 2);
    EXPECT_EQ(button.caption(), L"One");
    button.destroy();
}

TEST_F(FormTest, UnloadCanBeRefused) {
    PlainForm form;
    form.show();
    form.onUnload = [](bool& cancel) { cancel = true; };
    ::SendMessageW(form.hwnd(), WM_CLOSE, 0, 0);
    EXPECT_EQ(form.unloads, 1);
    EXPECT_TRUE(form.isLoaded());
    form.onUnload = nullptr;
    ::SendMessageW(form.hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(form.isLoaded());
}

TEST_F(FormTest, TheListOfLoadedFormsFollows) {
    PlainForm first;
    PlainForm second;
    first.load();
    second.load();
    EXPECT_EQ(forms::loadedForms(), (std::vector<forms::Form*>{&first, &second}));
    first.unload();
    EXPECT_EQ(forms::loadedForms(), (std::vector<forms::Form*>{&second}));
}

TEST_F(FormTest, PlaceAndSizeAreTwipsOfTheWholeWindow) {
    PlainForm form;
    form.load();
    form.move({1500_tw, 750_tw, 6000_tw, 4500_tw});
    RECT rect{};
    ::GetWindowRect(form.hwnd(), &rect);
    const double perPixel = 1440.0 / form.dpi().value;
    EXPECT_EQ(rect.left, std::lround(1500 / perPixel));
    EXPECT_EQ(rect.top, std::lround(750 / perPixel));
    EXPECT_EQ(rect.right - rect.left, std::lround(6000 / perPixel));
    EXPECT_EQ(rect.bottom - rect.top, std::lround(4500 / perPixel));
}

TEST_F(FormTest, AFractionOfAPixelReadsBackAsItWasSet) {
    PlainForm form;
    form.load();
    form.setWidth(5001.25_tw);
    EXPECT_DOUBLE_EQ(form.width().value, 5001.25);
    ::SetWindowPos(form.hwnd(), nullptr, 0, 0, 480, 400, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_DOUBLE_EQ(form.width().value, 480 * 1440.0 / form.dpi().value);
}

TEST_F(FormTest, ResizeCanInsistOnALeastSize) {
    PlainForm form;
    form.onResize = [&] {
        if (form.width() < 5000_tw) form.setWidth(5000_tw);
        if (form.height() < 5000_tw) form.setHeight(5000_tw);
    };
    form.show();
    ::SetWindowPos(form.hwnd(), nullptr, 0, 0, 200, 600, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_DOUBLE_EQ(form.width().value, 5000);
    EXPECT_DOUBLE_EQ(form.height().value, 600 * 1440.0 / form.dpi().value);
}

TEST_F(FormTest, TheClientAreaGetsTheDesignedSize) {
    PlainForm form({.className = L"forms_test.Plain",
                    .border = forms::BorderStyle::fixedDialog,
                    .clientWidth = 4500_tw,
                    .clientHeight = 3000_tw});
    form.load();
    EXPECT_DOUBLE_EQ(form.clientWidth().value, 4500);
    EXPECT_DOUBLE_EQ(form.clientHeight().value, 3000);
}

TEST_F(FormTest, ThePartOfTheScreenThatAFormTakesCanBeComputed) {
    PlainForm form;
    form.load();
    form.move({form.screenWidth() * 0.1, form.screenHeight() * 0.1, form.screenWidth() * 0.8,
               form.screenHeight() * 0.8});
    RECT rect{};
    ::GetWindowRect(form.hwnd(), &rect);
    EXPECT_NEAR(rect.right - rect.left, ::GetSystemMetrics(SM_CXSCREEN) * 0.8, 1);
    EXPECT_NEAR(rect.top, ::GetSystemMetrics(SM_CYSCREEN) * 0.1, 1);
}

TEST_F(FormTest, CentresOnItsOwner) {
    PlainForm owner;
    PlainForm child;
    owner.show();
    child.load();
    owner.move({3000_tw, 1500_tw, 9000_tw, 6000_tw});
    child.move({0_tw, 0_tw, 3000_tw, 1500_tw});
    child.center(&owner);
    EXPECT_NEAR(child.left().value, 6000, 15);
    EXPECT_NEAR(child.top().value, 3750, 15);
}

TEST_F(FormTest, AFormCanBeShownWithoutTakingTheFocus) {
    PlainForm owner;
    PlainForm notice;
    forms::TextBox text;
    owner.onBuild = [&] {
        owner.createControls({{text, {L"text", L"", 0_tw, 0_tw, 900_tw, 300_tw}}});
    };
    owner.show();
    text.setFocus();
    notice.showInactive(owner);
    EXPECT_TRUE(notice.visible());
    EXPECT_GE(notice.resizes, 1);
    EXPECT_EQ(::GetWindow(notice.hwnd(), GW_OWNER), owner.hwnd());
    EXPECT_EQ(::GetActiveWindow(), owner.hwnd());
    EXPECT_TRUE(text.hasFocus());
    HWND below = notice.hwnd();
    while (below && below != owner.hwnd()) below = ::GetWindow(below, GW_HWNDNEXT);
    EXPECT_EQ(below, owner.hwnd()) << "the notice is not above its owner";
    notice.hide();
    EXPECT_TRUE(text.hasFocus());
    owner.destroy();
}

TEST_F(FormTest, WindowState) {
    PlainForm form;
    form.show();
    EXPECT_EQ(form.windowState(), forms::WindowState::normal);
    form.setWindowState(forms::WindowState::maximized);
    EXPECT_EQ(form.windowState(), forms::WindowState::maximized);
    form.setWindowState(forms::WindowState::minimized);
    EXPECT_EQ(form.windowState(), forms::WindowState::minimized);
    form.setWindowState(forms::WindowState::normal);
    EXPECT_NE(form.windowState(), forms::WindowState::minimized);
}

TEST_F(FormTest, ShowsTheMousePointerItWasGiven) {
    PlainForm form;
    form.show();
    const auto pointerOver = [&] {
        ::SetCursor(nullptr);
        ::SendMessageW(form.hwnd(), WM_SETCURSOR, reinterpret_cast<WPARAM>(form.hwnd()),
                       MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        return ::GetCursor();
    };
    {
        const forms::WaitCursor wait(form);
        EXPECT_EQ(pointerOver(), ::LoadCursorW(nullptr, IDC_WAIT));
    }
    EXPECT_EQ(pointerOver(), ::LoadCursorW(nullptr, IDC_ARROW));
    form.setMousePointer(forms::MousePointer{13});
    EXPECT_EQ(pointerOver(), ::LoadCursorW(nullptr, IDC_APPSTARTING));
}

TEST_F(FormTest, ThePointerHoldsOverTheControlsToo) {
    PlainForm form;
    forms::TextBox box;
    form.onBuild = [&] {
        form.createControls({{box, {L"box", L"", 0_tw, 0_tw, 3000_tw, 300_tw}}});
    };
    form.show();
    form.setMousePointer(forms::MousePointer::hourglass);
    ::SetCursor(nullptr);
    ::SendMessageW(box.hwnd(), WM_SETCURSOR, reinterpret_cast<WPARAM>(box.hwnd()),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(::GetCursor(), ::LoadCursorW(nullptr, IDC_WAIT));
    form.destroy();
}

TEST_F(FormTest, AModalFormHoldsTheOthersAndReturnsWhenHidden) {
    PlainForm main;
    PlainForm dialog;
    main.show();
    bool mainWasEnabled = true;
    forms::post([&] {
        mainWasEnabled = ::IsWindowEnabled(main.hwnd()) != FALSE;
        dialog.hide();
    });
    dialog.showModal(&main);
    EXPECT_FALSE(mainWasEnabled);
    EXPECT_TRUE(::IsWindowEnabled(main.hwnd()));
    EXPECT_TRUE(dialog.isLoaded());
    EXPECT_EQ(::GetActiveWindow(), main.hwnd());
}

TEST_F(FormTest, AModalFormReturnsWhenClosed) {
    PlainForm main;
    PlainForm dialog;
    main.show();
    forms::post([&] { ::PostMessageW(dialog.hwnd(), WM_CLOSE, 0, 0); });
    dialog.showModal(&main);
    EXPECT_FALSE(dialog.isLoaded());
    EXPECT_TRUE(::IsWindowEnabled(main.hwnd()));
    EXPECT_EQ(::GetActiveWindow(), main.hwnd());
}

TEST_F(FormTest, AModalFormOverAModalForm) {
    PlainForm main;
    PlainForm first;
    PlainForm second;
    main.show();
    std::vector<int> order;
    forms::post([&] {
        forms::post([&] {
            order.push_back(::IsWindowEnabled(first.hwnd()));
            second.unload();
        });
        second.showModal(&first);
        order.push_back(::IsWindowEnabled(first.hwnd()));
        order.push_back(::IsWindowEnabled(main.hwnd()));
        first.unload();
    });
    first.showModal(&main);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 0}));
    EXPECT_TRUE(::IsWindowEnabled(main.hwnd()));
}

TEST_F(FormTest, AnErrorInAnEventProcedureIsReportedAndTheFormLivesOn) {
    PlainForm form;
    forms::Button button;
    form.onBuild = [&] {
        form.createControls({{button, {L"button", L"", 0_tw, 0_tw, 900_tw, 300_tw}}});
    };
    form.show();
    button.onClick = [] { throw std::runtime_error("click"); };
    button.click();
    EXPECT_EQ(errors, std::vector<std::string>{"click"});
    EXPECT_TRUE(form.visible());
    form.destroy();
}

TEST_F(FormTest, AButtonCanUnloadItsForm) {
    PlainForm form;
    forms::Button button;
    form.onBuild = [&] {
        form.createControls({{button, {L"button", L"OK", 0_tw, 0_tw, 900_tw, 300_tw}}});
        button.onClick = [&] { form.unload(); };
    };
    form.show();
    ::PostMessageW(button.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    ::PostMessageW(button.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_TRUE(waitUntil([&] { return !form.isLoaded(); }));
    EXPECT_FALSE(button.isCreated());
    EXPECT_TRUE(errors.empty());
}

TEST_F(FormTest, TheRightButtonAsksForAMenuInsideOnly) {
    class MenuForm : public PlainForm {
    public:
        std::vector<POINT> asked;

    private:
        void Form_ContextMenu(POINT at) override { asked.push_back(at); }
    };
    MenuForm form;
    form.show();
    POINT inside{20, 20};
    ::ClientToScreen(form.hwnd(), &inside);
    ::SendMessageW(form.hwnd(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(form.hwnd()),
                   MAKELPARAM(inside.x, inside.y));
    ASSERT_EQ(form.asked.size(), 1u);
    EXPECT_EQ(form.asked[0].x, inside.x);
}

TEST_F(FormTest, TextHeightIsThatOfItsFont) {
    PlainForm form;
    form.load();
    forms::Font font = form.font();
    const Twips before = form.textHeight(L"TEST");
    EXPECT_GT(before.value, 100);
    font.points *= 2;
    form.setFont(font);
    EXPECT_NEAR(form.textHeight(L"TEST").value, 2 * before.value, 60);
}

TEST_F(FormTest, AFaceTakesAllControlsAndGivesThemBackTheirOwn) {
    PlainForm form;
    forms::Button plain;
    forms::Button fixed;
    forms::Font own{.name = L"Courier New", .points = 11, .bold = true};
    fixed.setFont(own);
    const forms::FontFace face{.name = L"Liberation Serif", .charset = 128};
    form.setFace(face);
    form.onBuild = [&] {
        form.createControls({{plain, {L"plain", L"", 0_tw, 0_tw, 900_tw, 300_tw}},
                             {fixed, {L"fixed", L"", 0_tw, 0_tw, 900_tw, 300_tw}}});
    };
    form.load();
    for (const forms::Control* control : {&plain, &fixed}) {
        EXPECT_EQ(control->font().name, face.name);
        LOGFONTW logical{};
        ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(control->hwnd(), WM_GETFONT, 0, 0)),
                     sizeof logical, &logical);
        EXPECT_EQ(logical.lfFaceName, face.name);
        EXPECT_EQ(logical.lfCharSet, 128);
    }
    EXPECT_EQ(form.font().name, face.name);
    EXPECT_EQ(fixed.font().points, 11) << "size and weight stay";
    EXPECT_TRUE(fixed.font().bold);
    form.setFace(std::nullopt);
    EXPECT_EQ(fixed.font(), own);
    EXPECT_EQ(plain.font(), form.font());
    EXPECT_EQ(form.font(), forms::messageFont());
    form.destroy();
}

TEST_F(FormTest, FindsControlsByNameAndInTableOrder) {
    PlainForm form;
    forms::Button one;
    forms::Button two;
    form.onBuild = [&] {
        form.createControls({{one, {L"one", L"", 0_tw, 0_tw, 900_tw, 300_tw}},
                             {two, {L"two", L"", 0_tw, 0_tw, 900_tw, 300_tw}}});
    };
    form.load();
    EXPECT_EQ(form.controls(), (std::vector<forms::Control*>{&one, &two}));
    EXPECT_EQ(form.control(L"two"), &two);
    EXPECT_EQ(form.control(L"three"), nullptr);
    form.destroy();
}

class FormDpiTest : public FormsTest, public testing::WithParamInterface<unsigned> {};

TEST_P(FormDpiTest, EverythingIsLaidOutAnewAtAnotherDensity) {
    const unsigned dpi = GetParam();
    PlainForm form;
    forms::Button button;
    form.onBuild = [&] {
        form.createControls({{button, {L"button", L"OK", 180_tw, 540_tw, 315_tw, 315_tw}}});
    };
    form.show();
    const int resizes = form.resizes;
    const RECT suggested{10, 20, 10 + static_cast<int>(400 * dpi / 96),
                         20 + static_cast<int>(300 * dpi / 96)};
    ::SendMessageW(form.hwnd(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi),
                   reinterpret_cast<LPARAM>(&suggested));

    EXPECT_EQ(form.dpi().value, dpi);
    RECT rect{};
    ::GetWindowRect(form.hwnd(), &rect);
    EXPECT_TRUE(::EqualRect(&rect, &suggested));
    EXPECT_GT(form.resizes, resizes);

    ::GetWindowRect(button.hwnd(), &rect);
    ::MapWindowPoints(nullptr, form.hwnd(), reinterpret_cast<POINT*>(&rect), 2);
    EXPECT_EQ(rect.left, forms::toPixels(180_tw, Dpi(dpi)).value);
    EXPECT_EQ(rect.top, forms::toPixels(540_tw, Dpi(dpi)).value);
    EXPECT_EQ(rect.right - rect.left, forms::toPixels(315_tw, Dpi(dpi)).value);
    EXPECT_DOUBLE_EQ(button.left().value, 180);
    EXPECT_DOUBLE_EQ(button.height().value, 315);

    LOGFONTW font{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(button.hwnd(), WM_GETFONT, 0, 0)),
                 sizeof font, &font);
    EXPECT_EQ(font.lfHeight, -std::lround(button.font().points * dpi / 72));
    form.destroy();
}

INSTANTIATE_TEST_SUITE_P(Densities, FormDpiTest, testing::Values(120u, 144u, 192u),
                         [](const auto& density) { return std::to_string(density.param); });

}  // namespace
