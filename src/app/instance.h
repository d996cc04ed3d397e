// One viewer at a time: a named lock tells a second one that there is a first, and a hidden window
// of the first tells which process that is.
//
//   Instance instance;
//   if (instance.isSecond() && instance.raiseFirst(L"VorelleDiagnosticViewer.frmMain")) end();
//
// Keep the object as long as the program runs. The user-interface thread.
#pragma once

#include <windows.h>

class Instance {
public:
    /// Takes the lock, if it is free, and puts up the hidden window.
    Instance();
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    /// Whether another process of this user's session held the lock already.
    bool isSecond() const { return isSecond_; }

    /// Restores the first instance's window of that class, if it is minimised, and brings it or the
    /// dialog in front of it to the foreground. False if there is no first instance to be found or
    /// it is just ending; true also if it has no such window yet, as it is about to show one.
    bool raiseFirst(const wchar_t* mainWindowClass);

private:
    bool isSecond_ = false;
    HANDLE lock_ = nullptr;
    HWND window_ = nullptr;
};
