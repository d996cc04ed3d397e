// What the tests of forms share: an application, a form to put controls on, and waiting for what
// comes through the message queue.
#pragma once

#include "toolkit/forms/application.h"
#include "toolkit/forms/form.h"
#include "toolkit/forms/units.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace forms_test {

using namespace forms::literals;

// Lets messages run until the condition holds. False after five seconds.
bool waitUntil(const std::function<bool()>& condition);

// Posts a key to the window with the focus and lets the pump translate it, as if typed.
void pressKey(int key);

// Holds modifier keys down, for the thread's own key state, until the end of the block.
class HeldKeys {
public:
    explicit HeldKeys(const std::vector<int>& keys);
    ~HeldKeys();
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

private:
    BYTE before_[256];
};

// A form that is put together by the test. Counts its events.
class PlainForm : public forms::Form {
public:
    explicit PlainForm(const forms::FormOptions& options = {.className = L"forms_test.Plain",
                                                            .caption = L"Plain"})
        : Form(options) {}
    ~PlainForm() override { destroy(); }

    using Form::createControls;
    using Window::handleMessage;

    std::function<void()> onBuild;
    std::function<void()> onLoad;
    std::function<void()> onResize;
    std::function<void(bool&)> onUnload;
    int loads = 0;
    int resizes = 0;
    int unloads = 0;

private:
    void build() override {
        if (onBuild) onBuild();
    }
    void Form_Load() override {
        ++loads;
        if (onLoad) onLoad();
    }
    void Form_Resize() override {
        ++resizes;
        if (onResize) onResize();
    }
    void Form_Unload(bool& cancel) override {
        ++unloads;
        if (onUnload) onUnload(cancel);
    }
};

// Collects the errors that reached the handler of unexpected errors.
class FormsTest : public testing::Test {
protected:
    FormsTest();
    ~FormsTest() override;

    forms::Application application;
    std::vector<std::string> errors;

private:
    forms::UnexpectedErrorHandler previous_;
};

}  // namespace forms_test
