// One viewer at a time: a named lock shows a second instance that there is a first one, and a
// hidden window identifies its process.
//
//   Instance instance;
//   if (instance.isSecond() && instance.raiseFirst(L"VorelleDiagnosticViewer.frmMain")) end();
//
// Keep the object as long as the program runs. The user-interface thread.
#pragma once

#include <windows.h>

class Instance {
public:
    /// Takes the lock, if it is free, and creates the hidden window.
    Instance();
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    /// Whether another process of this user's session held the lock already.
    bool isSecond() const { return isSecond_; }

    /// Restores the first instance's window of that class, if it is minimised, and brings it or its
    /// modal dialog to the foreground. False if no first instance is found or it is shutting down;
    /// also true if it has no such window yet, since it is about to show one.
    bool raiseFirst(const wchar_t* mainWindowClass);

private:
    bool isSecond_ = false;
    HANDLE lock_ = nullptr;
    HWND window_ = nullptr;
};
