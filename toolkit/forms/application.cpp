#include "toolkit/forms/application.h"

#include "toolkit/forms/form.h"
#include "toolkit/forms/window.h"

#include <commctrl.h>
#include <ole2.h>

#include <deque>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace forms {
namespace {

constexpr UINT kRunPosted = WM_APP + 1;

// The functions that wait for the user-interface thread, and the window that wakes it.
class PostedFunctions : public Window {
public:
    static PostedFunctions& instance() {
        static PostedFunctions queue;
        return queue;
    }

    void open() {
        Creation creation;
        creation.className = L"forms.Posted";
        creation.parent = HWND_MESSAGE;
        createOwn(creation);
        const std::lock_guard lock(mutex_);
        target_ = hwnd();
        signal();
    }

    void close() {
        {
            const std::lock_guard lock(mutex_);
            target_ = nullptr;
            signalled_ = false;
            waiting_.clear();
        }
        destroy();
    }

    void add(std::function<void()> function) {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(function));
        signal();
    }

    void wake() {
        const std::lock_guard lock(mutex_);
        signal();
    }

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == kRunPosted) {
            runWaiting();
            return 0;
        }
        return Window::handleMessage(message, wParam, lParam);
    }

private:
    // Requires: mutex_ is held.
    void signal() {
        if (target_ && !signalled_ && !waiting_.empty()) {
            signalled_ = ::PostMessageW(target_, kRunPosted, 0, 0) != FALSE;
        }
    }

    // Runs as many as wait now. Each is taken from the common queue just before it runs, so that
    // the order holds when one of them pumps messages and this is entered again.
    void runWaiting() {
        for (std::size_t left = startBatch(); left > 0; --left) {
            const std::function<void()> function = takeNext();
            if (!function) return;
            try {
                function();
            } catch (...) {
                unexpectedError(std::current_exception());
            }
        }
    }

    std::size_t startBatch() {
        const std::lock_guard lock(mutex_);
        signalled_ = false;
        return waiting_.size();
    }

    std::function<void()> takeNext() {
        const std::lock_guard lock(mutex_);
        if (waiting_.empty()) return nullptr;
        std::function<void()> function = std::move(waiting_.front());
        waiting_.pop_front();
        return function;
    }

    // Written by every thread that posts, read by the user-interface thread; all under mutex_.
    std::mutex mutex_;
    std::deque<std::function<void()>> waiting_;
    HWND target_ = nullptr;
    bool signalled_ = false;
};

void paintAllForms() {
    for (const Form* form : loadedForms()) {
        ::RedrawWindow(form->hwnd(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
}

std::function<void()>& escapeHandler() {
    static std::function<void()> current;
    return current;
}

// Whether Escape was pressed since the last call or is down now. The key itself, not its message:
// other keys may wait before that, and are to go on waiting. A press can begin and end between two
// calls, so that looking at the key's present state alone would miss it.
bool takeEscape() {
    const bool pressed = ::GetAsyncKeyState(VK_ESCAPE) != 0;
    const DWORD owner = ::GetWindowThreadProcessId(::GetForegroundWindow(), nullptr);
    return pressed && owner == ::GetCurrentThreadId();
}

void dropKeysUpToEscape() {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE) &&
           message.wParam != VK_ESCAPE) {
    }
}

}  // namespace

Application::Application() {
    // A program that initialised COM itself in the same way is fine.
    const HRESULT result = OleInitialize(nullptr);
    if (FAILED(result)) {
        throw std::runtime_error("COM could not be initialised for the user interface");
    }
    comInitialised_ = true;
    INITCOMMONCONTROLSEX classes{};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES;
    ::InitCommonControlsEx(&classes);
    PostedFunctions::instance().open();
}

Application::~Application() {
    PostedFunctions::instance().close();
    if (comInitialised_) OleUninitialize();
}

void post(std::function<void()> function) { PostedFunctions::instance().add(std::move(function)); }

void wakePosted() { PostedFunctions::instance().wake(); }

void dispatchMessage(MSG& message) {
    Form* form = Form::of(message.hwnd);
    if (form && form->translateMessage(message)) return;
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
}

int run() {
    MSG message{};
    while (!loadedForms().empty()) {
        const BOOL fetched = ::GetMessageW(&message, nullptr, 0, 0);
        if (fetched == -1) throwLastError("GetMessageW");
        if (fetched == 0) return static_cast<int>(message.wParam);
        dispatchMessage(message);
    }
    return 0;
}

void doEvents() {
    wakePosted();
    const DWORD start = ::GetTickCount();
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // Left for the loop that it is meant to end.
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        dispatchMessage(message);
        // A message that came after the call shows that the pending ones are done. The clock wraps
        // around after 49 days; the difference does not mind.
        if (static_cast<LONG>(message.time - start) > 0) break;
    }
    paintAllForms();
}

OnEscape::OnEscape(std::function<void()> stop)
    : previous_(std::exchange(escapeHandler(), std::move(stop))) {}

OnEscape::~OnEscape() { escapeHandler() = std::move(previous_); }

void runWhilePainting(const std::function<void()>& work) {
    const HANDLE done = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!done) {
        work();
        return;
    }
    takeEscape();  // what was pressed before the work is no wish to stop it
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        ::SetEvent(done);
    });
    // Asking for messages now and then tells the system that the windows are alive.
    constexpr DWORD kAliveMilliseconds = 100;
    bool stopped = false;
    while (::MsgWaitForMultipleObjects(1, &done, FALSE, kAliveMilliseconds,
                                       QS_PAINT | QS_SENDMESSAGE | QS_KEY) != WAIT_OBJECT_0) {
        if (!stopped && escapeHandler() && takeEscape()) {
            stopped = true;
            escapeHandler()();
        }
        MSG message{};
        while (::PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE)) {
            ::DispatchMessageW(&message);
            if (::WaitForSingleObject(done, 0) == WAIT_OBJECT_0) break;
        }
    }
    worker.join();
    ::CloseHandle(done);
    if (stopped) dropKeysUpToEscape();
    if (failure) std::rethrow_exception(failure);
}

SteppedWork::SteppedWork() : lastLook_(::GetTickCount()) {
    takeEscape();  // what was pressed before the work is no wish to stop it
}

SteppedWork::~SteppedWork() {
    if (stopped_) dropKeysUpToEscape();
}

bool SteppedWork::goesOn() {
    constexpr DWORD kLookMilliseconds = 50;
    const DWORD now = ::GetTickCount();
    if (stopped_ || now - lastLook_ < kLookMilliseconds) return !stopped_;
    lastLook_ = now;
    stopped_ = takeEscape();
    // Looking for messages answers the ones that were sent; those that were posted stay.
    MSG message{};
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    paintAllForms();
    return !stopped_;
}

void quit(int exitCode) { ::PostQuitMessage(exitCode); }

}  // namespace forms
