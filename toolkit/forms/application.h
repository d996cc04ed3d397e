// Application: what a program needs before its first window, and the message pump.
//
//   forms::Application application;      // first thing in wWinMain
//   frmMain mainWindow;
//   mainWindow.show();
//   return forms::run();
//
// The thread that makes the Application is the user-interface thread; every form and control
// belongs to it. Other threads give it work with post. The program's manifest says how windows
// scale with the display (per monitor, version 2).
#pragma once

#include <windows.h>

#include <functional>
#include <memory>

namespace forms {

class Form;

/// One instance at a time. Initialises COM as a single-threaded apartment, the common controls, and
/// the window that post sends its message to.
class Application {
public:
    Application();
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

private:
    bool comInitialised_ = false;
};

/// Dispatches messages until quit is called or the last form is unloaded. Returns the exit code
/// given to quit, else 0.
int run();

/// Dispatches pending events, then paints, and returns. Safe inside an event procedure and inside
/// another doEvents; it returns even if new events keep arriving.
void doEvents();

/// Runs the work on another thread, returns when it has ended and rethrows its exception. Meanwhile
/// windows are painted; input stays queued, and posted functions do not run.
void runWhilePainting(const std::function<void()>& work);

/// Until the end of the block, Escape cancels what runWhilePainting runs:
///
///   const forms::OnEscape stop{[&] { view->cancel(); }};
///
/// When Escape is pressed in a window of this thread, the function is called on this thread. That
/// key and those queued before it are discarded.
class OnEscape {
public:
    explicit OnEscape(std::function<void()> stop);
    ~OnEscape();
    OnEscape(const OnEscape&) = delete;
    OnEscape& operator=(const OnEscape&) = delete;

private:
    std::function<void()> previous_;
};

/// Work in small steps on the user-interface thread itself:
///
///   forms::SteppedWork work;
///   while (more() && work.goesOn()) step();
///
/// Meanwhile windows are painted and answer other programs, which may change them between steps;
/// input stays queued. Escape in a window of this thread ends the work and has no other effect.
class SteppedWork {
public:
    SteppedWork();
    ~SteppedWork();
    SteppedWork(const SteppedWork&) = delete;
    SteppedWork& operator=(const SteppedWork&) = delete;

    /// Cheap; to be called after every step. False once Escape has been pressed.
    bool goesOn();

private:
    DWORD lastLook_;
    bool stopped_ = false;
};

/// Ends run and every modal form.
void quit(int exitCode = 0);

/// Runs the function on the user-interface thread, in the order of the calls, once that thread
/// fetches messages. Any thread. However many functions wait, they take one window message. What is
/// posted before there is an Application runs when there is; what is left when it ends is dropped.
void post(std::function<void()> function);

/// To be called before a foreign message loop (a menu, a system dialog) starts inside a posted
/// function, so that the loop runs the functions queued behind it.
void wakePosted();

/// Passes a message to the accelerators and dialog keys of its form, else to its window.
void dispatchMessage(MSG& message);

}  // namespace forms
