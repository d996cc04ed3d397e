#include "toolkit/forms/application.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

using namespace forms_test;

namespace {

class ApplicationTest : public FormsTest {};

TEST_F(ApplicationTest, PostedFunctionsRunInTheOrderOfThePosting) {
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        forms::post([&order, i] { order.push_back(i); });
    }
    EXPECT_TRUE(order.empty());
    forms::doEvents();
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(ApplicationTest, AllThatWaitsCostsOneMessage) {
    for (int i = 0; i < 1000; ++i) forms::post([] {});
    int messages = 0;
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ++messages;
        ::DispatchMessageW(&message);
    }
    EXPECT_EQ(messages, 1);
}

TEST_F(ApplicationTest, AnotherThreadsFunctionsRunHere) {
    constexpr int kCount = 10000;
    const auto here = std::this_thread::get_id();
    std::vector<int> order;
    bool elsewhere = false;
    std::thread worker([&] {
        for (int i = 0; i < kCount; ++i) {
            forms::post([&, i] {
                elsewhere = elsewhere || std::this_thread::get_id() != here;
                order.push_back(i);
            });
        }
    });
    EXPECT_TRUE(waitUntil([&] { return order.size() == kCount; }));
    worker.join();
    EXPECT_FALSE(elsewhere);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(ApplicationTest, TheOrderHoldsWhenAPostedFunctionLetsEventsRun) {
    std::vector<int> order;
    forms::post([&] {
        order.push_back(1);
        forms::doEvents();
        order.push_back(4);
    });
    forms::post([&] { order.push_back(2); });
    forms::post([&] { order.push_back(3); });
    forms::doEvents();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(ApplicationTest, APostedFunctionThatFailsDoesNotHoldUpTheNext) {
    bool ran = false;
    forms::post([] { throw std::runtime_error("posted"); });
    forms::post([&] { ran = true; });
    forms::doEvents();
    EXPECT_TRUE(ran);
    EXPECT_EQ(errors, std::vector<std::string>{"posted"});
}

TEST_F(ApplicationTest, EventsThatKeepComingDoNotHoldDoEvents) {
    std::atomic<bool> stop{false};
    int count = 0;
    std::function<void()> again = [&] {
        ++count;
        if (!stop) forms::post(again);
    };
    forms::post(again);
    forms::doEvents();
    EXPECT_GE(count, 1);
    stop = true;
    forms::doEvents();
}

TEST(ApplicationLifeTest, WhatIsPostedBeforeRunsWhenThereIsAnApplication) {
    bool ran = false;
    forms::post([&] { ran = true; });
    forms::Application application;
    EXPECT_TRUE(waitUntil([&] { return ran; }));
}

TEST(ApplicationLifeTest, WhatIsLeftAtTheEndIsDropped) {
    bool ran = false;
    {
        forms::Application application;
        forms::post([&] { ran = true; });
    }
    forms::Application application;
    forms::doEvents();
    EXPECT_FALSE(ran);
}

TEST_F(ApplicationTest, RunEndsWithTheLastForm) {
    PlainForm form;
    form.show();
    forms::post([&] { form.unload(); });
    EXPECT_EQ(forms::run(), 0);
}

TEST_F(ApplicationTest, RunReturnsTheExitCode) {
    PlainForm form;
    form.show();
    forms::post([] { forms::quit(3); });
    EXPECT_EQ(forms::run(), 3);
}

TEST_F(ApplicationTest, QuitEndsAModalFormAndThenRun) {
    PlainForm main;
    PlainForm modal;
    main.show();
    forms::post([&] {
        forms::post([] { forms::quit(4); });
        modal.showModal(&main);
    });
    EXPECT_EQ(forms::run(), 4);
    EXPECT_TRUE(::IsWindowEnabled(main.hwnd()));
}

TEST_F(ApplicationTest, DoEventsLeavesTheEndOfTheProgramToRun) {
    PlainForm form;
    form.show();
    forms::quit(5);
    forms::doEvents();
    EXPECT_EQ(forms::run(), 5);
}

TEST_F(ApplicationTest, DoEventsPaints) {
    PlainForm form;
    form.show();
    ::InvalidateRect(form.hwnd(), nullptr, TRUE);
    forms::doEvents();
    EXPECT_FALSE(::GetUpdateRect(form.hwnd(), nullptr, FALSE));
}

/// For work on another thread: looks until the condition holds. False after half a minute.
bool comesTrue(const std::function<bool()>& condition,
               const std::function<void()>& meanwhile = {}) {
    for (int look = 0; look < 3000 && !condition(); ++look) {
        if (meanwhile) meanwhile();
        ::Sleep(10);
    }
    return condition();
}

/// Counts how often it is painted, and the keys that it gets.
class WatchedForm : public PlainForm {
public:
    std::atomic<int> paints{0};
    std::atomic<int> keys{0};

    /// For work on another thread: waits until the form was painted that often once more. Before each
    /// paint the keyboard was looked at.
    bool isPaintedAgain(int times) {
        const int before = paints;
        return comesTrue([&] { return paints >= before + times; },
                         [&] { ::InvalidateRect(hwnd(), nullptr, TRUE); });
    }

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_PAINT) ++paints;
        if (message == WM_KEYDOWN) ++keys;
        return PlainForm::handleMessage(message, wParam, lParam);
    }
};

TEST_F(ApplicationTest, WindowsArePaintedWhileWorkRuns) {
    WatchedForm form;
    form.show();
    forms::doEvents();
    const auto here = std::this_thread::get_id();
    bool painted = false;
    bool elsewhere = false;
    bool posted = false;
    int keysMeanwhile = 0;
    forms::post([&] { posted = true; });
    forms::runWhilePainting([&] {
        elsewhere = std::this_thread::get_id() != here;
        ::PostMessageW(form.hwnd(), WM_KEYDOWN, VK_SPACE, 0);
        painted = form.isPaintedAgain(3);
        keysMeanwhile = form.keys;
    });
    EXPECT_TRUE(elsewhere);
    EXPECT_TRUE(painted);
    // Input and what was posted wait for their turn.
    EXPECT_EQ(keysMeanwhile, 0);
    EXPECT_FALSE(posted);
    EXPECT_TRUE(waitUntil([&] { return posted && form.keys == 1; }));
}

/// Through the system's queue of input, as from a keyboard.
void sendKey(int key, DWORD flags = 0) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = static_cast<WORD>(key);
    input.ki.dwFlags = flags;
    ::SendInput(1, &input, sizeof input);
}

/// As a keyboard that is played by a program: the key is let go at once.
void typeKey(int key) {
    sendKey(key);
    sendKey(key, KEYEVENTF_KEYUP);
}

TEST_F(ApplicationTest, EscapeStopsWorkThatCanBeStopped) {
    WatchedForm form;
    form.show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.hwnd(); }));
    std::atomic<int> stops{0};
    {
        const forms::OnEscape stop{[&] { ++stops; }};
        forms::runWhilePainting([&] {
            typeKey('A');
            // A finger is still on the key when the work has long noticed it.
            sendKey(VK_ESCAPE);
            comesTrue([&] { return stops > 0; });
            form.isPaintedAgain(3);
            sendKey(VK_ESCAPE, KEYEVENTF_KEYUP);
        });
    }
    EXPECT_EQ(stops, 1);
    typeKey('B');
    ASSERT_TRUE(waitUntil([&] { return form.keys > 0; }));
    EXPECT_EQ(form.keys, 1) << "Escape and what was typed before it are gone";
}

TEST_F(ApplicationTest, EscapeStopsTheOuterWorkWhenTheInnerIsDone) {
    WatchedForm form;
    form.show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.hwnd(); }));
    std::atomic<int> outerStops{0};
    std::atomic<int> innerStops{0};
    const forms::OnEscape outer{[&] { ++outerStops; }};
    {
        const forms::OnEscape inner{[&] { ++innerStops; }};
    }
    forms::runWhilePainting([&] {
        typeKey(VK_ESCAPE);
        comesTrue([&] { return outerStops > 0; });
    });
    EXPECT_EQ(outerStops, 1);
    EXPECT_EQ(innerStops, 0);
}

TEST_F(ApplicationTest, EscapeStopsWorkHoweverShortlyItIsPressed) {
    WatchedForm form;
    form.show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.hwnd(); }));
    std::atomic<int> stops{0};
    const forms::OnEscape stop{[&] { ++stops; }};
    // Between two looks at the keyboard, or right at one: the press begins at another moment each time.
    for (int round = 1; round <= 20; ++round) {
        forms::runWhilePainting([&] {
            ::Sleep(static_cast<DWORD>(round * 7));
            typeKey(VK_ESCAPE);
            comesTrue([&] { return stops >= round; });
        });
        ASSERT_EQ(stops, round);
    }
}

TEST_F(ApplicationTest, EscapeBeforeTheWorkDoesNotStopIt) {
    WatchedForm form;
    form.show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.hwnd(); }));
    std::atomic<int> stops{0};
    bool painted = false;
    typeKey(VK_ESCAPE);
    {
        const forms::OnEscape stop{[&] { ++stops; }};
        forms::runWhilePainting([&] { painted = form.isPaintedAgain(3); });
    }
    EXPECT_TRUE(painted);
    EXPECT_EQ(stops, 0);
    EXPECT_TRUE(waitUntil([&] { return form.keys == 1; })) << "the key waits as others do";
}

TEST_F(ApplicationTest, WithoutAHandlerEscapeWaitsAsOtherKeysDo) {
    WatchedForm form;
    form.show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.hwnd(); }));
    int stops = 0;
    bool painted = false;
    {
        const forms::OnEscape stop{[&] { ++stops; }};
    }
    forms::runWhilePainting([&] {
        typeKey('A');
        typeKey(VK_ESCAPE);
        painted = form.isPaintedAgain(3);
    });
    EXPECT_TRUE(painted);
    EXPECT_EQ(stops, 0);
    ASSERT_TRUE(waitUntil([&] { return form.keys == 2; }));
}

TEST_F(ApplicationTest, WhatWorkThrowsArrivesHere) {
    EXPECT_THROW(forms::runWhilePainting([] { throw std::runtime_error{"no"}; }),
                 std::runtime_error);
}

}  // namespace
