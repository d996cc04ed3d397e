// Application: what a program needs before its first window, and the message pump.
//
//   forms::Application application;      // first thing in wWinMain
//   frmMain mainWindow;
//   mainWindow.show();
//   return forms::run();
//
// The thread that makes the Application is the user-interface thread; every form and control
// belongs to it. Other threads hand it work with post. How windows scale with the display is said
// in the program's manifest (per monitor, version 2).
#pragma once

#include <windows.h>

#include <functional>
#include <memory>

namespace forms {

class Form;

/// One at a time. Initialises COM as a single-threaded apartment, the common controls, and the
/// window that post wakes.
class Application {
public:
    Application();
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

private:
    bool comInitialised_ = false;
};

/// Waits for messages and dispatches them until quit is called or no form is loaded any more.
/// Returns the exit code given to quit, else 0.
int run();

/// Lets the events that are pending run, then paints what is due, and returns. Safe inside an event
/// procedure, also inside another doEvents; it does not go on for ever when new events keep coming.
void doEvents();

/// Runs the work on another thread and returns when it has ended, with what it threw. Meanwhile
/// windows are painted; input waits for its turn, and nothing that was posted runs.
void runWhilePainting(const std::function<void()>& work);

/// Lets the user stop what runWhilePainting runs, to the end of the block:
///
///   const forms::OnEscape stop{[&] { view->cancel(); }};
///
/// When Escape is pressed in a window of this thread meanwhile, the function is called, on this
/// thread. That press, and the keys that still wait from before it, go nowhere else.
class OnEscape {
public:
    explicit OnEscape(std::function<void()> stop);
    ~OnEscape();
    OnEscape(const OnEscape&) = delete;
    OnEscape& operator=(const OnEscape&) = delete;

private:
    std::function<void()> previous_;
};

/// Work on the user-interface thread itself that comes in small steps:
///
///   forms::SteppedWork work;
///   while (more() && work.goesOn()) step();
///
/// Meanwhile windows are painted and answer other programs, which may change them between two steps;
/// input waits for its turn. Escape in a window of this thread ends the work and goes nowhere else.
class SteppedWork {
public:
    SteppedWork();
    ~SteppedWork();
    SteppedWork(const SteppedWork&) = delete;
    SteppedWork& operator=(const SteppedWork&) = delete;

    /// Cheap, to be asked after every step. False once Escape was pressed.
    bool goesOn();

private:
    DWORD lastLook_;
    bool stopped_ = false;
};

/// Ends run, and every modal form on the way.
void quit(int exitCode = 0);

/// Runs the function on the user-interface thread, in the order of the calls, once that thread
/// fetches messages. Any thread. However many functions wait, they take one window message. What is
/// posted before there is an Application runs when there is; what is left when it ends is dropped.
void post(std::function<void()> function);

/// Before a loop of messages that is not ours (a menu, a system dialog) starts inside a posted
/// function: makes that loop run the functions that wait behind it.
void wakePosted();

/// Gives a message to the accelerators and the dialog keys of its form, else to its window.
void dispatchMessage(MSG& message);

}  // namespace forms
